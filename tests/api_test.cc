// The library as its callers see it: the gNMI RPC contexts and the messages
// below them, the C interface driven from strict C99 (c_api/c_calls.c), and
// the schemas as the generated classes put them on the wire.
#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <stdexcept>
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
  ASSERT_TRUE(testsupport::ParseInto(parse, ctx, FromText<Request>(text)));
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

// An indexed reader with its count, and the repeated field `field` of
// `owner` that they read.
struct IndexedReader {
  void* handle;
  void* (*get)(void*, int);
  int (*count)(void*);
  const Message& owner;
  const char* field;
};

// For each reader: the count is the field's, each element handed out is the
// field's own object, and the indices just outside the field are fatal.
void ExpectIndexedReaders(std::initializer_list<IndexedReader> readers) {
  for (const IndexedReader& reader : readers) {
    const auto* field = reader.owner.GetDescriptor()->FindFieldByName(reader.field);
    const auto* reflection = reader.owner.GetReflection();
    const int size = reflection->FieldSize(reader.owner, field);
    EXPECT_EQ(reader.count(reader.handle), size) << field->full_name();
    for (int i = 0; i < size; ++i) {
      EXPECT_EQ(reader.get(reader.handle, i),
                &reflection->GetRepeatedMessage(reader.owner, field, i))
          << field->full_name() << " " << i;
    }
    ExpectOutOfRange(reader.handle, -1, 1707, reader.get);
    ExpectOutOfRange(reader.handle, size, 1707, reader.get);
  }
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
  EXPECT_EQ(get->GetParseStatus_(), GnmiRpcBase::kStatusParseFailed);

  // Another family's entry points on a Get context parse a GetRequest, which
  // leaves the status as it was, and serialize the Get response.
  EXPECT_EQ(GNMI_SetRequest_Parse(ctx.get(), "\x18\x03", 2), 1);
  EXPECT_EQ(get->request_->type(), gnmi::GetRequest::OPERATIONAL);
  EXPECT_EQ(get->GetParseStatus_(), GnmiRpcBase::kStatusParseFailed);
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

// In each request every list holds a count of its own, so that a reader of the
// wrong list fails its count or its bounds.
TEST(GnmiExchange, GetRequestIsReadThroughItsContextAndNotificationsAreAppended) {
  auto ctx = Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  void* c = ctx.get();
  ParseText<gnmi::GetRequest>(GNMI_GetRequest_Parse, c,
                              "prefix {} path { elem {} elem {} } use_models {} use_models {} "
                              "extension {} extension {} extension {} type: STATE encoding: 9");
  const auto& request = *static_cast<GnmiRpcGet*>(c)->request_;
  EXPECT_EQ(GNMI_GetRequest_GetPrefix(c), &request.prefix());
  EXPECT_EQ(GNMI_GetRequest_GetType(c), gnmi::GetRequest::STATE);
  EXPECT_EQ(GNMI_GetRequest_GetEncoding(c), 9);  // outside the enumeration, kept
  ExpectIndexedReaders({
      {c, GNMI_GetRequest_GetPath, GNMI_GetRequest_PathSizeof, request, "path"},
      {c, GNMI_GetRequest_GetUseModels, GNMI_GetRequest_UseModelsSizeof, request, "use_models"},
      {c, GNMI_GetRequest_GetExtension, GNMI_GetRequest_ExtensionSizeof, request, "extension"},
      {GNMI_GetRequest_GetPath(c, 0), GNMI_Path_GetPathElem, GNMI_Path_PathElemSizeof,
       request.path(0), "elem"},
  });
  for (int64_t timestamp : {5, 6}) {
    GNMI_Notification_SetTimestamp(GNMI_GetResponse_AppendNotification(c), timestamp);
  }
  ExpectResponse<gnmi::GetResponse>(GNMI_GetResponse_Serialize, c,
                                    "notification { timestamp: 5 } notification { timestamp: 6 }");
  ParseText<gnmi::GetRequest>(GNMI_GetRequest_Parse, c, "");
  EXPECT_EQ(GNMI_GetRequest_HasPrefix(c), 0);
  EXPECT_EQ(GNMI_GetRequest_GetPrefix(c), nullptr);
}

TEST(GnmiExchange, SetRequestIsReadThroughItsContextAndResultsAreAppended) {
  auto ctx = Make<GNMI_Set_Init, GNMI_Set_DeInit>();
  void* c = ctx.get();
  ParseText<gnmi::SetRequest>(GNMI_SetRequest_Parse, c,
                              "prefix {} delete {} replace {} replace {} update {} update {} "
                              "update {} extension {} extension {} extension {} extension {}");
  const auto& request = *static_cast<GnmiRpcSet*>(c)->request_;
  EXPECT_EQ(GNMI_SetRequest_GetPrefix(c), &request.prefix());
  ExpectIndexedReaders({
      {c, GNMI_SetRequest_GetDelete, GNMI_SetRequest_DeleteSizeof, request, "delete"},
      {c, GNMI_SetRequest_GetReplace, GNMI_SetRequest_ReplaceSizeof, request, "replace"},
      {c, GNMI_SetRequest_GetUpdate, GNMI_SetRequest_UpdateSizeof, request, "update"},
      {c, GNMI_SetRequest_GetExtension, GNMI_SetRequest_ExtensionSizeof, request, "extension"},
  });
  GNMI_Path_SetOrigin(GNMI_SetResponse_AddPrefix(c), "oc", 2);
  for (int op : {1, 2, 7}) {  // DELETE, REPLACE and one outside the enumeration, kept
    GNMI_UpdateResult_SetOp(GNMI_SetResponse_AppendUpdateResult(c), op);
  }
  GNMI_SetResponse_SetTimestamp(c, 1700000000123456789);
  GNMI_SetResponse_AppendExtension(c);
  ExpectResponse<gnmi::SetResponse>(GNMI_SetResponse_Serialize, c, R"(prefix { origin: "oc" }
      response { op: DELETE } response { op: REPLACE } response { op: 7 }
      timestamp: 1700000000123456789 extension {})");
  ParseText<gnmi::SetRequest>(GNMI_SetRequest_Parse, c, "");
  EXPECT_EQ(GNMI_SetRequest_HasPrefix(c), 0);
  EXPECT_EQ(GNMI_SetRequest_GetPrefix(c), nullptr);
}

TEST(GnmiExchange, CapabilityRequestIsReadThroughItsContextAndTheResponseBuilt) {
  auto ctx = Make<GNMI_Capability_Init, GNMI_Capability_DeInit>();
  void* c = ctx.get();
  ParseText<gnmi::CapabilityRequest>(GNMI_CapabilityRequest_Parse, c, "extension {} extension {}");
  ExpectIndexedReaders(
      {{c, GNMI_CapabilityRequest_GetExtension, GNMI_CapabilityRequest_ExtensionSizeof,
        *static_cast<GnmiRpcCapability*>(c)->request_, "extension"}});
  GNMI_CapabilityResponse_AppendSupportedModels(c);
  // More encodings than the list's first storage holds, one outside the enumeration.
  for (int encoding : {4, 0, 9, 2, 3, 1}) {
    GNMI_CapabilityResponse_AppendSupportedEncodings(c, encoding);
  }
  GNMI_CapabilityResponse_SetGnmiVersion(c, "0.7\0x", 5);
  EXPECT_THROW(GNMI_CapabilityResponse_SetGnmiVersion(c, nullptr, 1), std::logic_error);
  GNMI_CapabilityResponse_AppendExtension(c);
  ExpectResponse<gnmi::CapabilityResponse>(GNMI_CapabilityResponse_Serialize, c,
                                           R"(supported_models {}
      supported_encodings: [4, 0, 9, 2, 3, 1] gNMI_version: "0.7\000x" extension {})");
}

// The readers of the subscription list's own fields, each with a list in text
// format where only its field is away from the default, and what it then answers.
const struct ListReader {
  const char* list;
  int (*read)(void*);
  int answer;
} kListReaders[] = {
    {"use_aliases: true", GNMI_SubscribeRequest_UseAliases, 1},
    {"allow_aggregation: true", GNMI_SubscribeRequest_GetAggregation, 1},
    {"updates_only: true", GNMI_SubscribeRequest_GetUpdatesOnly, 1},
    {"mode: POLL", GNMI_SubscribeRequest_GetSubscriptionMode, 2},
    {"encoding: PROTO", GNMI_SubscribeRequest_GetEncoding, 2},
    {"prefix {}", GNMI_SubscribeRequest_HasPrefix, 1},
    {"qos {}", GNMI_SubscribeRequest_HasQosMarking, 1},  // present, marking 0
    {"subscription {} subscription {}", GNMI_SubscribeRequest_SubscriptionSize, 2},
    {"use_models {} use_models {}", GNMI_SubscribeRequest_UseModelsSizeof, 2},
};

struct GnmiSubscribe : ::testing::Test {
  void Parse(const std::string& text) {
    ParseText<gnmi::SubscribeRequest>(GNMI_SubscribeRequest_Parse, ctx, text);
  }
  testsupport::Owned<GNMI_Subscribe_DeInit> owned =
      Make<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>();
  void* ctx = owned.get();
  GnmiRpcSubscribe* rpc = static_cast<GnmiRpcSubscribe*>(ctx);
};

TEST_F(GnmiSubscribe, EachListReaderReadsItsOwnField) {
  for (const ListReader& changed : kListReaders) {
    Parse(std::string("subscribe { ") + changed.list + " }");
    for (const ListReader& reader : kListReaders) {
      EXPECT_EQ(reader.read(ctx), &reader == &changed ? reader.answer : 0)
          << "reader of " << reader.list << ", list " << changed.list;
    }
  }
  Parse("subscribe { qos { marking: 46 } }");
  EXPECT_EQ(GNMI_SubscribeRequest_GetQosMarking(ctx), 46u);
}

TEST_F(GnmiSubscribe, PollAndAliasesReadAnEmptyListAndSetAliasesReplacesASubscribe) {
  const auto expectEmpty = [this](gnmi::SubscribeRequest::RequestCase requestCase) {
    for (const ListReader& reader : kListReaders) {
      EXPECT_EQ(reader.read(ctx), 0) << reader.list;
    }
    EXPECT_EQ(GNMI_SubscribeRequest_GetPrefix(ctx), nullptr);
    EXPECT_EQ(GNMI_SubscribeRequest_GetQosMarking(ctx), 0u);
    EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx, 0), nullptr);
    EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx, 0), nullptr);
    ExpectOutOfRange(ctx, 0, 1715, GNMI_SubscribeRequest_GetSampleInterval);
    EXPECT_EQ(GNMI_SubscribeRequest_HasSubscribe(ctx), 0);
    EXPECT_EQ(GNMI_SubscribeRequest_HasPoll(ctx), requestCase == gnmi::SubscribeRequest::kPoll);
    EXPECT_EQ(GNMI_SubscribeRequest_HasAliases(ctx),
              requestCase == gnmi::SubscribeRequest::kAliases);
  };
  Parse("poll {}");
  expectEmpty(gnmi::SubscribeRequest::kPoll);

  // SetAliases replaces a subscribe, then appends to the list each time.
  Parse("subscribe { use_aliases: true } extension {}");
  void* first = GNMI_SubscribeRequest_SetAliases(ctx);
  expectEmpty(gnmi::SubscribeRequest::kAliases);
  GNMI_SubscribeRequest_SetAliases(ctx);
  ASSERT_EQ(rpc->GetRequest_()->aliases().alias_size(), 2);
  EXPECT_EQ(first, &rpc->GetRequest_()->aliases().alias(0));
  EXPECT_EQ(GNMI_SubscribeRequest_ExtensionSizeof(ctx), 1);
}

TEST_F(GnmiSubscribe, EntriesAreReadAtTheirIndexAndOnlyTwoReadersTestTheRange) {
  Parse(R"(subscribe { subscription { path {} mode: SAMPLE sample_interval: 10000000000 }
      subscription { mode: ON_CHANGE heartbeat_interval: 60000000000
                     suppress_redundant: true } })");
  const gnmi::SubscriptionList& list = rpc->GetRequest_()->subscribe();
  EXPECT_EQ(GNMI_SubscribeRequest_GetSubscribe(ctx, 1), &list.subscription(1));
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx, 0), &list.subscription(0).path());
  EXPECT_EQ(GNMI_SubscribeRequest_GetPath(ctx, 1), &gnmi::Path::default_instance());
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleMode(ctx, 0), gnmi::SAMPLE);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleInterval(ctx, 0), 10000000000u);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSampleMode(ctx, 1), gnmi::ON_CHANGE);
  EXPECT_EQ(GNMI_SubscribeRequest_GetHeartbeatInterval(ctx, 1), 60000000000u);
  EXPECT_EQ(GNMI_SubscribeRequest_GetSuppressRedundant(ctx, 1), 1);

  // Past the end the subscription and path readers answer null (as on an empty
  // list); the others are fatal.
  ExpectOutOfRange(ctx, 2, 1715, GNMI_SubscribeRequest_GetSampleInterval,
                   GNMI_SubscribeRequest_GetHeartbeatInterval,
                   GNMI_SubscribeRequest_GetSuppressRedundant, GNMI_SubscribeRequest_GetSampleMode);
  ExpectOutOfRange(ctx, -1, 1715, GNMI_SubscribeRequest_GetSubscribe, GNMI_SubscribeRequest_GetPath,
                   GNMI_SubscribeRequest_GetSampleInterval,
                   GNMI_SubscribeRequest_GetHeartbeatInterval,
                   GNMI_SubscribeRequest_GetSuppressRedundant, GNMI_SubscribeRequest_GetSampleMode);
}

TEST_F(GnmiSubscribe, NotificationIsMadeOnceOverWhatTheResponseHeldAndSyncIsSentEvenWhenFalse) {
  ExpectOutOfRange(ctx, 0, 1707, GNMI_SubscribeRequest_GetUpdate);
  rpc->GetResponse_()->set_sync_response(true);
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx);
  EXPECT_EQ(GNMI_SubscribeResponse_GetNotification(ctx), notification);
  GNMI_Notification_SetTimestamp(notification, 42);
  EXPECT_EQ(GNMI_Notification_GetTimestamp(notification), 42);
  const gnmi::Notification& update = rpc->GetResponse_()->update();
  for (int i = 0; i < 3; ++i) {
    void* appended = GNMI_Notification_AppendDelete(notification);
    EXPECT_EQ(appended, &update.delete_(i));
  }
  GNMI_Notification_AppendUpdate(notification);
  GNMI_Notification_AppendUpdate(notification);
  ExpectIndexedReaders({
      {ctx, GNMI_SubscribeRequest_GetUpdate,
       [](void* c) {
         return GNMI_Notification_UpdateSizeof(GNMI_SubscribeResponse_GetNotification(c));
       },
       update, "update"},
      {notification, GNMI_Notification_GetUpdate, GNMI_Notification_UpdateSizeof, update, "update"},
      {notification, GNMI_Notification_GetDelete, GNMI_Notification_DeleteSizeof, update, "delete"},
  });

  // The sync response is a message of its own, with the member set even to false.
  GNMI_SubscribeRequest_SyncResponse(ctx, 0);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx), "\x18\x00"s);
  GNMI_SubscribeRequest_SyncResponse(ctx, -5);
  EXPECT_EQ(Serialized(GNMI_SubscribeSyncResponse_Serialize, ctx), "\x18\x01");
  ExpectResponse<gnmi::SubscribeResponse>(
      GNMI_SubscribeResponse_Serialize, ctx,
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

TEST(GnmiPath, AppendKeyOverwritesAndGetKeyWalksByPosition) {
  gnmi::PathElem elem;
  const std::pair<std::string, std::string> none;
  EXPECT_EQ(KeyAt(&elem, 0), none);
  GNMI_PathElem_AppendKey(&elem, "name", 4, "eth0", 4);
  GNMI_PathElem_AppendKey(&elem, "name", 4, "eth1", 4);
  EXPECT_EQ(GNMI_PathElem_KeySizeof(&elem), 1);
  GNMI_PathElem_AppendKey(&elem, "unit\0x", 6, nullptr, 0);
  ASSERT_EQ(GNMI_PathElem_KeySizeof(&elem), 2);
  EXPECT_EQ(elem.key().at(std::string("unit\0x", 6)), "");
  const std::map<std::string, std::string> seen{KeyAt(&elem, 0), KeyAt(&elem, 1)};
  EXPECT_EQ(seen, (std::map<std::string, std::string>{{"name", "eth1"}, {"unit", ""}}));
  EXPECT_EQ(KeyAt(&elem, -5), KeyAt(&elem, 0));
  EXPECT_EQ(KeyAt(&elem, 2), none);
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
