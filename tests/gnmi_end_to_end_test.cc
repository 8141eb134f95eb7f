// One whole exchange per gNMI RPC: request bytes made by the message runtime
// are read through the entry points, the response is built through them, and
// its bytes are decoded by the message runtime and compared.
#include <gtest/gtest.h>

#include <google/protobuf/util/message_differencer.h>

#include <string>
#include <vector>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "support/gnmi_access.h"

namespace {

using google::protobuf::util::MessageDifferencer;
using testsupport::Decoded;
using testsupport::Make;
using testsupport::ParseInto;
using testsupport::Serialized;

uint32_t Len(const std::string& text) { return static_cast<uint32_t>(text.size()); }

// A path as text, read through the entry points: /a/b[k=v]/c.
std::string PathText(void* path) {
  std::string text;
  for (int i = 0; i < GNMI_Path_PathElemSizeof(path); ++i) {
    void* elem = GNMI_Path_GetPathElem(path, i);
    text += std::string("/") + GNMI_PathElem_GetName(elem);
    for (int k = 0; k < GNMI_PathElem_KeySizeof(elem); ++k) {
      const char* key = nullptr;
      const char* value = nullptr;
      GNMI_PathElem_GetKey(elem, k, &key, &value);
      text += std::string("[") + key + "=" + value + "]";
    }
  }
  return text;
}

// Copies a path into an empty one, through the entry points.
void CopyPath(void* from, void* to) {
  const std::string origin = GNMI_Path_GetOrigin(from);
  const std::string target = GNMI_Path_GetTarget(from);
  GNMI_Path_SetOrigin(to, origin.data(), Len(origin));
  GNMI_Path_SetTarget(to, target.data(), Len(target));
  for (int i = 0; i < GNMI_Path_PathElemSizeof(from); ++i) {
    void* source = GNMI_Path_GetPathElem(from, i);
    void* elem = GNMI_Path_AppendPathElem(to);
    const std::string name = GNMI_PathElem_GetName(source);
    GNMI_PathElem_SetName(elem, name.data(), Len(name));
    for (int k = 0; k < GNMI_PathElem_KeySizeof(source); ++k) {
      const char* key = nullptr;
      const char* value = nullptr;
      GNMI_PathElem_GetKey(source, k, &key, &value);
      GNMI_PathElem_AppendKey(elem, key, Len(key), value, Len(value));
    }
  }
}

// Appends to `notification` an update of `path` with an IETF JSON value.
void AppendJsonUpdate(void* notification, void* path, const std::string& json) {
  void* update = GNMI_Notification_AppendUpdate(notification);
  CopyPath(path, GNMI_Update_SetPath(update));
  GNMI_TypedValue_SetJsonIetfVal(GNMI_Update_SetVal(update), json.data(), Len(json));
}

gnmi::Path MakePath(const std::vector<std::string>& names, const std::string& key = "",
                    const std::string& value = "") {
  gnmi::Path path;
  for (const std::string& name : names) {
    gnmi::PathElem* elem = path.add_elem();
    elem->set_name(name);
    if (name == "interface" && !key.empty()) (*elem->mutable_key())[key] = value;
  }
  return path;
}

gnmi::TypedValue JsonIetf(const std::string& json) {
  gnmi::TypedValue value;
  value.set_json_ietf_val(json);
  return value;
}

TEST(GnmiEndToEnd, Capabilities) {
  gnmi::CapabilityRequest request;
  request.add_extension()->mutable_registered_ext()->set_id(gnmi_ext::EID_EXPERIMENTAL);
  auto ctx = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_CapabilityRequest_Parse, ctx.get(), request));
  ASSERT_EQ(GNMI_CapabilityRequest_ExtensionSizeof(ctx.get()), 1);
  EXPECT_TRUE(MessageDifferencer::Equals(
      *static_cast<gnmi_ext::Extension*>(GNMI_CapabilityRequest_GetExtension(ctx.get(), 0)),
      request.extension(0)));

  void* model = GNMI_CapabilityResponse_AppendSupportedModels(ctx.get());
  GNMI_ModelData_SetName(model, "openconfig-interfaces", 21);
  GNMI_ModelData_SetOrganization(model, "OpenConfig working group", 24);
  GNMI_ModelData_SetVersion(model, "2.4.3", 5);
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx.get(), gnmi::JSON_IETF);
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx.get(), gnmi::PROTO);
  GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), "0.7.0", 5);

  gnmi::CapabilityResponse expected;
  gnmi::ModelData* expectedModel = expected.add_supported_models();
  expectedModel->set_name("openconfig-interfaces");
  expectedModel->set_organization("OpenConfig working group");
  expectedModel->set_version("2.4.3");
  expected.add_supported_encodings(gnmi::JSON_IETF);
  expected.add_supported_encodings(gnmi::PROTO);
  expected.set_gnmi_version("0.7.0");
  EXPECT_TRUE(MessageDifferencer::Equals(
      Decoded<gnmi::CapabilityResponse>(Serialized(GNMI_CapabilityResponse_Serialize, ctx.get())),
      expected));
}

TEST(GnmiEndToEnd, Get) {
  gnmi::GetRequest request;
  request.mutable_prefix()->set_target("router1");
  *request.add_path() = MakePath({"interfaces", "interface", "state"}, "name", "eth0");
  *request.add_path() = MakePath({"system", "config", "hostname"});
  request.set_type(gnmi::GetRequest::STATE);
  request.set_encoding(gnmi::JSON_IETF);

  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_GetRequest_Parse, ctx.get(), request));
  void* prefix = GNMI_GetRequest_GetPrefix(ctx.get());
  ASSERT_NE(prefix, nullptr);
  EXPECT_STREQ(GNMI_Path_GetTarget(prefix), "router1");
  EXPECT_EQ(GNMI_GetRequest_GetType(ctx.get()), gnmi::GetRequest::STATE);
  EXPECT_EQ(GNMI_GetRequest_GetEncoding(ctx.get()), gnmi::JSON_IETF);
  ASSERT_EQ(GNMI_GetRequest_PathSizeof(ctx.get()), 2);
  EXPECT_EQ(PathText(GNMI_GetRequest_GetPath(ctx.get(), 0)),
            "/interfaces/interface[name=eth0]/state");
  EXPECT_EQ(PathText(GNMI_GetRequest_GetPath(ctx.get(), 1)), "/system/config/hostname");

  const std::string values[] = {"{\"oper-status\":\"UP\"}", "\"router1\""};
  gnmi::GetResponse expected;
  for (int i = 0; i < 2; ++i) {
    void* notification = GNMI_GetResponse_AppendNotification(ctx.get());
    GNMI_Notification_SetTimestamp(notification, 1700000000000000000 + i);
    CopyPath(prefix, GNMI_Notification_AddPrefix(notification));
    AppendJsonUpdate(notification, GNMI_GetRequest_GetPath(ctx.get(), i), values[i]);

    gnmi::Notification* want = expected.add_notification();
    want->set_timestamp(1700000000000000000 + i);
    *want->mutable_prefix() = request.prefix();
    gnmi::Update* update = want->add_update();
    *update->mutable_path() = request.path(i);
    *update->mutable_val() = JsonIetf(values[i]);
  }
  EXPECT_TRUE(MessageDifferencer::Equals(
      Decoded<gnmi::GetResponse>(Serialized(GNMI_GetResponse_Serialize, ctx.get())), expected));
}

TEST(GnmiEndToEnd, Set) {
  gnmi::SetRequest request;
  request.mutable_prefix()->set_origin("openconfig");
  *request.add_delete_() = MakePath({"interfaces", "interface"}, "name", "eth9");
  gnmi::Update* replace = request.add_replace();
  *replace->mutable_path() = MakePath({"system", "config"});
  replace->mutable_val()->set_json_val("{\"hostname\":\"r1\"}");
  gnmi::Update* update = request.add_update();
  *update->mutable_path() = MakePath({"interfaces", "interface", "config"}, "name", "eth0");
  update->mutable_val()->set_json_val("{\"mtu\":9000}");

  auto ctx = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_SetRequest_Parse, ctx.get(), request));
  ASSERT_EQ(GNMI_SetRequest_HasPrefix(ctx.get()), 1);
  EXPECT_STREQ(GNMI_Path_GetOrigin(GNMI_SetRequest_GetPrefix(ctx.get())), "openconfig");
  ASSERT_EQ(GNMI_SetRequest_DeleteSizeof(ctx.get()), 1);
  ASSERT_EQ(GNMI_SetRequest_ReplaceSizeof(ctx.get()), 1);
  ASSERT_EQ(GNMI_SetRequest_UpdateSizeof(ctx.get()), 1);
  EXPECT_EQ(PathText(GNMI_SetRequest_GetDelete(ctx.get(), 0)), "/interfaces/interface[name=eth9]");
  void* replaced = GNMI_SetRequest_GetReplace(ctx.get(), 0);
  EXPECT_EQ(PathText(GNMI_Update_GetPath(replaced)), "/system/config");
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(GNMI_Update_GetVal(replaced)), "{\"hostname\":\"r1\"}");
  void* updated = GNMI_SetRequest_GetUpdate(ctx.get(), 0);
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(GNMI_Update_GetVal(updated)), "{\"mtu\":9000}");

  CopyPath(GNMI_SetRequest_GetPrefix(ctx.get()), GNMI_SetResponse_AddPrefix(ctx.get()));
  const struct {
    void* path;
    gnmi::UpdateResult::Operation op;
  } results[] = {{GNMI_SetRequest_GetDelete(ctx.get(), 0), gnmi::UpdateResult::DELETE},
                 {GNMI_Update_GetPath(replaced), gnmi::UpdateResult::REPLACE},
                 {GNMI_Update_GetPath(updated), gnmi::UpdateResult::UPDATE}};
  gnmi::SetResponse expected;
  expected.mutable_prefix()->set_origin("openconfig");
  for (const auto& result : results) {
    void* line = GNMI_SetResponse_AppendUpdateResult(ctx.get());
    CopyPath(result.path, GNMI_UpdateResult_AddPath(line));
    GNMI_UpdateResult_SetOp(line, result.op);
    gnmi::UpdateResult* want = expected.add_response();
    *want->mutable_path() = *static_cast<gnmi::Path*>(result.path);
    want->set_op(result.op);
  }
  GNMI_SetResponse_SetTimestamp(ctx.get(), 1700000000123456789);
  expected.set_timestamp(1700000000123456789);
  EXPECT_TRUE(MessageDifferencer::Equals(
      Decoded<gnmi::SetResponse>(Serialized(GNMI_SetResponse_Serialize, ctx.get())), expected));
}

TEST(GnmiEndToEnd, SubscribeStreamIsAnsweredByUpdatesThenSync) {
  gnmi::SubscribeRequest request;
  gnmi::SubscriptionList* list = request.mutable_subscribe();
  list->mutable_prefix()->set_target("router1");
  list->set_mode(gnmi::SubscriptionList::STREAM);
  list->set_encoding(gnmi::JSON_IETF);
  gnmi::Subscription* counters = list->add_subscription();
  *counters->mutable_path() =
      MakePath({"interfaces", "interface", "state", "counters"}, "name", "eth0");
  counters->set_mode(gnmi::SAMPLE);
  counters->set_sample_interval(10000000000u);
  gnmi::Subscription* status = list->add_subscription();
  *status->mutable_path() =
      MakePath({"interfaces", "interface", "state", "oper-status"}, "name", "eth0");
  status->set_mode(gnmi::ON_CHANGE);
  status->set_heartbeat_interval(60000000000u);
  status->set_suppress_redundant(true);

  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_SubscribeRequest_Parse, ctx.get(), request));
  ASSERT_EQ(GNMI_SubscribeRequest_HasSubscribe(ctx.get()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscriptionMode(ctx.get()), gnmi::SubscriptionList::STREAM);
  EXPECT_EQ(GNMI_SubscribeRequest_GetEncoding(ctx.get()), gnmi::JSON_IETF);
  EXPECT_STREQ(GNMI_Path_GetTarget(GNMI_SubscribeRequest_GetPrefix(ctx.get())), "router1");
  ASSERT_EQ(GNMI_SubscribeRequest_SubscriptionSize(ctx.get()), 2);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleMode(ctx.get(), 0), gnmi::SAMPLE);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleInterval(ctx.get(), 0), 10000000000u);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleMode(ctx.get(), 1), gnmi::ON_CHANGE);
  EXPECT_EQ(GNMI_SubscribeRequest_GetHeartbeatInterval(ctx.get(), 1), 60000000000u);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSuppressRedundant(ctx.get(), 1), 1);

  const std::string values[] = {"{\"in-octets\":\"1024\"}", "\"UP\""};
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
  GNMI_Notification_SetTimestamp(notification, 42);
  gnmi::SubscribeResponse expected;
  expected.mutable_update()->set_timestamp(42);
  for (int i = 0; i < 2; ++i) {
    void* path = GNMI_SubscribeRequest_GetPath(ctx.get(), i);
    EXPECT_EQ(PathText(path), i == 0 ? "/interfaces/interface[name=eth0]/state/counters"
                                     : "/interfaces/interface[name=eth0]/state/oper-status");
    AppendJsonUpdate(notification, path, values[i]);
    gnmi::Update* update = expected.mutable_update()->add_update();
    *update->mutable_path() = list->subscription(i).path();
    *update->mutable_val() = JsonIetf(values[i]);
  }
  EXPECT_EQ(PathText(GNMI_Update_GetPath(GNMI_SubscribeRequest_GetUpdate(ctx.get(), 1))),
            "/interfaces/interface[name=eth0]/state/oper-status");
  EXPECT_TRUE(MessageDifferencer::Equals(
      Decoded<gnmi::SubscribeResponse>(Serialized(GNMI_SubscribeResponse_Serialize, ctx.get())),
      expected));

  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 1);
  const auto sync =
      Decoded<gnmi::SubscribeResponse>(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx.get()));
  EXPECT_EQ(sync.response_case(), gnmi::SubscribeResponse::kSyncResponse);
  EXPECT_TRUE(sync.sync_response());
}

TEST(GnmiEndToEnd, SubscribePollIsAnsweredOnEachPoll) {
  gnmi::SubscribeRequest request;
  request.mutable_subscribe()->set_mode(gnmi::SubscriptionList::POLL);
  *request.mutable_subscribe()->add_subscription()->mutable_path() =
      MakePath({"system", "state", "current-datetime"});
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_SubscribeRequest_Parse, ctx.get(), request));
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscriptionMode(ctx.get()), gnmi::SubscriptionList::POLL);
  ASSERT_EQ(GNMI_SubscribeRequest_SubscriptionSize(ctx.get()), 1);
  EXPECT_EQ(PathText(GNMI_SubscribeRequest_GetPath(ctx.get(), 0)),
            "/system/state/current-datetime");

  // The collector's poll: an empty Poll member.
  gnmi::SubscribeRequest poll;
  poll.mutable_poll();
  ASSERT_TRUE(ParseInto(GNMI_SubscribeRequest_Parse, ctx.get(), poll));
  ASSERT_EQ(GNMI_SubscribeRequest_HasPoll(ctx.get()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_SubscriptionSize(ctx.get()), 0);

  void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
  void* update = GNMI_Notification_AppendUpdate(notification);
  void* path = GNMI_Update_SetPath(update);
  for (const char* name : {"system", "state", "current-datetime"}) {
    GNMI_PathElem_SetName(GNMI_Path_AppendPathElem(path), name, Len(name));
  }
  GNMI_TypedValue_SetStringVal(GNMI_Update_SetVal(update), "2024-01-01T00:00:00Z", 20);
  const auto response =
      Decoded<gnmi::SubscribeResponse>(Serialized(GNMI_SubscribeResponse_Serialize, ctx.get()));
  ASSERT_EQ(response.update().update_size(), 1);
  EXPECT_TRUE(MessageDifferencer::Equals(response.update().update(0).path(),
                                         MakePath({"system", "state", "current-datetime"})));
  EXPECT_EQ(response.update().update(0).val().string_val(), "2024-01-01T00:00:00Z");

  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 1);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx.get()), "\x18\x01");
}

}  // namespace
