// The fuzz harnesses, one per entry point that parses bytes or text from
// outside the device; program fuzz_<name> runs harness::<name> (entry.cc). Each parses
// its input through the entry point and, as the truth, through the message
// runtime; walks the readers against the truth (value readers as tables, in
// the order of the message's fields; handles as the messages they are); then
// builds a reply from the truth's variable-length content through our
// builders, whose serialized bytes must decode to what the runtime expects.
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/util/message_differencer.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>

#include "fuzz/harnesses.h"
#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "grpci/grpci_ex.h"
#include "oxa_mem.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/owned.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using Paths = google::protobuf::RepeatedPtrField<gnmi::Path>;

// The runtime reports every rejected UTF-8 string of a parse; under fuzzing
// only its fatal reports, failed checks among them, are worth printing.
const google::protobuf::LogSilencer kQuiet;

// Field by field, maps as maps.
void CheckEqual(const Message& actual, const Message& expected) {
  GOOGLE_CHECK(google::protobuf::util::MessageDifferencer::Equals(actual, expected))
      << actual.DebugString() << "differs from\n"
      << expected.DebugString();
}

// A handle the readers give out is the message itself.
void Same(void* handle, const Message& truth) {
  CheckEqual(*static_cast<const Message*>(handle), truth);
}

// A string reader's answer: the field's bytes and their terminating NUL.
bool Is(const char* text, const std::string& field) {
  return text != nullptr && std::memcmp(text, field.c_str(), field.size() + 1) == 0;
}

uint32_t Len(const std::string& text) { return static_cast<uint32_t>(text.size()); }

// A new object from kInit with the input parsed into it (twice: a parse
// replaces what was there), or null when the input is no valid encoding. The
// entry point must judge every input as the runtime does parsing `truth`.
template <auto kInit, auto kDeInit, class Parse>
testsupport::Owned<kDeInit> Parsed(Parse parse, Message* truth, const uint8_t* data, size_t size) {
  auto handle = testsupport::Make<kInit, kDeInit>();
  const int ok = truth->ParseFromArray(data, static_cast<int>(size)) ? 1 : 0;
  GOOGLE_CHECK(handle != nullptr && parse(handle.get(), data, static_cast<int>(size)) == ok &&
               parse(handle.get(), data, static_cast<int>(size)) == ok);
  if (ok == 0) handle.reset();
  return handle;
}

// A field as the value readers answer it, widened to 64 bits: a presence for
// a message, the element count of a repeated field.
uint64_t ScalarOf(const Message& truth, const FieldDescriptor* field) {
  const auto* reflection = truth.GetReflection();
  if (field->is_repeated()) return reflection->FieldSize(truth, field);
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_UINT32:
      return reflection->GetUInt32(truth, field);
    case FieldDescriptor::CPPTYPE_UINT64:
      return reflection->GetUInt64(truth, field);
    case FieldDescriptor::CPPTYPE_BOOL:
      return reflection->GetBool(truth, field) ? 1 : 0;
    case FieldDescriptor::CPPTYPE_ENUM:
      return reflection->GetEnumValue(truth, field);
    case FieldDescriptor::CPPTYPE_MESSAGE:
      return reflection->HasField(truth, field) ? 1 : 0;
    default:
      GOOGLE_LOG(FATAL) << "no value reader for " << field->full_name();
      return 0;
  }
}

// One value reader against its field: a string reader answers the field's
// bytes, a bytes reader also stores their count.
template <class Reader>
void Field(void* handle, const Message& truth, const FieldDescriptor* field, Reader get) {
  if constexpr (std::is_invocable_v<Reader, void*, uint32_t*>) {
    const std::string bytes = truth.GetReflection()->GetString(truth, field);
    uint32_t len = ~Len(bytes);
    GOOGLE_CHECK(Is(get(handle, &len), bytes) && len == bytes.size()) << field->full_name();
  } else if constexpr (std::is_invocable_r_v<const char*, Reader, void*>) {
    GOOGLE_CHECK(Is(get(handle), truth.GetReflection()->GetString(truth, field)))
        << field->full_name();
  } else if constexpr (std::is_invocable_v<Reader, void*>) {
    GOOGLE_CHECK_EQ(static_cast<uint64_t>(get(handle)), ScalarOf(truth, field))
        << field->full_name();
  }
}

// The value readers of `handle`, one per field of `truth` in the fields'
// order (nullptr where a field has none), against the truth's values.
template <class... Readers>
void Fields(void* handle, const Message& truth, Readers... readers) {
  const auto* descriptor = truth.GetDescriptor();
  GOOGLE_CHECK_EQ(sizeof...(readers), static_cast<size_t>(descriptor->field_count()))
      << descriptor->full_name();
  int index = 0;
  (Field(handle, truth, descriptor->field(index++), readers), ...);
}

// An optional sub-message's handle, null exactly when absent, and its walk.
template <class Truth, class Walk>
void Sub(void* handle, void* (*get)(void*), bool present, const Truth& truth, Walk walk) {
  void* sub = get(handle);
  GOOGLE_CHECK_EQ(sub != nullptr, present);
  if (sub != nullptr) walk(sub, truth);
}

// A payload record through its value readers.
template <class... Readers>
void Record(void* handle, void* (*get)(void*), bool present, const Message& truth,
            Readers... readers) {
  Sub(handle, get, present, truth,
      [readers...](void* record, const Message& want) { Fields(record, want, readers...); });
}

// The element handles of a repeated field (its count is a value reader's).
template <class Element, class Walk>
void Each(void* handle, void* (*get)(void*, int),
          const google::protobuf::RepeatedPtrField<Element>& truth, Walk walk) {
  for (int i = 0; i < truth.size(); ++i) walk(get(handle, i), truth.Get(i));
}

// A path through its readers. An element's keys come in the map's own order,
// as the map's own strings; a negative index gives the first, the end "".
void ReadPath(void* path, const gnmi::Path& truth) {
  Fields(path, truth, nullptr, GNMI_Path_GetOrigin, GNMI_Path_PathElemSizeof, GNMI_Path_GetTarget);
  Each(path, GNMI_Path_GetPathElem, truth.elem(), [](void* elem, const gnmi::PathElem& element) {
    Same(elem, element);
    Fields(elem, element, GNMI_PathElem_GetName, GNMI_PathElem_KeySizeof);
    const auto& keys = static_cast<const gnmi::PathElem*>(elem)->key();
    auto entry = keys.begin();
    for (int i = -1; i <= static_cast<int>(keys.size()); ++i) {
      const char* key = nullptr;
      const char* value = nullptr;
      GNMI_PathElem_GetKey(elem, i, &key, &value);
      GOOGLE_CHECK(entry == keys.end()
                       ? Is(key, "") && Is(value, "")
                       : key == entry->first.c_str() && value == entry->second.c_str());
      if (i >= 0 && entry != keys.end()) ++entry;
    }
  });
}

// Writes `from` through the setters into an empty path; gives what that
// makes: `from` without what the setters do not reach.
gnmi::Path WritePath(gnmi::Path from, void* to) {
  GNMI_Path_SetOrigin(to, from.origin().data(), Len(from.origin()));
  GNMI_Path_SetTarget(to, from.target().data(), Len(from.target()));
  for (const gnmi::PathElem& elem : from.elem()) {
    void* made = GNMI_Path_AppendPathElem(to);
    GNMI_PathElem_SetName(made, elem.name().data(), Len(elem.name()));
    for (const auto& [key, value] : elem.key()) {
      GNMI_PathElem_AppendKey(made, key.data(), Len(key), value.data(), Len(value));
    }
  }
  from.GetReflection()->ClearField(&from, from.GetDescriptor()->FindFieldByName("element"));
  from.DiscardUnknownFields();
  return from;
}

// The prefix when there is one, and an update per path, through the builders
// into `notification`; gives the notification that makes.
gnmi::Notification Notify(void* notification, const gnmi::Path* prefix, const Paths& paths) {
  gnmi::Notification want;
  if (prefix != nullptr) {
    *want.mutable_prefix() = WritePath(*prefix, GNMI_Notification_AddPrefix(notification));
  }
  for (const gnmi::Path& path : paths) {
    void* update = GNMI_Notification_AppendUpdate(notification);
    *want.add_update()->mutable_path() = WritePath(path, GNMI_Update_SetPath(update));
  }
  return want;
}

// A reply's bytes from a gNMI context's Serialize entry points.
std::string Bytes(int (*serialize)(void*, void**, int*), void* ctx) {
  void* out = nullptr;
  int len = -1;
  GOOGLE_CHECK(serialize(ctx, &out, &len) == 1 && len >= 0 && (len == 0 || out != nullptr));
  return testsupport::Bytes(out, static_cast<size_t>(len));
}

// A GRPCI_ serializer's reported bytes, copied, and its block released.
std::string Bytes(int32_t (*serialize)(uint32_t, void*, void**, uint32_t*), void* message) {
  void* out = nullptr;
  uint32_t len = 0;
  GOOGLE_CHECK(serialize(1, message, &out, &len) == 1 && out != nullptr);
  std::string bytes = testsupport::Bytes(out, len);
  OXA_Free_F(out, "fuzz", 0);
  return bytes;
}

// Bytes the runtime decodes to a message equal to `want`.
void CheckDecodes(const std::string& bytes, Message* want) {
  std::unique_ptr<Message> decoded(want->New());
  GOOGLE_CHECK(decoded->ParseFromString(bytes));
  CheckEqual(*decoded, *want);
}

// A path's canonical text, its length as GNMI_Path_ToString counts it.
std::string Text(gnmi::Path* path) {
  std::string text(GNMI_Path_ToString(path, nullptr, 0), '\0');
  GOOGLE_CHECK_EQ(GNMI_Path_ToString(path, text.data(), Len(text) + 1), text.size());
  return text;
}

// The path's text reads back to the same path and writes the same text again.
void CheckReadsBack(gnmi::Path* path) {
  const std::string text = Text(path);
  gnmi::Path back;
  back.set_target(path->target());
  GOOGLE_CHECK_EQ(GNMI_Path_FromString(&back, text.data(), Len(text), nullptr), 1) << text;
  CheckEqual(back, *path);
  GOOGLE_CHECK_EQ(Text(&back), text);
}

// The input taken from the front as small numbers and short strings.
struct Input {
  const uint8_t* next;
  size_t left;
  int Number(int most) {
    if (left == 0) return 0;
    --left;
    return *next++ % (most + 1);
  }
  std::string String(int most) {
    const size_t n = std::min<size_t>(Number(most), left);
    std::string text(reinterpret_cast<const char*>(next), n);
    next += n;
    left -= n;
    return text;
  }
};

gnmi::Path MadePath(Input* in) {
  gnmi::Path path;
  path.set_origin(in->String(8));
  for (int e = in->Number(6); e > 0; --e) {
    gnmi::PathElem* elem = path.add_elem();
    elem->set_name(in->String(12) + "n");  // names are never empty
    for (int k = in->Number(3); k > 0; --k) {
      (*elem->mutable_key())[in->String(12) + "k"] = in->String(12);
    }
  }
  return path;
}

}  // namespace

namespace harness {

// The response echoes the extensions.
void capability_request(const uint8_t* data, size_t size) {
  gnmi::CapabilityRequest truth;
  auto ctx = Parsed<GNMI_Capability_Init, GNMI_Capability_DeInit>(GNMI_CapabilityRequest_Parse,
                                                                  &truth, data, size);
  if (!ctx) return;
  Fields(ctx.get(), truth, GNMI_CapabilityRequest_ExtensionSizeof);
  Each(ctx.get(), GNMI_CapabilityRequest_GetExtension, truth.extension(), Same);
  gnmi::CapabilityResponse want;
  for (const auto& extension : truth.extension()) {  // extensions are copied whole
    static_cast<gnmi_ext::Extension*>(GNMI_CapabilityResponse_AppendExtension(ctx.get()))
        ->CopyFrom(extension);
  }
  *want.mutable_extension() = truth.extension();
  CheckDecodes(Bytes(GNMI_CapabilityResponse_Serialize, ctx.get()), &want);
}

// One notification: the prefix, and an update per requested path.
void get_request(const uint8_t* data, size_t size) {
  gnmi::GetRequest truth;
  auto ctx = Parsed<GNMI_Get_Init, GNMI_Get_DeInit>(GNMI_GetRequest_Parse, &truth, data, size);
  if (!ctx) return;
  void* c = ctx.get();
  Fields(c, truth, GNMI_GetRequest_HasPrefix, GNMI_GetRequest_PathSizeof, GNMI_GetRequest_GetType,
         GNMI_GetRequest_GetEncoding, GNMI_GetRequest_UseModelsSizeof,
         GNMI_GetRequest_ExtensionSizeof);
  Sub(c, GNMI_GetRequest_GetPrefix, truth.has_prefix(), truth.prefix(), ReadPath);
  Each(c, GNMI_GetRequest_GetPath, truth.path(), ReadPath);
  Each(c, GNMI_GetRequest_GetUseModels, truth.use_models(), [](void* model, auto& want) {
    Fields(model, want, GNMI_ModelData_GetName, GNMI_ModelData_GetOrganization,
           GNMI_ModelData_GetVersion);
  });
  Each(c, GNMI_GetRequest_GetExtension, truth.extension(), Same);
  gnmi::GetResponse want;
  *want.add_notification() = Notify(GNMI_GetResponse_AppendNotification(c),
                                    truth.has_prefix() ? &truth.prefix() : nullptr, truth.path());
  CheckDecodes(Bytes(GNMI_GetResponse_Serialize, c), &want);
}

// An update result on a copy of each delete's, replace's and update's path,
// in that order; the prefix and the extensions echoed.
void set_request(const uint8_t* data, size_t size) {
  gnmi::SetRequest truth;
  auto ctx = Parsed<GNMI_Set_Init, GNMI_Set_DeInit>(GNMI_SetRequest_Parse, &truth, data, size);
  if (!ctx) return;
  void* c = ctx.get();
  Fields(c, truth, GNMI_SetRequest_HasPrefix, GNMI_SetRequest_DeleteSizeof,
         GNMI_SetRequest_ReplaceSizeof, GNMI_SetRequest_UpdateSizeof,
         GNMI_SetRequest_ExtensionSizeof);
  Sub(c, GNMI_SetRequest_GetPrefix, truth.has_prefix(), truth.prefix(), ReadPath);
  Paths paths = truth.delete_();
  // An update's path and value read as their defaults when absent.
  const auto readUpdate = [&paths](void* update, const gnmi::Update& want) {
    Same(update, want);
    Fields(update, want, GNMI_Update_HasPath, nullptr, GNMI_Update_HasVal,
           GNMI_Update_GetDuplicates);
    ReadPath(GNMI_Update_GetPath(update), want.path());
    GOOGLE_CHECK(Is(GNMI_TypedValue_GetJsonVal(GNMI_Update_GetVal(update)), want.val().json_val()));
    *paths.Add() = want.path();
  };
  Each(c, GNMI_SetRequest_GetDelete, truth.delete_(), ReadPath);
  Each(c, GNMI_SetRequest_GetReplace, truth.replace(), readUpdate);
  Each(c, GNMI_SetRequest_GetUpdate, truth.update(), readUpdate);
  Each(c, GNMI_SetRequest_GetExtension, truth.extension(), Same);
  gnmi::SetResponse want;
  if (truth.has_prefix()) {
    *want.mutable_prefix() = WritePath(truth.prefix(), GNMI_SetResponse_AddPrefix(c));
  }
  for (const gnmi::Path& path : paths) {
    void* result = GNMI_SetResponse_AppendUpdateResult(c);
    *want.add_response()->mutable_path() = WritePath(path, GNMI_UpdateResult_AddPath(result));
  }
  for (const auto& extension : truth.extension()) {
    static_cast<gnmi_ext::Extension*>(GNMI_SetResponse_AppendExtension(c))->CopyFrom(extension);
  }
  *want.mutable_extension() = truth.extension();
  CheckDecodes(Bytes(GNMI_SetResponse_Serialize, c), &want);
}

// The list's readers answer its defaults unless the request is a subscribe;
// those of a subscription take its index, null at the end. The update
// response carries the prefix and an update per subscription, read back; the
// sync response, serialized into the same buffer after it, true.
void subscribe_request(const uint8_t* data, size_t size) {
  gnmi::SubscribeRequest truth;
  auto ctx = Parsed<GNMI_Subscribe_Init, GNMI_Subscribe_DeInit>(GNMI_SubscribeRequest_Parse, &truth,
                                                                data, size);
  if (!ctx) return;
  void* c = ctx.get();
  const gnmi::SubscriptionList& list = truth.subscribe();
  Fields(c, truth, GNMI_SubscribeRequest_HasSubscribe, GNMI_SubscribeRequest_HasPoll,
         GNMI_SubscribeRequest_HasAliases, GNMI_SubscribeRequest_ExtensionSizeof);
  Fields(c, list, GNMI_SubscribeRequest_HasPrefix, GNMI_SubscribeRequest_SubscriptionSize,
         GNMI_SubscribeRequest_UseAliases, GNMI_SubscribeRequest_HasQosMarking,
         GNMI_SubscribeRequest_GetSubscriptionMode, GNMI_SubscribeRequest_GetAggregation,
         GNMI_SubscribeRequest_UseModelsSizeof, GNMI_SubscribeRequest_GetEncoding,
         GNMI_SubscribeRequest_GetUpdatesOnly);
  Fields(c, list.qos(), GNMI_SubscribeRequest_GetQosMarking);
  Sub(c, GNMI_SubscribeRequest_GetPrefix, list.has_prefix(), list.prefix(), ReadPath);
  Paths paths;
  for (int i = 0; i < list.subscription_size(); ++i) {
    const gnmi::Subscription& subscription = list.subscription(i);
    Same(GNMI_SubscribeRequest_GetSubscribe(c, i), subscription);
    ReadPath(GNMI_SubscribeRequest_GetPath(c, i), subscription.path());
    GOOGLE_CHECK(GNMI_SubscribeRequest_GetSampleInterval(c, i) == subscription.sample_interval() &&
                 GNMI_SubscribeRequest_GetHeartbeatInterval(c, i) ==
                     subscription.heartbeat_interval() &&
                 GNMI_SubscribeRequest_GetSuppressRedundant(c, i) ==
                     (subscription.suppress_redundant() ? 1 : 0) &&
                 GNMI_SubscribeRequest_GetSampleMode(c, i) == subscription.mode());
    *paths.Add() = subscription.path();
  }
  GOOGLE_CHECK(GNMI_SubscribeRequest_GetSubscribe(c, paths.size()) == nullptr &&
               GNMI_SubscribeRequest_GetPath(c, paths.size()) == nullptr);
  gnmi::SubscribeResponse want;
  *want.mutable_update() = Notify(GNMI_SubscribeResponse_GetNotification(c),
                                  list.has_prefix() ? &list.prefix() : nullptr, paths);
  for (int i = 0; i < paths.size(); ++i) {
    Same(GNMI_SubscribeRequest_GetUpdate(c, i), want.update().update(i));
  }
  CheckDecodes(Bytes(GNMI_SubscribeResponse_Serialize, c), &want);
  GNMI_SubscribeRequest_SyncResponse(c, 1);
  want.set_sync_response(true);
  CheckDecodes(Bytes(GNMI_SubscribeSyncResponse_Serialize, c), &want);
}

// The envelope and its payload records through every getter, then framed:
// the length word (host order) counts the rest, which decodes to the input.
void south_msg(const uint8_t* data, size_t size) {
  quorix_grpc_ipc::SouthMsg truth;
  auto msg =
      Parsed<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>(GRPCI_SouthMsgParse, &truth, data, size);
  if (!msg) return;
  void* m = msg.get();
  Fields(m, truth, GRPCI_SouthMsgGetConnectId, GRPCI_SouthMsgGetRpcId, GRPCI_SouthMsgGetTransNum,
         GRPCI_SouthMsgGetReqType, GRPCI_SouthMsgGetOpType, GRPCI_SouthMsgGetMsgType,
         GRPCI_SouthMsgGetVrId, GRPCI_SouthMsgGetResult, GRPCI_SouthMsgGetResultDesc,
         GRPCI_SouthMsgHasLogin, GRPCI_SouthMsgHasClientRpc, GRPCI_SouthMsgHasServerRpc,
         GRPCI_SouthMsgHasRpcData);
  Record(m, GRPCI_SouthMsgGetLogin, truth.has_login(), truth.login(), GRPCI_LoginAuthGetUserName,
         GRPCI_LoginAuthGetPassword, GRPCI_LoginAuthGetHandle, GRPCI_LoginAuthGetToken);
  Record(m, GRPCI_SouthMsgGetClientRpc, truth.has_client_rpc(), truth.client_rpc(),
         GRPCI_ClientRpcGetPeerAddr, GRPCI_ClientRpcGetPeerPort, GRPCI_ClientRpcGetMyAddr,
         GRPCI_ClientRpcGetMyPort, GRPCI_ClientRpcGetVpnIndex, GRPCI_ClientRpcGetVpnName,
         GRPCI_ClientRpcGetDscp, GRPCI_ClientRpcGetNoTls, GRPCI_ClientRpcGetRpcName, nullptr,
         nullptr, GRPCI_ClientRpcGetCompression);
  Record(m, GRPCI_SouthMsgGetServerRpc, truth.has_server_rpc(), truth.server_rpc(),
         GRPCI_ServerRpcGetPeerAddr, GRPCI_ServerRpcGetPeerPort, GRPCI_ServerRpcGetMyAddr,
         GRPCI_ServerRpcGetMyPort, GRPCI_ServerRpcGetVpnIndex, GRPCI_ServerRpcGetVpnName,
         GRPCI_ServerRpcGetRpcName, GRPCI_ServerRpcGetRpcParament, GRPCI_ServerRpcGetDeadLine,
         GRPCI_ServerRpcGetCompression, GRPCI_ServerRpcGetDscp);
  Record(m, GRPCI_SouthMsgGetRpcData, truth.has_rpc_data(), truth.rpc_data(), GRPCI_RpcDataGetData,
         GRPCI_RpcDataGetIsOver);
  const std::string frame = Bytes(GRPCI_SouthMsgSerialize, m);
  uint32_t word = 0;
  std::memcpy(&word, frame.data(), std::min(sizeof word, frame.size()));
  GOOGLE_CHECK_EQ(word + sizeof word, frame.size());
  CheckDecodes(frame.substr(sizeof word), &truth);
}

// The Suppress member not chosen reads 0. The reply carries the request id
// and the sensor paths, one per line.
void subs_args(const uint8_t* data, size_t size) {
  quorix_dialin::SubsArgs truth;
  auto args =
      Parsed<GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit>(GRPCI_SubsArgsParse, &truth, data, size);
  if (!args) return;
  Fields(args.get(), truth, GRPCI_SubsArgsGetRequestId, GRPCI_SubsArgsGetEncoding,
         GRPCI_SubsArgsPathSizeof, GRPCI_SubsArgsGetSampleInterval, GRPCI_SubsArgsGetHeartbeat,
         GRPCI_SubsArgsGetSuppressRedundant, GRPCI_SubsArgsGetDelayTime);
  GOOGLE_CHECK_EQ(GRPCI_SubsArgsGetSuppressCase(args.get()), truth.Suppress_case());
  quorix_dialin::SubsReply want;
  std::string* message = want.mutable_message();
  Each(args.get(), GRPCI_SubsArgsGetPath, truth.path(), [message](void* path, auto& sensor) {
    Fields(path, sensor, GRPCI_PathGetPath, GRPCI_PathGetDepth);
    *message += sensor.path() + "\n";
  });
  want.set_request_id(truth.request_id());
  auto reply = testsupport::Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>();
  GRPCI_SubsReplySetRequestId(reply.get(), want.request_id());
  GRPCI_SubsReplySetMessage(reply.get(), want.message().data(), Len(want.message()));
  CheckDecodes(Bytes(GRPCI_SubsReplySerialize, reply.get()), &want);
}

// The reply carries the request id and the subscription id as its message.
void cancel_args(const uint8_t* data, size_t size) {
  quorix_dialin::CancelArgs truth;
  auto args = Parsed<GRPCI_CancelArgsInit, GRPCI_CancelArgsDeInit>(GRPCI_CancelArgsParse, &truth,
                                                                   data, size);
  if (!args) return;
  Fields(args.get(), truth, GRPCI_CancelArgsGetRequestId, GRPCI_CancelArgsGetSubscriptionId);
  quorix_dialin::CancelReply want;
  want.set_request_id(truth.request_id());
  want.set_message(std::to_string(truth.subscription_id()));
  auto reply = testsupport::Make<GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit>();
  GRPCI_CancelReplySetRequestId(reply.get(), want.request_id());
  GRPCI_CancelReplySetMessage(reply.get(), want.message().data(), Len(want.message()));
  CheckDecodes(Bytes(GRPCI_CancelReplySerialize, reply.get()), &want);
}

// Text from outside into GNMI_Path_FromString: refused with the path left
// as it was, or read into a path whose text reads back to it. The same bytes
// also make a path of any names (none empty) that must come back from its
// own text.
void path_text(const uint8_t* data, size_t size) {
  gnmi::Path path;
  GNMI_Path_FromString(&path, "before:/kept[k=v]", 17, nullptr);
  path.set_target("r1");
  const gnmi::Path before = path;
  uint32_t at = 0;
  const auto* text = reinterpret_cast<const char*>(data);
  if (GNMI_Path_FromString(&path, text, static_cast<uint32_t>(size), &at) == 1) {
    GOOGLE_CHECK_EQ(path.target(), "r1");
    CheckReadsBack(&path);
  } else {
    GOOGLE_CHECK_LE(at, size);
    CheckEqual(path, before);
  }
  Input in{data, size};
  gnmi::Path made = MadePath(&in);
  CheckReadsBack(&made);
}

}  // namespace harness
