// The library as its callers see it: the gNMI RPC contexts and the messages
// below them. The readers'
// answers for parsed requests are checked field by field by the fuzz
// harnesses, whose seeds (fuzz/corpus) replay as tests of every build.
#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <tuple>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/fatal_capture.h"
#include "support/gnmi_access.h"

namespace {

using google::protobuf::Message;
using google::protobuf::util::MessageDifferencer;
using namespace testsupport;
using namespace std::string_literals;

// Parses the request written in text format into the context.
template <class Request>
void ParseText(int (*parse)(void*, const void*, int), void* ctx, const std::string& text) {
  const std::string bytes = FromText<Request>(text).SerializeAsString();
  ASSERT_EQ(parse(ctx, bytes.data(), static_cast<int>(bytes.size())), 1);
}

// Expects the response that `serialize` writes to decode to the one in text format.
template <class Response>
void ExpectResponse(int (*serialize)(void*, void**, int*), void* ctx, const std::string& text) {
  Response actual;
  ASSERT_TRUE(actual.ParseFromString(Serialized(serialize, ctx)));
  EXPECT_TRUE(MessageDifferencer::Equals(actual, FromText<Response>(text))) << actual.DebugString();
}

// Expects each reader at `index` to end in the fatal index check of gnmi_ex:
// a negative index at line `negativeLine`, one past the end on the next.
template <class... Reads>
void ExpectOutOfRange(void* handle, int index, int negativeLine, Reads... reads) {
  const char* text = index < 0 ? testsupport::kNegativeIndex : testsupport::kPastEndIndex;
  (
      [&] {
        EXPECT_FATAL_CHECK(reads(handle, index), "gnmi_ex", negativeLine + (index >= 0), text);
      }(),
      ...);
}

TEST(GnmiRpc, EachInitHasItsMethodPathAndDeInitIgnoresNull) {
  const std::tuple<void* (*)(), void (*)(void*), const char*> families[] = {
      {GNMI_Capability_Init, GNMI_Capability_DeInit, "Capabilities"},
      {GNMI_Get_Init, GNMI_Get_DeInit, "Get"},
      {GNMI_Set_Init, GNMI_Set_DeInit, "Set"},
      {GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, "Subscribe"}};
  for (const auto& [init, deinit, path] : families) {
    auto* ctx = static_cast<GnmiRpcBase*>(init());
    EXPECT_EQ(ctx->GetRpcPath_(), "/gnmi.gNMI/"s + path);
    deinit(ctx);
    deinit(nullptr);
  }
}

TEST(GnmiRpc, ParseReplacesTheRequestOrFailsAndDispatchesByClass) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto* get = static_cast<GnmiRpcGet*>(ctx.get());
  ParseText<gnmi::GetRequest>(GNMI_GetRequest_Parse, ctx.get(), "path {} type: STATE");
  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), "", 0), 1);
  EXPECT_EQ(get->request_->ByteSizeLong(), 0u);
  EXPECT_EQ(GNMI_GetRequest_Parse(ctx.get(), "\x12\x05\x12", 3), 0);  // cut short

  // Another family's entry points on a Get context parse a GetRequest and
  // serialize the Get response.
  EXPECT_EQ(GNMI_SetRequest_Parse(ctx.get(), "\x18\x03", 2), 1);
  EXPECT_EQ(get->request_->type(), gnmi::GetRequest::OPERATIONAL);
  get->response_->add_notification()->set_timestamp(5);
  EXPECT_EQ(Serialized(GNMI_CapabilityResponse_Serialize, ctx.get()),
            get->response_->SerializeAsString());
}

TEST(GnmiRpc, BufferIsNoneUntilNeededThenGrowsToTheExactSizeAndServesBothSubscribeResponses) {
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  auto* rpc = static_cast<GnmiRpcSubscribe*>(ctx.get());
  void* out = &out;
  int outLen = -1;
  ASSERT_EQ(GNMI_SubscribeResponse_Serialize(ctx.get(), &out, &outLen), 1);
  EXPECT_EQ(std::make_tuple(out, outLen, rpc->GetBufferCapacity_()),
            std::make_tuple(nullptr, 0, 0));

  // Responses of about 30, 300 and 20 bytes: the buffer grows to the second's
  // exact size, and then serves the third and the sync response.
  void* grown = nullptr;
  for (size_t count : {30, 300, 20}) {
    rpc->GetResponse_()->mutable_update()->set_alias(std::string(count, 'a'));
    ASSERT_EQ(GNMI_SubscribeResponse_Serialize(ctx.get(), &out, &outLen), 1);
    EXPECT_EQ(testsupport::Bytes(out, outLen), rpc->GetResponse_()->SerializeAsString());
    if (count == 300) {
      grown = out;
      EXPECT_EQ(rpc->GetBufferCapacity_(), outLen);
    }
  }
  EXPECT_EQ(out, grown);
  rpc->GetSyncResponse_()->set_sync_response(true);
  ASSERT_EQ(GNMI_SubscribeSyncResponse_Serialize(ctx.get(), &out, &outLen), 1);
  EXPECT_EQ(std::make_tuple(testsupport::Bytes(out, outLen), out, rpc->GetBufferCapacity_() > 300),
            std::make_tuple("\x18\x01"s, grown, true));
}

TEST(GnmiIndex, ReadersAreFatalJustOutsideTheirListAndSubscriptionHandlesNullPastTheEnd) {
  auto get = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto set = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  auto capability = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  auto subscribe = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  gnmi::Notification notification;
  gnmi::Path path;
  // clang-format off
  const struct { void* handle; void* (*read)(void*, int); } readers[] = {
      {get.get(), GNMI_GetRequest_GetPath}, {get.get(), GNMI_GetRequest_GetUseModels},
      {get.get(), GNMI_GetRequest_GetExtension}, {set.get(), GNMI_SetRequest_GetDelete},
      {set.get(), GNMI_SetRequest_GetReplace}, {set.get(), GNMI_SetRequest_GetUpdate},
      {set.get(), GNMI_SetRequest_GetExtension}, {&path, GNMI_Path_GetPathElem},
      {capability.get(), GNMI_CapabilityRequest_GetExtension},
      {subscribe.get(), GNMI_SubscribeRequest_GetUpdate},
      {&notification, GNMI_Notification_GetUpdate}, {&notification, GNMI_Notification_GetDelete}};
  // clang-format on
  for (const auto& reader : readers) {
    ExpectOutOfRange(reader.handle, -1, 1707, reader.read);
    ExpectOutOfRange(reader.handle, 0, 1707, reader.read);
  }
  // A subscription's value readers have a check of their own; its handle
  // readers answer null past the end (the fuzz seeds check that).
  ParseText<gnmi::SubscribeRequest>(GNMI_SubscribeRequest_Parse, subscribe.get(),
                                    "subscribe { subscription {} }");
  ExpectOutOfRange(subscribe.get(), 1, 1715, GNMI_SubscribeRequest_GetSampleInterval,
                   GNMI_SubscribeRequest_GetHeartbeatInterval,
                   GNMI_SubscribeRequest_GetSuppressRedundant, GNMI_SubscribeRequest_GetSampleMode);
  ExpectOutOfRange(subscribe.get(), -1, 1715, GNMI_SubscribeRequest_GetSubscribe,
                   GNMI_SubscribeRequest_GetPath, GNMI_SubscribeRequest_GetSampleInterval,
                   GNMI_SubscribeRequest_GetHeartbeatInterval,
                   GNMI_SubscribeRequest_GetSuppressRedundant, GNMI_SubscribeRequest_GetSampleMode);
}

TEST(GnmiExchange, ResponsesCarryWhatTheBuildersSet) {
  auto set = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  for (int op : {1, 2, 7}) {  // DELETE, REPLACE and one outside the enumeration, kept
    GNMI_UpdateResult_SetOp(GNMI_SetResponse_AppendUpdateResult(set.get()), op);
  }
  GNMI_SetResponse_SetTimestamp(set.get(), 1700000000123456789);
  ExpectResponse<gnmi::SetResponse>(GNMI_SetResponse_Serialize, set.get(),
                                    R"(response { op: DELETE } response { op: REPLACE }
      response { op: 7 } timestamp: 1700000000123456789)");

  auto capability = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  void* c = capability.get();
  GNMI_CapabilityResponse_AppendSupportedModels(c);
  // More encodings than the list's first storage holds, one outside the enumeration.
  for (int encoding : {4, 0, 9, 2, 3, 1}) {
    GNMI_CapabilityResponse_AppendSupportedEncodings(c, encoding);
  }
  GNMI_CapabilityResponse_SetGnmiVersion(c, "0.7\0x", 5);
  EXPECT_THROW(GNMI_CapabilityResponse_SetGnmiVersion(c, nullptr, 1), std::logic_error);
  ExpectResponse<gnmi::CapabilityResponse>(GNMI_CapabilityResponse_Serialize, c,
                                           R"(supported_models {}
      supported_encodings: [4, 0, 9, 2, 3, 1] gNMI_version: "0.7\000x")");
}

TEST(GnmiSubscribe, SetAliasesReplacesASubscribeThenAppends) {
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  void* c = ctx.get();
  ParseText<gnmi::SubscribeRequest>(GNMI_SubscribeRequest_Parse, c,
                                    "subscribe { use_aliases: true } extension {}");
  void* first = GNMI_SubscribeRequest_SetAliases(c);
  GNMI_SubscribeRequest_SetAliases(c);
  const auto& request = *static_cast<GnmiRpcSubscribe*>(c)->GetRequest_();
  ASSERT_TRUE(MessageDifferencer::Equals(
      request, FromText<gnmi::SubscribeRequest>("aliases { alias {} alias {} } extension {}")))
      << request.DebugString();
  EXPECT_EQ(first, &request.aliases().alias(0));
}

TEST(GnmiSubscribe, NotificationIsMadeOnceOverWhatTheResponseHeldAndSyncIsSentEvenWhenFalse) {
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  auto* rpc = static_cast<GnmiRpcSubscribe*>(ctx.get());
  rpc->GetResponse_()->set_sync_response(true);
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
  EXPECT_EQ(GNMI_SubscribeResponse_GetNotification(ctx.get()), notification);
  GNMI_Notification_SetTimestamp(notification, 42);
  EXPECT_EQ(GNMI_Notification_GetTimestamp(notification), 42);
  void* deleted[] = {GNMI_Notification_AppendDelete(notification),
                     GNMI_Notification_AppendDelete(notification),
                     GNMI_Notification_AppendDelete(notification)};
  GNMI_Notification_AppendUpdate(notification);
  void* updated = GNMI_Notification_AppendUpdate(notification);
  EXPECT_EQ(std::make_tuple(GNMI_Notification_DeleteSizeof(notification),
                            GNMI_Notification_GetDelete(notification, 2),
                            GNMI_Notification_UpdateSizeof(notification),
                            GNMI_Notification_GetUpdate(notification, 1)),
            std::make_tuple(3, deleted[2], 2, updated));

  // The sync response is a message of its own, with the member set even to false.
  GNMI_SubscribeRequest_SyncResponse(ctx.get(), 0);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx.get()), "\x18\x00"s);
  GNMI_SubscribeRequest_SyncResponse(ctx.get(), -5);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx.get()), "\x18\x01");
  ExpectResponse<gnmi::SubscribeResponse>(
      GNMI_SubscribeResponse_Serialize, ctx.get(),
      "update { timestamp: 42 update {} update {} delete {} delete {} delete {} }");
}

TEST(GnmiSubMessages, AbsentReadsAsTheDefaultMadeOnceThenPresentAndSentEvenWhenEmpty) {
  // Record type and field; its maker, and its presence test and reader or null.
  const std::tuple<const Message&, const char*, void* (*)(void*), int (*)(void*), void* (*)(void*)>
      subMessages[] = {
          {gnmi::Notification::default_instance(), "prefix", GNMI_Notification_AddPrefix,
           GNMI_Notification_HasPrefix, GNMI_Notification_GetPrefix},
          {gnmi::Update::default_instance(), "path", GNMI_Update_SetPath, GNMI_Update_HasPath,
           GNMI_Update_GetPath},
          {gnmi::Update::default_instance(), "val", GNMI_Update_SetVal, GNMI_Update_HasVal,
           GNMI_Update_GetVal},
          {gnmi::UpdateResult::default_instance(), "path", GNMI_UpdateResult_AddPath, nullptr,
           nullptr},
          {gnmi::TypedValue::default_instance(), "leaflist_val", GNMI_TypedValue_LeaflistVal,
           nullptr, nullptr},
      };
  for (const auto& [type, name, make, has, get] : subMessages) {
    SCOPED_TRACE(name);
    const std::unique_ptr<Message> message(type.New());
    const auto* field = message->GetDescriptor()->FindFieldByName(name);
    const void* absent = &message->GetReflection()->GetMessage(*message, field);
    EXPECT_TRUE(has == nullptr || (has(message.get()) == 0 && get(message.get()) == absent));
    void* made = make(message.get());
    EXPECT_EQ(make(message.get()), made);
    EXPECT_TRUE(has == nullptr || (has(message.get()) == 1 && get(message.get()) == made));
    EXPECT_EQ(message->SerializeAsString(),
              std::string({static_cast<char>(field->number() << 3 | 2), 0}));
  }
}

// Each member on the wire against the Python runtime's: typed_value_test.
TEST(GnmiValues, RefusedBytesStillSwitchTheMemberAndALeafListLastsUntilAnotherIsSet) {
  gnmi::TypedValue value;
  GNMI_TypedValue_SetProtoBytes(&value, "\0", 1);
  // Reading never switches the member; a setter whose bytes are refused has
  // already switched to its own.
  EXPECT_STREQ(GNMI_TypedValue_GetJsonVal(&value), "");
  EXPECT_EQ(value.value_case(), gnmi::TypedValue::kProtoBytes);
  EXPECT_THROW(GNMI_TypedValue_SetJsonIetfVal(&value, nullptr, 1), std::logic_error);
  EXPECT_EQ(value.SerializeAsString(), "\x5a\x00"s);

  // The leaf list keeps its elements until another member is set.
  void* list = GNMI_TypedValue_LeaflistVal(&value);
  GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(list), 1);
  GNMI_TypedValue_SetIntVal(GNMI_TypedValue_AddElement(GNMI_TypedValue_LeaflistVal(&value)), 2);
  EXPECT_EQ(value.SerializeAsString(), "\x42\x08\x0a\x02\x10\x01\x0a\x02\x10\x02"s);
  GNMI_TypedValue_SetIntVal(&value, 3);
  EXPECT_EQ(static_cast<gnmi::ScalarArray*>(GNMI_TypedValue_LeaflistVal(&value))->element_size(),
            0);
}

// The pair GNMI_PathElem_GetKey stores for `index`.
std::pair<std::string, std::string> KeyAt(void* elem, int index) {
  const char* key = nullptr;
  const char* value = nullptr;
  GNMI_PathElem_GetKey(elem, index, &key, &value);
  return {key, value};
}

TEST(GnmiPath, AppendKeyOverwritesKeepsTheKeysBytesAndGetKeyAnswersEmptyPastTheEnd) {
  gnmi::PathElem elem;
  const std::pair<std::string, std::string> none;
  EXPECT_EQ(KeyAt(&elem, 0), none);
  GNMI_PathElem_AppendKey(&elem, "name", 4, "eth0", 4);
  GNMI_PathElem_AppendKey(&elem, "name", 4, "eth1", 4);
  EXPECT_EQ(elem.key().at("name"), "eth1");
  GNMI_PathElem_AppendKey(&elem, "unit\0x", 6, nullptr, 0);
  EXPECT_EQ(elem.key().at(std::string("unit\0x", 6)), "");
  EXPECT_EQ(KeyAt(&elem, -5), KeyAt(&elem, 0));
  EXPECT_EQ(KeyAt(&elem, 1000), none);
  EXPECT_THROW(GNMI_PathElem_AppendKey(&elem, nullptr, 1, "v", 1), std::logic_error);
  EXPECT_THROW(GNMI_PathElem_AppendKey(&elem, "k", 1, nullptr, 1), std::logic_error);
}

}  // namespace
