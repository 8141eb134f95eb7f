// Writes the fuzz harnesses' seed inputs, valid messages made with the
// message runtime, into DIR/<harness>/<seed>.bin:
//   mgmtmsg_fuzz_seeds DIR
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <filesystem>
#include <fstream>
#include <iostream>

#include "gnmi/gnmi.pb.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"

namespace {

std::filesystem::path root;

// Map entries in key order, so that the files do not change between runs.
void Write(const std::string& harness, const std::string& seed,
           const google::protobuf::MessageLite& message) {
  std::string bytes;
  {
    google::protobuf::io::StringOutputStream stream(&bytes);
    google::protobuf::io::CodedOutputStream coded(&stream);
    coded.SetSerializationDeterministic(true);
    message.SerializeToCodedStream(&coded);
  }
  const std::filesystem::path dir = root / ("fuzz_" + harness);
  std::filesystem::create_directories(dir);
  std::ofstream(dir / (seed + ".bin"), std::ios::binary) << bytes;
}

// /interfaces/interface[name=eth0]/state, with more keys when asked.
void FillPath(gnmi::Path* path, int extraKeys = 0) {
  path->add_elem()->set_name("interfaces");
  gnmi::PathElem* keyed = path->add_elem();
  keyed->set_name("interface");
  (*keyed->mutable_key())["name"] = "eth0";
  for (int i = 0; i < extraKeys; ++i) {
    (*keyed->mutable_key())["k" + std::to_string(i)] = "v" + std::to_string(i);
  }
  path->add_elem()->set_name("state");
}

void FillExtension(gnmi_ext::Extension* extension) {
  gnmi_ext::MasterArbitration* arbitration = extension->mutable_master_arbitration();
  arbitration->mutable_role()->set_id("controller");
  arbitration->mutable_election_id()->set_low(7);
}

void GnmiSeeds() {
  Write("capability_request", "empty", gnmi::CapabilityRequest());
  gnmi::CapabilityRequest capability;
  FillExtension(capability.add_extension());
  gnmi_ext::RegisteredExtension* registered = capability.add_extension()->mutable_registered_ext();
  registered->set_id(gnmi_ext::EID_EXPERIMENTAL);
  registered->set_msg("opaque");
  Write("capability_request", "extensions", capability);

  gnmi::GetRequest get;
  get.mutable_prefix()->set_target("device1");
  FillPath(get.add_path());
  FillPath(get.add_path(), 3);
  get.set_type(gnmi::GetRequest::STATE);
  get.set_encoding(gnmi::JSON_IETF);
  get.add_use_models()->set_name("openconfig-interfaces");
  FillExtension(get.add_extension());
  Write("get_request", "two_paths", get);
  gnmi::GetRequest origin;
  origin.add_path()->set_origin("rfc7951");
  Write("get_request", "origin_only", origin);

  gnmi::SetRequest set;
  FillPath(set.mutable_prefix());
  FillPath(set.add_delete_());
  gnmi::Update* replace = set.add_replace();
  FillPath(replace->mutable_path());
  replace->mutable_val()->set_json_val("{\"mtu\":1500}");
  gnmi::Update* update = set.add_update();
  FillPath(update->mutable_path(), 1);
  update->mutable_val()->set_int_val(-7);
  update->set_duplicates(2);
  Write("set_request", "delete_replace_update", set);

  gnmi::SubscribeRequest subscribe;
  gnmi::SubscriptionList* list = subscribe.mutable_subscribe();
  FillPath(list->mutable_prefix());
  list->mutable_qos()->set_marking(46);
  list->set_mode(gnmi::SubscriptionList::STREAM);
  list->set_encoding(gnmi::PROTO);
  gnmi::Subscription* sample = list->add_subscription();
  FillPath(sample->mutable_path(), 2);
  sample->set_mode(gnmi::SAMPLE);
  sample->set_sample_interval(10000000000);
  sample->set_heartbeat_interval(60000000000);
  sample->set_suppress_redundant(true);
  list->add_subscription()->set_mode(gnmi::ON_CHANGE);
  Write("subscribe_request", "stream", subscribe);
  gnmi::SubscribeRequest poll;
  poll.mutable_poll();
  Write("subscribe_request", "poll", poll);
  gnmi::SubscribeRequest aliases;
  gnmi::Alias* alias = aliases.mutable_aliases()->add_alias();
  alias->set_alias("#eth0");
  FillPath(alias->mutable_path());
  Write("subscribe_request", "aliases", aliases);
}

void SouthSeeds() {
  quorix_grpc_ipc::SouthMsg login;
  login.set_connect_id(1);
  login.set_req_type(quorix_grpc_ipc::REQTYPE_REQUEST);
  login.mutable_login()->set_user_name("admin");
  login.mutable_login()->set_token(std::string("\0\1\0", 3));
  Write("south_msg", "login", login);

  quorix_grpc_ipc::SouthMsg client;
  client.set_rpc_id(7);
  client.set_msg_type(quorix_grpc_ipc::MSGTYPE_CLIENT_RPC);
  quorix_grpc_ipc::ClientRpc* rpc = client.mutable_client_rpc();
  rpc->set_peer_address("192.0.2.1");
  rpc->set_peer_port(57400);
  rpc->set_rpc_name("/gnmi.gNMI/Get");
  rpc->set_client_name("collector");
  rpc->set_no_tls(true);
  Write("south_msg", "client_rpc", client);

  quorix_grpc_ipc::SouthMsg server;
  server.set_msg_type(quorix_grpc_ipc::MSGTYPE_SERVER_RPC);
  server.set_result(1);
  server.set_result_description("failed");
  server.mutable_server_rpc()->set_rpc_parament(std::string("p\0q", 3));
  server.mutable_server_rpc()->set_deadline(30);
  server.mutable_rpc_data()->set_data(std::string("ab\0cd", 5));
  server.mutable_rpc_data()->set_is_over(true);
  Write("south_msg", "server_rpc_data", server);
}

void DialinSeeds() {
  quorix_dialin::SubsArgs subscribe;
  subscribe.set_request_id(42);
  subscribe.set_encoding(1);
  quorix_dialin::Path* path = subscribe.add_path();
  path->set_path("/ifm/interfaces");
  path->set_depth(2);
  subscribe.add_path()->set_path("/devm/cpuInfos");
  subscribe.set_sample_interval(1000);
  subscribe.set_delay_time(500);
  Write("subs_args", "delay_time", subscribe);
  subscribe.set_suppress_redundant(true);
  Write("subs_args", "suppress_redundant", subscribe);

  quorix_dialin::CancelArgs cancel;
  cancel.set_request_id(42);
  cancel.set_subscription_id(3);
  Write("cancel_args", "cancel", cancel);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: mgmtmsg_fuzz_seeds DIR\n";
    return 2;
  }
  root = argv[1];
  GnmiSeeds();
  SouthSeeds();
  DialinSeeds();
  return 0;
}
