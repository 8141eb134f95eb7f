// Whole RPCs on several threads at once, each thread on contexts and
// messages of its own: every exchange must give exactly the bytes it gives
// alone (built here with the message runtime). Run under ThreadSanitizer by
// the tsan stage.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "grpci/grpci_ex.h"
#include "oxa_mem_host.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/gnmi_access.h"
#include "support/owned.h"

namespace {

using testsupport::Make;
using testsupport::ParseInto;
using testsupport::Serialized;

constexpr int kThreads = 4;
constexpr int kRounds = 2000;

uint32_t Len(const std::string& text) { return static_cast<uint32_t>(text.size()); }

// /interfaces/interface[name=ethN]: one key, so that the bytes are fixed.
void FillPath(gnmi::Path* path, int n) {
  path->add_elem()->set_name("interfaces");
  gnmi::PathElem* elem = path->add_elem();
  elem->set_name("interface");
  (*elem->mutable_key())["name"] = "eth" + std::to_string(n);
}

// A path's last element, name and key, read and written through the entry
// points; `to` is an empty Path.
void CopyLastElem(void* from, void* to) {
  void* elem = GNMI_Path_GetPathElem(from, GNMI_Path_PathElemSizeof(from) - 1);
  const char* key = nullptr;
  const char* value = nullptr;
  GNMI_PathElem_GetKey(elem, 0, &key, &value);
  void* copy = GNMI_Path_AppendPathElem(to);
  GNMI_PathElem_SetName(copy, GNMI_PathElem_GetName(elem), Len(GNMI_PathElem_GetName(elem)));
  GNMI_PathElem_AppendKey(copy, key, Len(key), value, Len(value));
}
gnmi::Path LastElem(const gnmi::Path& path) {
  gnmi::Path last;
  *last.add_elem() = path.elem(path.elem_size() - 1);
  return last;
}

// Get: a notification per path, its update on the path's last element with
// the key's value as string.
std::string GetRpc(const gnmi::GetRequest& request) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  EXPECT_TRUE(ParseInto(GNMI_GetRequest_Parse, ctx.get(), request));
  for (int i = 0; i < GNMI_GetRequest_PathSizeof(ctx.get()); ++i) {
    void* notification = GNMI_GetResponse_AppendNotification(ctx.get());
    GNMI_Notification_SetTimestamp(notification, i);
    void* update = GNMI_Notification_AppendUpdate(notification);
    CopyLastElem(GNMI_GetRequest_GetPath(ctx.get(), i), GNMI_Update_SetPath(update));
    GNMI_TypedValue_SetStringVal(GNMI_Update_SetVal(update), "up", 2);
  }
  return Serialized(GNMI_GetResponse_Serialize, ctx.get());
}
std::string GetAnswer(const gnmi::GetRequest& request) {
  gnmi::GetResponse response;
  for (int i = 0; i < request.path_size(); ++i) {
    gnmi::Notification* notification = response.add_notification();
    notification->set_timestamp(i);
    gnmi::Update* update = notification->add_update();
    *update->mutable_path() = LastElem(request.path(i));
    update->mutable_val()->set_string_val("up");
  }
  return response.SerializeAsString();
}

// Set: an UPDATE result per update, on the path's last element.
std::string SetRpc(const gnmi::SetRequest& request) {
  auto ctx = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  EXPECT_TRUE(ParseInto(GNMI_SetRequest_Parse, ctx.get(), request));
  GNMI_SetResponse_SetTimestamp(ctx.get(), 42);
  for (int i = 0; i < GNMI_SetRequest_UpdateSizeof(ctx.get()); ++i) {
    void* result = GNMI_SetResponse_AppendUpdateResult(ctx.get());
    CopyLastElem(GNMI_Update_GetPath(GNMI_SetRequest_GetUpdate(ctx.get(), i)),
                 GNMI_UpdateResult_AddPath(result));
    GNMI_UpdateResult_SetOp(result, gnmi::UpdateResult::UPDATE);
  }
  return Serialized(GNMI_SetResponse_Serialize, ctx.get());
}
std::string SetAnswer(const gnmi::SetRequest& request) {
  gnmi::SetResponse response;
  response.set_timestamp(42);
  for (const gnmi::Update& update : request.update()) {
    gnmi::UpdateResult* result = response.add_response();
    *result->mutable_path() = LastElem(update.path());
    result->set_op(gnmi::UpdateResult::UPDATE);
  }
  return response.SerializeAsString();
}

// Subscribe: an update per subscription carrying its sample interval, then
// the sync response; both responses' bytes, one after the other.
std::string SubscribeRpc(const gnmi::SubscribeRequest& request) {
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  EXPECT_TRUE(ParseInto(GNMI_SubscribeRequest_Parse, ctx.get(), request));
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
  for (int i = 0; i < GNMI_SubscribeRequest_SubscriptionSize(ctx.get()); ++i) {
    void* update = GNMI_Notification_AppendUpdate(notification);
    CopyLastElem(GNMI_SubscribeRequest_GetPath(ctx.get(), i), GNMI_Update_SetPath(update));
    GNMI_TypedValue_SetUintVal(GNMI_Update_SetVal(update),
                               GNMI_SubscribeRequest_GetSampleInterval(ctx.get(), i));
  }
  std::string bytes = Serialized(GNMI_SubscribeResponse_Serialize, ctx.get());
  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 1);
  return bytes + Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx.get());
}
std::string SubscribeAnswer(const gnmi::SubscribeRequest& request) {
  gnmi::SubscribeResponse response;
  for (const gnmi::Subscription& subscription : request.subscribe().subscription()) {
    gnmi::Update* update = response.mutable_update()->add_update();
    *update->mutable_path() = LastElem(subscription.path());
    update->mutable_val()->set_uint_val(subscription.sample_interval());
  }
  gnmi::SubscribeResponse sync;
  sync.set_sync_response(true);
  return response.SerializeAsString() + sync.SerializeAsString();
}

// The bytes a GRPCI_ serializer gives; the block is released.
using PlatformSerializer = int32_t (*)(uint32_t, void*, void**, uint32_t*);
std::string Block(PlatformSerializer serialize, void* msg) {
  void* out = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(serialize(3, msg, &out, &length), 1);
  std::string bytes(static_cast<const char*>(out), length);
  OXA_Free_F(out, "test", 0);
  return bytes;
}

// South IPC: a client RPC request framed, received, and answered with a
// server RPC record naming the same RPC and carrying the request's data; the
// answer's frame.
std::string SouthRoundTrip(uint32_t rpcId) {
  auto request = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  GRPCI_SouthMsgSetRpcId(request.get(), rpcId);
  GRPCI_ClientRpcSetRpcName(GRPCI_SouthMsgSetClientRpc(request.get()), "/gnmi.gNMI/Get", 14);
  GRPCI_RpcDataSetData(GRPCI_SouthMsgSetRpcData(request.get()), "a\0b", 3);
  const std::string sent = Block(GRPCI_SouthMsgSerialize, request.get());

  auto received = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  EXPECT_EQ(GRPCI_SouthMsgParse(received.get(), sent.data() + 4, Len(sent) - 4), 1);
  auto answer = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  GRPCI_SouthMsgSetRpcId(answer.get(), GRPCI_SouthMsgGetRpcId(received.get()));
  GRPCI_SouthMsgSetReqType(answer.get(), quorix_grpc_ipc::REQTYPE_RESPONSE);
  const char* name = GRPCI_ClientRpcGetRpcName(GRPCI_SouthMsgGetClientRpc(received.get()));
  void* server = GRPCI_SouthMsgSetServerRpc(answer.get());
  GRPCI_ServerRpcSetRpcName(server, name, Len(name));
  GRPCI_ServerRpcSetRpcParament(server,
                                GRPCI_RpcDataGetData(GRPCI_SouthMsgGetRpcData(received.get())), 3);
  return Block(GRPCI_SouthMsgSerialize, answer.get());
}
std::string SouthAnswer(uint32_t rpcId) {
  quorix_grpc_ipc::SouthMsg answer;
  answer.set_rpc_id(rpcId);
  answer.set_req_type(quorix_grpc_ipc::REQTYPE_RESPONSE);
  answer.mutable_server_rpc()->set_rpc_name("/gnmi.gNMI/Get");
  answer.mutable_server_rpc()->set_rpc_parament(std::string("a\0b", 3));
  const std::string message = answer.SerializeAsString();
  const uint32_t length = Len(message);  // host order
  return std::string(reinterpret_cast<const char*>(&length), sizeof length) + message;
}

// Dial-in: the subscribe reply names the request and its first sensor path;
// the cancel reply echoes the request id.
std::string DialinRpc(const std::string& subscribe, const std::string& cancel) {
  auto args = Make<GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit>();
  EXPECT_EQ(GRPCI_SubsArgsParse(args.get(), subscribe.data(), Len(subscribe)), 1);
  auto reply = Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>();
  GRPCI_SubsReplySetRequestId(reply.get(), GRPCI_SubsArgsGetRequestId(args.get()));
  const char* path = GRPCI_PathGetPath(GRPCI_SubsArgsGetPath(args.get(), 0));
  GRPCI_SubsReplySetMessage(reply.get(), path, Len(path));
  const std::string subsBytes = Block(GRPCI_SubsReplySerialize, reply.get());

  auto cancelArgs = Make<GRPCI_CancelArgsInit, GRPCI_CancelArgsDeInit>();
  EXPECT_EQ(GRPCI_CancelArgsParse(cancelArgs.get(), cancel.data(), Len(cancel)), 1);
  auto cancelReply = Make<GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit>();
  GRPCI_CancelReplySetRequestId(cancelReply.get(), GRPCI_CancelArgsGetRequestId(cancelArgs.get()));
  return subsBytes + Block(GRPCI_CancelReplySerialize, cancelReply.get());
}

std::string DialinAnswer(const quorix_dialin::SubsArgs& subsArgs,
                         const quorix_dialin::CancelArgs& cancelArgs) {
  quorix_dialin::SubsReply subsReply;
  subsReply.set_request_id(subsArgs.request_id());
  subsReply.set_message(subsArgs.path(0).path());
  quorix_dialin::CancelReply cancelReply;
  cancelReply.set_request_id(cancelArgs.request_id());
  return subsReply.SerializeAsString() + cancelReply.SerializeAsString();
}

// An exchange of one thread: the RPC through the entry points, on requests
// of its own, and the bytes it must give.
struct Exchange {
  std::function<std::string()> run;
  std::string answer;
};

std::vector<Exchange> ExchangesOf(int thread) {
  gnmi::GetRequest get;
  FillPath(get.add_path(), thread);
  FillPath(get.add_path(), thread + 10);
  gnmi::SetRequest set;
  FillPath(set.add_update()->mutable_path(), thread);
  gnmi::SubscribeRequest subscribe;
  gnmi::Subscription* subscription = subscribe.mutable_subscribe()->add_subscription();
  FillPath(subscription->mutable_path(), thread);
  subscription->set_sample_interval(1000 + thread);
  quorix_dialin::SubsArgs subsArgs;
  subsArgs.set_request_id(100 + thread);
  subsArgs.add_path()->set_path("/ifm/interfaces/" + std::to_string(thread));
  quorix_dialin::CancelArgs cancelArgs;
  cancelArgs.set_request_id(200 + thread);
  const std::string subsBytes = subsArgs.SerializeAsString();
  const std::string cancelBytes = cancelArgs.SerializeAsString();
  const uint32_t rpcId = 300 + thread;
  return {{[get] { return GetRpc(get); }, GetAnswer(get)},
          {[set] { return SetRpc(set); }, SetAnswer(set)},
          {[subscribe] { return SubscribeRpc(subscribe); }, SubscribeAnswer(subscribe)},
          {[rpcId] { return SouthRoundTrip(rpcId); }, SouthAnswer(rpcId)},
          {[subsBytes, cancelBytes] { return DialinRpc(subsBytes, cancelBytes); },
           DialinAnswer(subsArgs, cancelArgs)}};
}

// The exchanges of a round that did not give their bytes.
int WrongExchanges(const std::vector<Exchange>& exchanges) {
  int wrong = 0;
  for (const Exchange& exchange : exchanges) wrong += exchange.run() != exchange.answer ? 1 : 0;
  return wrong;
}

TEST(Concurrency, ThreadsRunningWholeRpcsOnTheirOwnObjectsGetTheirExactBytes) {
  std::vector<std::vector<Exchange>> exchanges;
  for (int thread = 0; thread < kThreads; ++thread) {
    exchanges.push_back(ExchangesOf(thread));
    ASSERT_EQ(WrongExchanges(exchanges.back()), 0) << "thread " << thread << " alone";
  }
  const uint32_t blocks = OxaHost_Stats().liveBlocks;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  threads.reserve(exchanges.size());
  for (const std::vector<Exchange>& exchange : exchanges) {
    threads.emplace_back([&exchange, &wrong] {
      for (int round = 0; round < kRounds; ++round) wrong += WrongExchanges(exchange);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(OxaHost_Stats().liveBlocks, blocks);
}

}  // namespace

// ---- A stream of replies on each thread, from one context reset before each ----

#include "support/reply_families.h"

namespace {

TEST(Concurrency, ThreadsResettingTheirOwnContextsGetEachReplyExactly) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (const testsupport::ReplyFamily& family : testsupport::kReplyFamilies) {
    threads.emplace_back([&family, &wrong] {
      const std::unique_ptr<void, void (*)(void*)> ctx(family.init(), family.deinit);
      int done = 0;
      for (int round = 0; round < kRounds; ++round) {
        wrong += family.reset(ctx.get()) == 1 ? 0 : 1;
        family.Build(ctx.get(), round % 50, &done);
        wrong += Serialized(family.serialize, ctx.get()) == family.Fresh(round % 50) ? 0 : 1;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
