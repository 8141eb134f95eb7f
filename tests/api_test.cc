// The library as its callers see it: the gNMI RPC contexts and the messages
// below them, the C interface driven from strict C99 (c_api/c_calls.c), and
// the schemas as the generated classes put them on the wire. The readers'
// answers for parsed requests are checked field by field by the fuzz
// harnesses, whose seeds (fuzz/corpus) replay as tests of every build.
#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <tuple>
#include <typeinfo>

#include "dialout.pb.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-dialout.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/fatal_capture.h"
#include "support/gnmi_access.h"

// c_api/c_calls.c, built as strict C99, answers 0 when each of its checks held,
// else the line of the first that failed.
extern "C" int CRunCalls();

namespace {

using google::protobuf::Message;
using google::protobuf::util::MessageDifferencer;
using testsupport::FromText;
using testsupport::Make;
using testsupport::Serialized;
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

TEST(GnmiRpc, EachInitMakesItsOwnClassWithItsMethodPathAndDeInitIgnoresNull) {
  const struct {
    void* (*init)();
    void (*deinit)(void*);
    const std::type_info& type;
    const char* path;
  } families[] = {
      {GNMI_Capability_Init, GNMI_Capability_DeInit, typeid(GnmiRpcCapability), "Capabilities"},
      {GNMI_Get_Init, GNMI_Get_DeInit, typeid(GnmiRpcGet), "Get"},
      {GNMI_Set_Init, GNMI_Set_DeInit, typeid(GnmiRpcSet), "Set"},
      {GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, typeid(GnmiRpcSubscribe), "Subscribe"},
  };
  for (const auto& family : families) {
    auto* ctx = static_cast<GnmiRpcBase*>(family.init());
    EXPECT_EQ(typeid(*ctx), family.type) << family.path;
    EXPECT_EQ(ctx->GetRpcPath_(), std::string("/gnmi.gNMI/") + family.path);
    family.deinit(ctx);
    family.deinit(nullptr);
  }
}

TEST(GnmiRpc, ParseReplacesTheRequestOrSetsStatusThreeAndDispatchesByClass) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto* get = static_cast<GnmiRpcGet*>(ctx.get());
  const std::string bytes("\x12\x00\x18\x02", 4);  // path {}, type STATE
  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), 4), 1);
  EXPECT_EQ(get->request_->SerializeAsString(), bytes);
  ASSERT_EQ(GNMI_GetRequest_Parse(ctx.get(), bytes.data(), 0), 1);
  EXPECT_EQ(get->request_->ByteSizeLong(), 0u);
  EXPECT_EQ(get->GetParseStatus_(), 0);
  EXPECT_EQ(GNMI_GetRequest_Parse(ctx.get(), "\x12\x05\x12", 3), 0);  // cut short
  EXPECT_EQ(get->GetParseStatus_(), 3);                               // the parse status word

  // Another family's entry points on a Get context parse a GetRequest, which
  // leaves the status as it was, and serialize the Get response.
  EXPECT_EQ(GNMI_SetRequest_Parse(ctx.get(), "\x18\x03", 2), 1);
  EXPECT_EQ(get->request_->type(), gnmi::GetRequest::OPERATIONAL);
  EXPECT_EQ(get->GetParseStatus_(), 3);
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
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(outLen, 0);
  EXPECT_EQ(rpc->GetBufferCapacity_(), 0);

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
  EXPECT_EQ(testsupport::Bytes(out, outLen), "\x18\x01");
  EXPECT_EQ(out, grown);
  EXPECT_GT(rpc->GetBufferCapacity_(), 300);
  EXPECT_EQ(rpc->GetSerializeStatus_(), 0);
}

TEST(GnmiIndex, ReadersAreFatalJustOutsideTheirListAndSubscriptionHandlesNullPastTheEnd) {
  auto get = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  auto set = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  auto capability = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  auto subscribe = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  gnmi::Notification notification;
  gnmi::Path path;
  void* const g = get.get();
  void* const s = set.get();
  // clang-format off
  const struct { void* handle; void* (*read)(void*, int); } readers[] = {
      {g, GNMI_GetRequest_GetPath}, {g, GNMI_GetRequest_GetUseModels},
      {g, GNMI_GetRequest_GetExtension}, {s, GNMI_SetRequest_GetDelete},
      {s, GNMI_SetRequest_GetReplace}, {s, GNMI_SetRequest_GetUpdate},
      {s, GNMI_SetRequest_GetExtension}, {&path, GNMI_Path_GetPathElem},
      {capability.get(), GNMI_CapabilityRequest_GetExtension},
      {subscribe.get(), GNMI_SubscribeRequest_GetUpdate},
      {&notification, GNMI_Notification_GetUpdate}, {&notification, GNMI_Notification_GetDelete}};
  // clang-format on
  for (const auto& reader : readers) {
    ExpectOutOfRange(reader.handle, -1, 1707, reader.read);
    ExpectOutOfRange(reader.handle, 0, 1707, reader.read);
  }
  // A subscription's value readers have a check of their own; its handle
  // readers answer null past the end, as on a request that is no subscribe.
  ParseText<gnmi::SubscribeRequest>(GNMI_SubscribeRequest_Parse, subscribe.get(),
                                    "subscribe { subscription {} }");
  ExpectOutOfRange(subscribe.get(), 1, 1715, GNMI_SubscribeRequest_GetSampleInterval,
                   GNMI_SubscribeRequest_GetHeartbeatInterval,
                   GNMI_SubscribeRequest_GetSuppressRedundant, GNMI_SubscribeRequest_GetSampleMode);
  ExpectOutOfRange(subscribe.get(), -1, 1715, GNMI_SubscribeRequest_GetSubscribe,
                   GNMI_SubscribeRequest_GetPath, GNMI_SubscribeRequest_GetSampleInterval,
                   GNMI_SubscribeRequest_GetHeartbeatInterval,
                   GNMI_SubscribeRequest_GetSuppressRedundant, GNMI_SubscribeRequest_GetSampleMode);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(subscribe.get(), 1), nullptr);
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(subscribe.get(), 1), nullptr);
}

TEST(GnmiExchange, ResponsesCarryWhatTheBuildersSet) {
  auto get = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  for (int64_t timestamp : {5, 6}) {
    GNMI_Notification_SetTimestamp(GNMI_GetResponse_AppendNotification(get.get()), timestamp);
  }
  ExpectResponse<gnmi::GetResponse>(GNMI_GetResponse_Serialize, get.get(),
                                    "notification { timestamp: 5 } notification { timestamp: 6 }");

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
  EXPECT_EQ(
      std::make_tuple(GNMI_SubscribeRequest_HasSubscribe(c), GNMI_SubscribeRequest_HasAliases(c),
                      GNMI_SubscribeRequest_UseAliases(c)),
      std::make_tuple(0, 1, 0));
  GNMI_SubscribeRequest_SetAliases(c);
  const auto& request = *static_cast<GnmiRpcSubscribe*>(c)->GetRequest_();
  ASSERT_EQ(request.aliases().alias_size(), 2);
  EXPECT_EQ(first, &request.aliases().alias(0));
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(c), 1);
}

TEST(GnmiSubscribe, NotificationIsMadeOnceOverWhatTheResponseHeldAndSyncIsSentEvenWhenFalse) {
  auto ctx = Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  auto* rpc = static_cast<GnmiRpcSubscribe*>(ctx.get());
  rpc->GetResponse_()->set_sync_response(true);
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx.get());
  EXPECT_EQ(GNMI_SubscribeResponse_GetNotification(ctx.get()), notification);
  GNMI_Notification_SetTimestamp(notification, 42);
  EXPECT_EQ(GNMI_Notification_GetTimestamp(notification), 42);
  const gnmi::Notification& update = rpc->GetResponse_()->update();
  for (int i = 0; i < 3; ++i) {
    void* appended = GNMI_Notification_AppendDelete(notification);
    EXPECT_EQ(appended, &update.delete_(i));
  }
  GNMI_Notification_AppendUpdate(notification);
  GNMI_Notification_AppendUpdate(notification);
  EXPECT_EQ(std::make_tuple(GNMI_Notification_DeleteSizeof(notification),
                            GNMI_Notification_GetDelete(notification, 2),
                            GNMI_Notification_UpdateSizeof(notification),
                            GNMI_Notification_GetUpdate(notification, 1)),
            std::make_tuple(3, static_cast<const void*>(&update.delete_(2)), 2,
                            static_cast<const void*>(&update.update(1))));

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
  const struct {
    const Message& type;
    const char* field;
    void* (*make)(void*);
    int (*has)(void*);    // null: no presence test
    void* (*get)(void*);  // null: no reader
  } subMessages[] = {
      {gnmi::Notification::default_instance(), "prefix", GNMI_Notification_AddPrefix,
       GNMI_Notification_HasPrefix, GNMI_Notification_GetPrefix},
      {gnmi::Update::default_instance(), "path", GNMI_Update_SetPath, GNMI_Update_HasPath,
       GNMI_Update_GetPath},
      {gnmi::Update::default_instance(), "val", GNMI_Update_SetVal, GNMI_Update_HasVal,
       GNMI_Update_GetVal},
      {gnmi::UpdateResult::default_instance(), "path", GNMI_UpdateResult_AddPath, nullptr, nullptr},
      {gnmi::TypedValue::default_instance(), "leaflist_val", GNMI_TypedValue_LeaflistVal, nullptr,
       nullptr},
  };
  for (const auto& sub : subMessages) {
    SCOPED_TRACE(sub.field);
    const std::unique_ptr<Message> message(sub.type.New());
    const auto* field = message->GetDescriptor()->FindFieldByName(sub.field);
    if (sub.has != nullptr) {
      EXPECT_EQ(sub.has(message.get()), 0);
      EXPECT_EQ(sub.get(message.get()), &message->GetReflection()->GetMessage(*message, field));
    }
    void* made = sub.make(message.get());
    EXPECT_EQ(sub.make(message.get()), made);
    if (sub.has != nullptr) {
      EXPECT_EQ(sub.has(message.get()), 1);
      EXPECT_EQ(sub.get(message.get()), made);
    }
    EXPECT_EQ(message->SerializeAsString(),
              std::string({static_cast<char>(field->number() << 3 | 2), 0}));
  }
}

TEST(GnmiValues, EachMemberGoesOnTheWireAsGivenAndReplacesTheOthers) {
  const struct {
    void (*set)(void*);
    std::string wire;
  } members[] = {
      {[](void* v) { GNMI_TypedValue_SetStringVal(v, "up", 2); }, "\x0a\x02up"},
      {[](void* v) { GNMI_TypedValue_SetFloatVal(v, 0.1f); },
       "\x35\xcd\xcc\xcc\x3d"},  // 0x3dcccccd
      {[](void* v) { GNMI_TypedValue_SetUintVal(v, 1u << 31); }, "\x18\x80\x80\x80\x80\x08"},
      {[](void* v) { GNMI_TypedValue_SetIntVal(v, -2); },
       "\x10\xfe\xff\xff\xff\xff\xff\xff\xff\xff\x01"},
      {[](void* v) { GNMI_TypedValue_SetProtoBytes(v, "\0", 1); }, "\x6a\x01\x00"s},
  };
  gnmi::TypedValue value;
  for (const auto& member : members) {
    member.set(&value);
    EXPECT_EQ(value.SerializeAsString(), member.wire);
  }
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
  EXPECT_EQ(GNMI_PathElem_KeySizeof(&elem), 2);
}

TEST(CApi, GetRpcAndSouthFrameFromC) { EXPECT_EQ(CRunCalls(), 0); }

// A fresh message of `type`'s class parsed from `bytes`; null when the parse fails.
std::unique_ptr<Message> Parsed(const Message& type, const std::string& bytes) {
  std::unique_ptr<Message> message(type.New());
  return message->ParseFromString(bytes) ? std::move(message) : nullptr;
}

TEST(Schema, LastOneofMemberAndLastMapEntryWinUnknownFieldsAreKeptEmptyMembersWritten) {
  const auto& capabilities = gnmi::CapabilityResponse::default_instance();
  const std::string k1 = "\x12\x07\x0a\x01k\x12\x02v1", k2 = "\x12\x07\x0a\x01k\x12\x02v2";
  const struct {
    const Message& type;
    std::string bytes;
    std::string written;  // empty: the bytes as they were read
  } cases[] = {
      {gnmi::TypedValue::default_instance(), "\x0a\x01z\x10\x05",
       "\x10\x05"},                                       // string_val, int_val
      {gnmi::PathElem::default_instance(), k1 + k2, k2},  // key k: v1, then v2
      // type STATE, then the undeclared field 4 as a varint and as bytes
      {gnmi::GetRequest::default_instance(), "\x18\x02\x20\x09\x22\x02hi", ""},
      // request_id 1, then the undeclared fields 3 and 4
      {quorix_dialin::SubsArgs::default_instance(), "\x08\x01\x18\x07\x22\x01x", ""},
      {gnmi::SubscribeRequest::default_instance(), "\x1a\x00"s, ""},  // an empty Poll
      {capabilities, "\x10\x01\x10\x04", "\x12\x02\x01\x04"},         // encodings, written packed
      {capabilities, "\x12\x02\x01\x04", ""},
      {dialout::DialoutArgs::default_instance(), "\x08\x01\x12\x00"s, ""},  // an empty Any
  };
  for (const auto& c : cases) {
    const auto message = Parsed(c.type, c.bytes);
    ASSERT_NE(message, nullptr) << c.type.GetTypeName();
    EXPECT_EQ(message->SerializeAsString(), c.written.empty() ? c.bytes : c.written)
        << message->DebugString();
  }
}

TEST(Schema, InvalidUtf8FailsAStringFieldButNotABytesFieldAndIsOnlyLoggedWhenWritten) {
  const auto& southMsg = quorix_grpc_ipc::SouthMsg::default_instance();
  const struct {
    const Message& type;
    std::string bytes;
    const char* failingField;  // null: the bytes parse
  } cases[] = {
      {gnmi::Path::default_instance(), "\x12\x01\xff", "gnmi.Path.origin"},
      {gnmi::GetRequest::default_instance(), "\x12\x03\x12\x01\xff", "gnmi.Path.origin"},
      {gnmi::PathElem::default_instance(), "\x12\x05\x0a\x01\xff\x12\x00"s,
       "gnmi.PathElem.KeyEntry.key"},
      // bytes_val, json_val, json_ietf_val and proto_bytes, each checked as it is read
      {gnmi::TypedValue::default_instance(), "\x2a\x01\xff\x52\x01\xff\x5a\x01\xff\x6a\x01\xff",
       nullptr},
      {quorix_dialin::SubsReply::default_instance(), "\x22\x01\xff", nullptr},  // message
      {quorix_dialin::SubsArgs::default_instance(), "\x2a\x03\x0a\x01\xff",
       "quorix_dialin.Path.path"},
      {southMsg, "\x4a\x01\xff", "quorix_grpc_ipc.SouthMsg.result_description"},
      {southMsg, "\x52\x03\x0a\x01\xff", "quorix_grpc_ipc.LoginAuthenticate.user_name"},
      // login.token, server_rpc.rpc_parament and rpc_data.data
      {southMsg, "\x52\x03\x22\x01\xff\x62\x03\x42\x01\xff\x6a\x03\x0a\x01\xff", nullptr},
  };
  for (const auto& c : cases) {
    std::unique_ptr<Message> message;
    const auto log = testsupport::CaptureFatal([&] { message = Parsed(c.type, c.bytes); });
    EXPECT_EQ(message == nullptr, c.failingField != nullptr) << c.type.GetTypeName();
    if (c.failingField != nullptr) {
      EXPECT_NE(
          log.logged.find("'"s + c.failingField + "' contains invalid UTF-8 data when parsing"),
          std::string::npos)
          << log.logged;
    }
  }
  gnmi::Path path;
  path.set_origin("\xff");
  const auto log =
      testsupport::CaptureFatal([&] { EXPECT_EQ(path.SerializeAsString(), cases[0].bytes); });
  EXPECT_NE(log.logged.find("'gnmi.Path.origin' contains invalid UTF-8 data when serializing"),
            std::string::npos)
      << log.logged;
}

TEST(Schema, ServiceArgsDeclarationOrderDiffersFromWireOrderAndTheGnmiFileHasItsVersion) {
  const auto* descriptor = quorix_dialout::serviceArgs::descriptor();
  EXPECT_EQ(descriptor->field(2)->full_name(), "quorix_dialout.serviceArgs.data_json");
  EXPECT_EQ(descriptor->field(3)->full_name(), "quorix_dialout.serviceArgs.errors");
  quorix_dialout::serviceArgs args;
  args.set_reqid(1);
  args.set_errors("r");
  args.set_data_json("j");
  EXPECT_EQ(args.SerializeAsString(), "\x08\x01\x1a\x01r\x22\x01j");
  const auto* file = gnmi::GetRequest::descriptor()->file();
  EXPECT_EQ(file->options().GetExtension(gnmi::gnmi_service), "0.7.0");
  EXPECT_EQ(file->FindExtensionByName("gnmi_service")->number(), 1001);
}

}  // namespace
