// One whole exchange per gNMI RPC: request bytes made by the message runtime
// are read through the entry points, the response is built through them, and
// its bytes are decoded by the message runtime and compared field by field.
#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <string>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "support/gnmi_access.h"

namespace {

using google::protobuf::util::MessageDifferencer;
using testsupport::FromText;
using testsupport::Make;
using testsupport::ParseInto;

uint32_t Len(const std::string& text) { return static_cast<uint32_t>(text.size()); }

// Expects the response that `serialize` writes to decode to `expected`.
template <class Message>
void ExpectResponse(testsupport::SerializeFn serialize, void* ctx, const Message& expected) {
  Message actual;
  ASSERT_TRUE(actual.ParseFromString(testsupport::Serialized(serialize, ctx)));
  EXPECT_TRUE(MessageDifferencer::Equals(actual, expected)) << actual.DebugString();
}

// Copies a path into an empty one, reading and writing through the entry points.
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

// Appends to `notification` an update of `path` with an IETF JSON value, and
// the update expected for it, of `requested`, to `expected`.
void AppendJsonUpdate(void* notification, void* path, const std::string& json,
                      gnmi::Notification* expected, const gnmi::Path& requested) {
  void* update = GNMI_Notification_AppendUpdate(notification);
  CopyPath(path, GNMI_Update_SetPath(update));
  GNMI_TypedValue_SetJsonIetfVal(GNMI_Update_SetVal(update), json.data(), Len(json));
  gnmi::Update* want = expected->add_update();
  *want->mutable_path() = requested;
  want->mutable_val()->set_json_ietf_val(json);
}

TEST(GnmiEndToEnd, Capabilities) {
  const auto request = FromText<gnmi::CapabilityRequest>(
      R"(extension { registered_ext { id: EID_EXPERIMENTAL msg: "x" } })");
  auto ctx = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_CapabilityRequest_Parse, ctx.get(), request));
  EXPECT_TRUE(MessageDifferencer::Equals(
      *static_cast<gnmi_ext::Extension*>(GNMI_CapabilityRequest_GetExtension(ctx.get(), 0)),
      request.extension(0)));

  void* model = GNMI_CapabilityResponse_AppendSupportedModels(ctx.get());
  GNMI_ModelData_SetName(model, "openconfig-interfaces", 21);
  GNMI_ModelData_SetOrganization(model, "OpenConfig", 10);
  GNMI_ModelData_SetVersion(model, "2.4.3", 5);
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx.get(), gnmi::JSON_IETF);
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx.get(), gnmi::PROTO);
  GNMI_CapabilityResponse_SetGnmiVersion(ctx.get(), "0.7.0", 5);
  GNMI_CapabilityResponse_AppendExtension(ctx.get());
  ExpectResponse(GNMI_CapabilityResponse_Serialize, ctx.get(),
                 FromText<gnmi::CapabilityResponse>(R"(
      supported_models { name: "openconfig-interfaces" organization: "OpenConfig" version: "2.4.3" }
      supported_encodings: [JSON_IETF, PROTO] gNMI_version: "0.7.0" extension {})"));
}

TEST(GnmiEndToEnd, Get) {
  const auto request = FromText<gnmi::GetRequest>(R"(prefix { target: "router1" }
      path { elem { name: "interface" key { key: "name" value: "eth0" } key { key: "unit" value: "0" } }
             elem { name: "state" } }
      path { origin: "openconfig" elem { name: "system" } elem { name: "hostname" } }
      type: STATE encoding: JSON_IETF)");
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_GetRequest_Parse, ctx.get(), request));
  EXPECT_EQ(GNMI_GetRequest_GetType(ctx.get()), gnmi::GetRequest::STATE);
  EXPECT_EQ(GNMI_GetRequest_GetEncoding(ctx.get()), gnmi::JSON_IETF);

  // One notification per path, with the request's prefix.
  const std::string values[] = {R"({"oper-status":"UP"})", R"("router1")"};
  gnmi::GetResponse expected;
  for (int i = 0; i < GNMI_GetRequest_PathSizeof(ctx.get()); ++i) {
    void* notification = GNMI_GetResponse_AppendNotification(ctx.get());
    GNMI_Notification_SetTimestamp(notification, 1700000000000000000 + i);
    CopyPath(GNMI_GetRequest_GetPrefix(ctx.get()), GNMI_Notification_AddPrefix(notification));
    gnmi::Notification* want = expected.add_notification();
    want->set_timestamp(1700000000000000000 + i);
    *want->mutable_prefix() = request.prefix();
    AppendJsonUpdate(notification, GNMI_GetRequest_GetPath(ctx.get(), i), values[i], want,
                     request.path(i));
  }
  ExpectResponse(GNMI_GetResponse_Serialize, ctx.get(), expected);
}

TEST(GnmiEndToEnd, Set) {
  const auto request = FromText<gnmi::SetRequest>(R"(prefix { origin: "openconfig" }
      delete { elem { name: "interface" key { key: "name" value: "eth9" } } }
      replace { path { elem { name: "hostname" } } val { json_val: "\"r1\"" } }
      update { path { elem { name: "mtu" } } val { json_val: "9000" } })");
  auto ctx = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_SetRequest_Parse, ctx.get(), request));
  ASSERT_EQ(GNMI_SetRequest_HasPrefix(ctx.get()), 1);
  void* replaced = GNMI_SetRequest_GetReplace(ctx.get(), 0);
  void* updated = GNMI_SetRequest_GetUpdate(ctx.get(), 0);
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(GNMI_Update_GetVal(replaced)), "\"r1\"");
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(GNMI_Update_GetVal(updated)), "9000");

  // One result per operation, with the request's prefix and path.
  CopyPath(GNMI_SetRequest_GetPrefix(ctx.get()), GNMI_SetResponse_AddPrefix(ctx.get()));
  const std::pair<void*, int> operations[] = {
      {GNMI_SetRequest_GetDelete(ctx.get(), 0), gnmi::UpdateResult::DELETE},
      {GNMI_Update_GetPath(replaced), gnmi::UpdateResult::REPLACE},
      {GNMI_Update_GetPath(updated), gnmi::UpdateResult::UPDATE}};
  for (const auto& [path, op] : operations) {
    void* result = GNMI_SetResponse_AppendUpdateResult(ctx.get());
    CopyPath(path, GNMI_UpdateResult_AddPath(result));
    GNMI_UpdateResult_SetOp(result, op);
  }
  GNMI_SetResponse_SetTimestamp(ctx.get(), 1700000000123456789);
  GNMI_SetResponse_AppendExtension(ctx.get());
  auto expected = FromText<gnmi::SetResponse>(R"(prefix { origin: "openconfig" }
      response { path { elem { name: "interface" key { key: "name" value: "eth9" } } } op: DELETE }
      response { path { elem { name: "hostname" } } op: REPLACE }
      response { path { elem { name: "mtu" } } op: UPDATE }
      timestamp: 1700000000123456789 extension {})");
  ExpectResponse(GNMI_SetResponse_Serialize, ctx.get(), expected);
}

TEST(GnmiEndToEnd, SubscribeStreamIsAnsweredByUpdatesThenSync) {
  const auto request = FromText<gnmi::SubscribeRequest>(R"(subscribe {
      prefix { target: "router1" } mode: STREAM encoding: JSON_IETF
      subscription { path { elem { name: "counters" } } mode: SAMPLE sample_interval: 10000000000 }
      subscription { path { elem { name: "oper-status" } }
                     mode: ON_CHANGE heartbeat_interval: 60000000000 suppress_redundant: true } })");
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  ASSERT_TRUE(ParseInto(GNMI_SubscribeRequest_Parse, ctx.get(), request));
  ASSERT_EQ(GNMI_SubscribeRequest_HasSubscribe(ctx.get()), 1);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscriptionMode(ctx.get()), gnmi::SubscriptionList::STREAM);
  EXPECT_EQ(GNMI_SubscribeRequest_GetEncoding(ctx.get()), gnmi::JSON_IETF);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleMode(ctx.get(), 0), gnmi::SAMPLE);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleInterval(ctx.get(), 0), 10000000000u);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleMode(ctx.get(), 1), gnmi::ON_CHANGE);
  EXPECT_EQ(GNMI_SubscribeRequest_GetHeartbeatInterval(ctx.get(), 1), 60000000000u);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSuppressRedundant(ctx.get(), 1), 1);

  void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
  GNMI_Notification_SetTimestamp(notification, 42);
  EXPECT_EQ(GNMI_Notification_GetTimestamp(notification), 42);
  CopyPath(GNMI_SubscribeRequest_GetPrefix(ctx.get()), GNMI_Notification_AddPrefix(notification));
  auto expected =
      FromText<gnmi::SubscribeResponse>(R"(update { timestamp: 42 prefix { target: "router1" } })");
  const std::string values[] = {R"({"in-octets":"1024"})", R"("UP")"};
  for (int i = 0; i < GNMI_SubscribeRequest_SubscriptionSize(ctx.get()); ++i) {
    AppendJsonUpdate(notification, GNMI_SubscribeRequest_GetPath(ctx.get(), i), values[i],
                     expected.mutable_update(), request.subscribe().subscription(i).path());
  }
  ExpectResponse(GNMI_SubscribeResponse_Serialize, ctx.get(), expected);
  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 1);
  ExpectResponse(GNMI_SubscribeSyncResponse_Serialize, ctx.get(),
                 FromText<gnmi::SubscribeResponse>("sync_response: true"));
}

TEST(GnmiEndToEnd, SubscribePollIsAnsweredOnEachPoll) {
  const std::string path = R"(path { elem { name: "system" } elem { name: "datetime" } })";
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  ASSERT_TRUE(ParseInto(
      GNMI_SubscribeRequest_Parse, ctx.get(),
      FromText<gnmi::SubscribeRequest>("subscribe { mode: POLL subscription { " + path + " } }")));
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscriptionMode(ctx.get()), gnmi::SubscriptionList::POLL);
  gnmi::Path polled;  // kept from the subscription, as the device does
  CopyPath(GNMI_SubscribeRequest_GetPath(ctx.get(), 0), &polled);

  // The collector's poll: an empty Poll member.
  ASSERT_TRUE(ParseInto(GNMI_SubscribeRequest_Parse, ctx.get(),
                        FromText<gnmi::SubscribeRequest>("poll {}")));
  ASSERT_EQ(GNMI_SubscribeRequest_HasPoll(ctx.get()), 1);
  void* update = GNMI_Notification_AppendUpdate(GNMI_SubscribeResponse_GetNotification(ctx.get()));
  CopyPath(&polled, GNMI_Update_SetPath(update));
  GNMI_TypedValue_SetStringVal(GNMI_Update_SetVal(update), "2024-01-01T00:00:00Z", 20);
  ExpectResponse(
      GNMI_SubscribeResponse_Serialize, ctx.get(),
      FromText<gnmi::SubscribeResponse>("update { update { " + path +
                                        R"( val { string_val: "2024-01-01T00:00:00Z" } } })"));
  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 1);
  ExpectResponse(GNMI_SubscribeSyncResponse_Serialize, ctx.get(),
                 FromText<gnmi::SubscribeResponse>("sync_response: true"));
}

}  // namespace
