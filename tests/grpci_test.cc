// The GRPCI_ records: the south IPC envelope and the dial-in requests and
// replies as parsed, read, written and serialized into platform blocks; the
// accessors both families share; and the two serialization helpers, driven by
// a message whose size and output the test chooses (this program builds its
// own copy of the platform block helper).
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <stdexcept>
#include <string>
#include <tuple>

#include "common/handles.h"
#include "common/platform_block.h"
#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/fatal_capture.h"
#include "support/owned.h"
#include "support/oxa_blocks.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using mgmtmsg::As;
using namespace testsupport;
using namespace std::string_literals;
using namespace quorix_dialin;
using namespace quorix_grpc_ipc;

// The IPC frame's length word, in host byte order.
std::string Word(uint32_t length) { return std::string(reinterpret_cast<char*>(&length), 4); }

using PlatformBlocks = testsupport::OxaTest;

TEST_F(PlatformBlocks, HoldTheEncodingFramedOrWithASpareByteFromTheEntryPointsSite) {
  // Message, its contents, serializer and owner; the block's bytes and
  // OXA_Malloc_F's size, module and line.
  const std::tuple<void* (*)(), void (*)(void*), void (*)(void*), testsupport::Serializer, uint32_t,
                   std::string, uint32_t, const char*, uint32_t>
      cases[] = {
          {GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit,
           [](void* msg) {  // enumerations outside their range are sent as set
             GRPCI_SouthMsgSetReqType(msg, 7);
             GRPCI_SouthMsgSetOpType(msg, 0x7fffffff);
             GRPCI_SouthMsgSetMsgType(msg, -2);
           },
           GRPCI_SouthMsgSerialize, 0xC0FFEEu,
           Word(19) +
               "\x20\x07\x28\xff\xff\xff\xff\x07\x30\xfe\xff\xff\xff\xff\xff\xff\xff\xff\x01",
           23, "grpci_ex", 690},
          {GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit,
           [](void* reply) { GRPCI_SubsReplySetSubscriptionId(reply, 5); },
           GRPCI_SubsReplySerialize, 0xAB, "\x08\x05", 3, "grpci_grpcdialin_ex", 228},
          {GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit, [](void*) {}, GRPCI_SubsReplySerialize, 1,
           "", 1, "grpci_grpcdialin_ex", 228},
          {GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit,
           [](void* reply) { GRPCI_CancelReplySetRequestId(reply, 9); }, GRPCI_CancelReplySerialize,
           0x5150, "\x08\x09", 3, "grpci_grpcdialin_ex", 306},
      };
  for (const auto& [init, deinit, fill, serialize, ownerId, bytes, size, module, line] : cases) {
    SCOPED_TRACE(size);
    const std::unique_ptr<void, void (*)(void*)> msg(init(), deinit);
    fill(msg.get());
    OxaHost_Reset();
    const auto block = SerializeWith(serialize, ownerId, msg.get());
    ASSERT_EQ(std::make_tuple(block.result, block.block != nullptr), std::make_tuple(1, true));
    EXPECT_EQ(std::make_tuple(block.Bytes(), OxaHost_Stats().mallocCalls),
              std::make_tuple(bytes, 1u));
    const OxaHostCall call = OxaHost_Stats().lastMalloc;
    EXPECT_EQ(
        std::make_tuple(call.ownerId, call.partition, call.size, std::string(call.file), call.line),
        std::make_tuple(ownerId, 7, size, module, line));
    EXPECT_EQ(SerializeWith(serialize, 1, msg.get()).Bytes(), bytes);  // the message kept
  }
}

TEST_F(PlatformBlocks, HoldAtMost52428800MessageBytes) {
  auto south = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  auto reply = Make<GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>();
  // Serializer, message, payload and the encoding's other bytes; the block's
  // first bytes, its length and OXA_Malloc_F's size.
  const std::tuple<testsupport::Serializer, void*, std::string*, size_t, std::string, uint32_t,
                   uint32_t>
      cases[] = {
          {GRPCI_SouthMsgSerialize, south.get(),
           As<SouthMsg>(south.get())->mutable_rpc_data()->mutable_data(), 10,
           Word(52428800) + "\x6a", 52428804, 52428804},
          {GRPCI_SubsReplySerialize, reply.get(), As<SubsReply>(reply.get())->mutable_message(), 5,
           "\x22", 52428800, 52428801},
      };
  for (const auto& [serialize, msg, payload, overhead, head, length, size] : cases) {
    payload->assign(52428800 - overhead + 1, 'p');
    OxaHost_Reset();
    const auto refused = SerializeWith(serialize, 1, msg);
    EXPECT_EQ(std::make_tuple(refused.result, refused.outUntouched, OxaHost_Stats().mallocCalls),
              std::make_tuple(0, true, 0u));
    payload->pop_back();
    const auto block = SerializeWith(serialize, 1, msg);
    ASSERT_EQ(block.result, 1);
    EXPECT_EQ(std::make_tuple(block.length, OxaHost_Stats().lastMalloc.size),
              std::make_tuple(length, size));
    const std::string bytes = block.Bytes();
    EXPECT_EQ(std::make_tuple(bytes.substr(0, head.size()), bytes.back()),
              std::make_tuple(head, 'p'));
  }
}

TEST(SouthMsg, PayloadRecordsAreIndependentAndMadeOnlyBySet) {
  // clang-format off
  const std::tuple<int32_t (*)(void*), void* (*)(void*), void* (*)(void*)> payloads[] = {
      {GRPCI_SouthMsgHasLogin, GRPCI_SouthMsgGetLogin, GRPCI_SouthMsgSetLogin},
      {GRPCI_SouthMsgHasClientRpc, GRPCI_SouthMsgGetClientRpc, GRPCI_SouthMsgSetClientRpc},
      {GRPCI_SouthMsgHasServerRpc, GRPCI_SouthMsgGetServerRpc, GRPCI_SouthMsgSetServerRpc},
      {GRPCI_SouthMsgHasRpcData, GRPCI_SouthMsgGetRpcData, GRPCI_SouthMsgSetRpcData}};
  // clang-format on
  auto msg = Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  for (const auto& [has, get, set] : payloads) {
    EXPECT_EQ(std::make_tuple(get(msg.get()), has(msg.get())), std::make_tuple(nullptr, 0));
    void* record = set(msg.get());
    EXPECT_EQ(std::make_tuple(set(msg.get()), get(msg.get()), has(msg.get())),
              std::make_tuple(record, record, 1));
  }
  // None replaced the others.
  EXPECT_EQ(As<SouthMsg>(msg.get())->SerializeAsString(), "\x52\x00\x5a\x00\x62\x00\x6a\x00"s);
}

// Accessors of one field: its record type and name, its setter, and its
// reader or null. G(Type, Name, field) names GNMI_<Type>_Set<Name> and
// GNMI_<Type>_Get<Name>, Q(...) GRPCI_<Type>Set<Name> and GRPCI_<Type>Get<Name>;
// G0 and Q0 have no reader.
template <class Set, class Get>
using Field = std::tuple<const Message&, const char*, Set, Get>;
// clang-format off
#define G(T, N, f) {gnmi::T::default_instance(), #f, GNMI_##T##_Set##N, GNMI_##T##_Get##N}
#define G0(T, N, f) {gnmi::T::default_instance(), #f, GNMI_##T##_Set##N, nullptr}
#define Q(T, N, f) {T::default_instance(), #f, GRPCI_##T##Set##N, GRPCI_##T##Get##N}
#define Q0(T, N, f) {T::default_instance(), #f, GRPCI_##T##Set##N, nullptr}
// clang-format on

// Runs `check` on each field, in a fresh record.
template <class Set, class Get, size_t kCount, class Check>
void ForEachField(const Field<Set, Get> (&fields)[kCount], Check check) {
  for (const auto& [type, name, set, get] : fields) {
    const std::unique_ptr<Message> message(type.New());
    const auto* field = message->GetDescriptor()->FindFieldByName(name);
    SCOPED_TRACE(field->full_name());
    check(message.get(), field, set, get);
  }
}

TEST(Accessors, TextSettersCopyExactlyTheBytesGivenAndRefuseNullData) {
  // clang-format off
  const Field<void (*)(void*, const char*, uint32_t), const char* (*)(void*)> fields[] = {
      G(Path, Origin, origin), G(Path, Target, target), G(PathElem, Name, name),
      G(Notification, Alias, alias), G(ModelData, Name, name),
      G(ModelData, Organization, organization), G(ModelData, Version, version),
      G0(TypedValue, StringVal, string_val), G(TypedValue, JsonVal, json_val),
      G0(TypedValue, JsonIetfVal, json_ietf_val), G0(TypedValue, Jsonietf_Val, json_ietf_val),
      G0(TypedValue, ProtoBytes, proto_bytes), Q(SouthMsg, ResultDesc, result_description),
      Q(ClientRpc, PeerAddr, peer_address), Q(ClientRpc, MyAddr, my_address),
      Q(ClientRpc, VpnName, vpn_name), Q(ClientRpc, RpcName, rpc_name),
      Q(ServerRpc, PeerAddr, peer_address), Q(ServerRpc, MyAddr, my_address),
      Q(ServerRpc, VpnName, vpn_name), Q(ServerRpc, RpcName, rpc_name),
      Q0(ServerRpc, RpcParament, rpc_parament), Q(RpcData, Data, data),
      Q0(SubsReply, ResponseCode, response_code), Q0(SubsReply, Message, message),
      Q0(CancelReply, ResponseCode, response_code), Q0(CancelReply, Message, message)};
  // clang-format on
  ForEachField(fields, [](Message* message, const FieldDescriptor* field, auto set, auto get) {
    const auto text = [&] { return message->GetReflection()->GetString(*message, field); };
    set(message, "a much longer first value", 25);
    set(message, "ab\0cd", 4);
    EXPECT_EQ(text(), "ab\0c"s);
    EXPECT_TRUE(get == nullptr || std::memcmp(get(message), "ab\0c", 5) == 0);  // terminated
    EXPECT_THROW(set(message, nullptr, 1), std::logic_error);
    EXPECT_EQ(text(), "ab\0c"s);
    set(message, nullptr, 0);
    EXPECT_EQ(text(), "");
    // A member of a oneof is chosen, though empty.
    EXPECT_TRUE(!field->containing_oneof() || message->GetReflection()->HasField(*message, field));
  });
}

TEST(Accessors, FlagsTakeAnyNonZeroValueAsTrueAndReadAsOne) {
  // clang-format off
  const Field<void (*)(void*, int32_t), int32_t (*)(void*)> fields[] = {
      G(Notification, Atomic, atomic), G0(TypedValue, BoolVal, bool_val),
      Q(ClientRpc, NoTls, no_tls), Q(RpcData, IsOver, is_over)};
  // clang-format on
  ForEachField(fields, [](Message* message, const FieldDescriptor* field, auto set, auto get) {
    for (int32_t value : {2, 256, -1, INT_MIN, 0, 1}) {
      set(message, value);
      EXPECT_EQ(message->GetReflection()->GetBool(*message, field), value != 0) << value;
      EXPECT_EQ(get != nullptr ? get(message) : value != 0, value != 0 ? 1 : 0) << value;
    }
  });
}

TEST(Accessors, NumbersRoundTripThroughTheirOwnField) {
  // clang-format off
  const Field<void (*)(void*, uint32_t), uint32_t (*)(void*)> fields[] = {
      Q(SouthMsg, ConnectId, connect_id), Q(SouthMsg, RpcId, rpc_id),
      Q(SouthMsg, TransNum, trans_num), Q(SouthMsg, VrId, vrid), Q(SouthMsg, Result, result),
      Q(ClientRpc, PeerPort, peer_port), Q(ClientRpc, MyPort, my_port),
      Q(ClientRpc, VpnIndex, vpn_index), Q(ClientRpc, Dscp, dscp),
      Q(ClientRpc, Compression, compression_type), Q(ServerRpc, PeerPort, peer_port),
      Q(ServerRpc, MyPort, my_port), Q(ServerRpc, VpnIndex, vpn_index),
      Q(ServerRpc, DeadLine, deadline), Q(ServerRpc, Compression, compression_type),
      Q(ServerRpc, Dscp, dscp), G(Update, Duplicates, duplicates)};
  // clang-format on
  ForEachField(fields, [](Message* message, const FieldDescriptor* field, auto set, auto get) {
    set(message, 0xFFFFFF00u);
    EXPECT_EQ(std::make_tuple(message->GetReflection()->GetUInt32(*message, field), get(message)),
              std::make_tuple(0xFFFFFF00u, 0xFFFFFF00u));
  });
}

#undef G
#undef G0
#undef Q
#undef Q0

TEST(DialinArgs, ParseReplacesTheArgsAndPathIndexIsFatalJustOutsideTheList) {
  auto args = Make<GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit>();
  ASSERT_EQ(GRPCI_SubsArgsParse(args.get(), "\x2a\x00\x2a\x00\x2a\x00", 6), 1);
  ASSERT_EQ(GRPCI_SubsArgsParse(args.get(), "\x2a\x00\x2a\x00", 4), 1);
  EXPECT_FATAL_CHECK(GRPCI_SubsArgsGetPath(args.get(), -1), "grpci_grpcdialin_ex", 1707,
                     testsupport::kNegativeIndex);
  EXPECT_FATAL_CHECK(GRPCI_SubsArgsGetPath(args.get(), 2), "grpci_grpcdialin_ex", 1708,
                     testsupport::kPastEndIndex);
}

// Computes `size` encoded bytes, then writes `written` bytes of 'x', as a
// message changed between the two steps would; counts the size computations.
class ChosenMessage final : public google::protobuf::MessageLite {
 public:
  ChosenMessage(size_t size, size_t written) : size(size), written(written) {}
  size_t size;
  size_t written;
  mutable int sizeComputations = 0;

  std::string GetTypeName() const override { return "ChosenMessage"; }
  MessageLite* New(google::protobuf::Arena*) const override { return nullptr; }
  void Clear() override {}
  bool IsInitialized() const override { return true; }
  void CheckTypeAndMergeFrom(const MessageLite&) override {}
  size_t ByteSizeLong() const override {
    ++sizeComputations;
    return size;
  }
  int GetCachedSize() const override { return static_cast<int>(written); }
  const char* _InternalParse(const char* ptr, google::protobuf::internal::ParseContext*) override {
    return ptr;
  }
  uint8_t* _InternalSerialize(uint8_t* target,
                              google::protobuf::io::EpsCopyOutputStream*) const override {
    return static_cast<uint8_t*>(std::memset(target, 'x', written)) + written;
  }
};

constexpr mgmtmsg::PlatformBlockSite kFramed{mgmtmsg::BlockLayout::kLengthPrefixed, "framing", 10,
                                             20};
constexpr mgmtmsg::PlatformBlockSite kBare{mgmtmsg::BlockLayout::kSpareTrailingByte, "bare", 30,
                                           40};

// The helper as an entry point calls it, for a ChosenMessage handle.
template <const mgmtmsg::PlatformBlockSite& kSite>
int32_t SerializeFor(uint32_t ownerId, void* message, void** out, uint32_t* outLen) {
  return mgmtmsg::SerializeToPlatformBlock(*static_cast<ChosenMessage*>(message), ownerId, kSite,
                                           out, outLen);
}

TEST_F(PlatformBlocks, SizeIsComputedOnceAndAShortEncodingReleasesTheBlockAtItsSite) {
  for (auto [serialize, site] : {std::make_tuple(SerializeFor<kFramed>, &kFramed),
                                 std::make_tuple(SerializeFor<kBare>, &kBare)}) {
    ChosenMessage shorter(5, 4);
    const auto failed = SerializeWith(serialize, 1, &shorter);
    const OxaHostStats stats = OxaHost_Stats();
    EXPECT_EQ(std::make_tuple(failed.result, failed.outUntouched, shorter.sizeComputations),
              std::make_tuple(0, true, 1));
    EXPECT_EQ(
        std::make_tuple(stats.lastFree.block, std::string(stats.lastFree.file), stats.lastFree.line,
                        stats.lastMalloc.line),
        std::make_tuple(stats.lastMalloc.block, site->module, site->freeLine, site->mallocLine));
  }
}

// A gNMI context around a ChosenMessage, serialized as every context serializes.
class ChosenRpc final : public GnmiRpcBase {
 public:
  int GnmiParseRpcRequest(const void*, int) override { return 0; }
  int GnmiSerializeRpcResponse(void** out, int* outLen) override {
    return SerializeToBuffer(message, BufferAllocation::kNothrow, out, outLen);
  }
  ChosenMessage message{8, 8};
};

TEST(GnmiRpcBuffer, MessageBeyondTwoGigabytesFailsAndKeepsTheBuffer) {
  ChosenRpc rpc;
  void* out = nullptr;
  int outLen = 0;
  ASSERT_EQ(rpc.GnmiSerializeRpcResponse(&out, &outLen), 1);
  void* const previous = out;
  rpc.message.size = size_t{INT_MAX} + 1;
  EXPECT_EQ(rpc.GnmiSerializeRpcResponse(&out, &outLen), 0);
  EXPECT_EQ(std::make_tuple(rpc.GetBufferCapacity_(), out, outLen),
            std::make_tuple(8, previous, 8));
}

}  // namespace
