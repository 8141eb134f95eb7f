// The south IPC envelope: its frame, parsing, fields and payload records.
#include <gtest/gtest.h>

#include <string>

#include "common/handles.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/owned.h"
#include "support/oxa_blocks.h"

namespace {

using quorix_grpc_ipc::SouthMsg;
using testsupport::Make;
using testsupport::OxaTest;
using testsupport::SerializeWith;

auto NewSouthMsg() { return Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>(); }
SouthMsg& Object(void* msg) { return *mgmtmsg::As<SouthMsg>(msg); }

// The message bytes of a frame, parsed with the generated class.
SouthMsg Decode(const testsupport::Serialized& frame) {
  SouthMsg decoded;
  EXPECT_TRUE(decoded.ParseFromString(frame.Bytes(4, frame.length - 4)));
  return decoded;
}

using SouthMsgSerialize = OxaTest;

TEST_F(SouthMsgSerialize, FrameIsTheHostOrderLengthWordThenTheMessage) {
  auto msg = NewSouthMsg();
  GRPCI_SouthMsgSetConnectId(msg.get(), 0x11223344u);
  GRPCI_SouthMsgSetMsgType(msg.get(), quorix_grpc_ipc::MSGTYPE_CLIENT_RPC);
  GRPCI_SouthMsgSetResultDesc(msg.get(), "ok", 2);
  GRPCI_ClientRpcSetPeerPort(GRPCI_SouthMsgSetClientRpc(msg.get()), 57400);
  const std::string encoded = Object(msg.get()).SerializeAsString();

  const auto frame = SerializeWith(GRPCI_SouthMsgSerialize, 0xC0FFEEu, msg.get());
  ASSERT_EQ(frame.result, 1);
  ASSERT_EQ(frame.length, encoded.size() + 4);
  EXPECT_EQ(frame.LengthWord(), encoded.size());
  EXPECT_EQ(frame.Bytes(4, encoded.size()), encoded);

  EXPECT_EQ(OxaHost_Stats().mallocCalls, 1u);
  EXPECT_EQ(OxaHost_Stats().freeCalls, 0u);
  testsupport::ExpectLastMalloc(0xC0FFEEu, frame.length, "grpci_ex", 690);

  // The message is left as it was, and the receiver's parse of the bytes
  // after the prefix gives it back.
  EXPECT_EQ(Object(msg.get()).SerializeAsString(), encoded);
  auto received = NewSouthMsg();
  ASSERT_EQ(GRPCI_SouthMsgParse(received.get(), frame.Bytes(4, encoded.size()).data(),
                                static_cast<int32_t>(encoded.size())),
            1);
  EXPECT_EQ(GRPCI_SouthMsgGetConnectId(received.get()), 0x11223344u);
  EXPECT_EQ(GRPCI_ClientRpcGetPeerPort(GRPCI_SouthMsgGetClientRpc(received.get())), 57400u);
}

TEST_F(SouthMsgSerialize, EmptyMessageIsAFourByteFrame) {
  auto msg = NewSouthMsg();
  const auto frame = SerializeWith(GRPCI_SouthMsgSerialize, 1, msg.get());
  ASSERT_EQ(frame.result, 1);
  EXPECT_EQ(frame.length, 4u);
  EXPECT_EQ(frame.LengthWord(), 0u);
  EXPECT_EQ(OxaHost_Stats().lastMalloc.size, 4u);
}

TEST_F(SouthMsgSerialize, FramesAtMost52428800MessageBytes) {
  auto msg = NewSouthMsg();
  // rpc_data's tag and 4-byte length, data's tag and 4-byte length: 10 bytes.
  std::string* data = Object(msg.get()).mutable_rpc_data()->mutable_data();
  const auto frame = testsupport::SerializeAtTheLimit(GRPCI_SouthMsgSerialize, msg.get(), data, 10);
  ASSERT_EQ(frame.result, 1);
  EXPECT_EQ(frame.length, 52428804u);
  EXPECT_EQ(OxaHost_Stats().lastMalloc.size, 52428804u);
  EXPECT_EQ(frame.LengthWord(), 52428800u);
  EXPECT_EQ(frame.Bytes(4, 1), "\x6a");
  EXPECT_EQ(frame.Bytes(52428803, 1), "p");
}

TEST_F(SouthMsgSerialize, AllocationFailureReturnsZeroAndLeavesNothing) {
  auto msg = NewSouthMsg();
  GRPCI_SouthMsgSetRpcId(msg.get(), 9);
  OxaHost_FailNextMallocs(1);
  const auto failed = SerializeWith(GRPCI_SouthMsgSerialize, 1, msg.get());
  EXPECT_EQ(failed.result, 0);
  EXPECT_TRUE(failed.outUntouched);
  EXPECT_EQ(OxaHost_Stats().mallocCalls, 1u);
  EXPECT_EQ(OxaHost_Stats().freeCalls, 0u);

  const auto frame = SerializeWith(GRPCI_SouthMsgSerialize, 1, msg.get());
  ASSERT_EQ(frame.result, 1);
  EXPECT_EQ(frame.Bytes(4, frame.length - 4), "\x10\x09");
}

TEST(SouthMsgParse, ReplacesTheWholeMessageAndRefusesMalformedBytes) {
  auto msg = NewSouthMsg();
  const char first[] = {0x08, 0x05, 0x5a, 0x02, 0x10, 0x01};  // connect_id 5, client_rpc
  ASSERT_EQ(GRPCI_SouthMsgParse(msg.get(), first, sizeof first), 1);
  EXPECT_EQ(GRPCI_SouthMsgGetConnectId(msg.get()), 5u);
  EXPECT_EQ(GRPCI_SouthMsgHasClientRpc(msg.get()), 1);

  const char second[] = {0x20, 0x07};  // req_type 7, outside ReqType
  ASSERT_EQ(GRPCI_SouthMsgParse(msg.get(), second, sizeof second), 1);
  EXPECT_EQ(GRPCI_SouthMsgGetReqType(msg.get()), 7);
  EXPECT_EQ(GRPCI_SouthMsgGetConnectId(msg.get()), 0u);
  EXPECT_EQ(GRPCI_SouthMsgHasClientRpc(msg.get()), 0);

  const char truncated[] = {0x4a, 0x05, 'o'};
  EXPECT_EQ(GRPCI_SouthMsgParse(msg.get(), truncated, sizeof truncated), 0);
  const char badUtf8[] = {0x4a, 0x01, '\xff'};  // result_description is text
  EXPECT_EQ(GRPCI_SouthMsgParse(msg.get(), badUtf8, sizeof badUtf8), 0);
}

TEST_F(SouthMsgSerialize, ScalarsAndEnumerationsTravelUnchangedUnderTheirFieldNumbers) {
  struct Scalar {
    int number;
    void (*set)(void*, uint32_t);
    uint32_t (*get)(void*);
  };
  const Scalar scalars[] = {{1, GRPCI_SouthMsgSetConnectId, GRPCI_SouthMsgGetConnectId},
                            {2, GRPCI_SouthMsgSetRpcId, GRPCI_SouthMsgGetRpcId},
                            {3, GRPCI_SouthMsgSetTransNum, GRPCI_SouthMsgGetTransNum},
                            {7, GRPCI_SouthMsgSetVrId, GRPCI_SouthMsgGetVrId},
                            {8, GRPCI_SouthMsgSetResult, GRPCI_SouthMsgGetResult}};
  struct Enumeration {
    int number;
    void (*set)(void*, int32_t);
    int32_t (*get)(void*);
    int32_t value;  // outside the enumeration
  };
  const Enumeration enums[] = {{4, GRPCI_SouthMsgSetReqType, GRPCI_SouthMsgGetReqType, 7},
                               {5, GRPCI_SouthMsgSetOpType, GRPCI_SouthMsgGetOpType, 0x7fffffff},
                               {6, GRPCI_SouthMsgSetMsgType, GRPCI_SouthMsgGetMsgType, -2}};
  auto msg = NewSouthMsg();
  for (const Scalar& field : scalars) {
    field.set(msg.get(), 0xFFFFFF00u + field.number);
  }
  for (const Enumeration& field : enums) {
    field.set(msg.get(), field.value);
  }
  const SouthMsg decoded = Decode(SerializeWith(GRPCI_SouthMsgSerialize, 1, msg.get()));
  const auto* descriptor = decoded.GetDescriptor();
  const auto* reflection = decoded.GetReflection();
  for (const Scalar& field : scalars) {
    EXPECT_EQ(field.get(msg.get()), 0xFFFFFF00u + field.number) << field.number;
    EXPECT_EQ(reflection->GetUInt32(decoded, descriptor->FindFieldByNumber(field.number)),
              0xFFFFFF00u + field.number);
  }
  for (const Enumeration& field : enums) {
    EXPECT_EQ(field.get(msg.get()), field.value) << field.number;
    EXPECT_EQ(reflection->GetEnumValue(decoded, descriptor->FindFieldByNumber(field.number)),
              field.value);
  }
}

TEST(SouthMsgResultDesc, CopiesExactlyTheBytesGiven) {
  auto msg = NewSouthMsg();
  ASSERT_NE(GRPCI_SouthMsgGetResultDesc(msg.get()), nullptr);
  EXPECT_STREQ(GRPCI_SouthMsgGetResultDesc(msg.get()), "");

  GRPCI_SouthMsgSetResultDesc(msg.get(), "abcdef", 3);
  EXPECT_STREQ(GRPCI_SouthMsgGetResultDesc(msg.get()), "abc");
  GRPCI_SouthMsgSetResultDesc(msg.get(), "a\0b", 3);
  EXPECT_EQ(Object(msg.get()).result_description(), std::string("a\0b", 3));
  GRPCI_SouthMsgSetResultDesc(msg.get(), nullptr, 0);
  EXPECT_STREQ(GRPCI_SouthMsgGetResultDesc(msg.get()), "");
  EXPECT_THROW(GRPCI_SouthMsgSetResultDesc(msg.get(), nullptr, 1), std::logic_error);
}

TEST_F(SouthMsgSerialize, PayloadRecordsAreIndependentAndMadeOnlyBySet) {
  struct Payload {
    int number;
    int32_t (*has)(void*);
    void* (*get)(void*);
    void* (*set)(void*);
  };
  const Payload payloads[] = {
      {10, GRPCI_SouthMsgHasLogin, GRPCI_SouthMsgGetLogin, GRPCI_SouthMsgSetLogin},
      {11, GRPCI_SouthMsgHasClientRpc, GRPCI_SouthMsgGetClientRpc, GRPCI_SouthMsgSetClientRpc},
      {12, GRPCI_SouthMsgHasServerRpc, GRPCI_SouthMsgGetServerRpc, GRPCI_SouthMsgSetServerRpc},
      {13, GRPCI_SouthMsgHasRpcData, GRPCI_SouthMsgGetRpcData, GRPCI_SouthMsgSetRpcData}};
  auto msg = NewSouthMsg();
  const auto* descriptor = SouthMsg::descriptor();
  for (const Payload& payload : payloads) {
    EXPECT_EQ(payload.has(msg.get()), 0) << payload.number;
    EXPECT_EQ(payload.get(msg.get()), nullptr) << payload.number;
    EXPECT_EQ(payload.has(msg.get()), 0) << "Get created the record " << payload.number;

    void* record = payload.set(msg.get());
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(payload.get(msg.get()), record);
    EXPECT_EQ(payload.has(msg.get()), 1);
    EXPECT_EQ(payload.set(msg.get()), record);
    EXPECT_EQ(descriptor->FindFieldByNumber(payload.number)->message_type(),
              static_cast<google::protobuf::Message*>(record)->GetDescriptor());
  }
  // Set on a present record keeps what it holds.
  GRPCI_RpcDataSetIsOver(GRPCI_SouthMsgGetRpcData(msg.get()), 1);
  EXPECT_EQ(GRPCI_RpcDataGetIsOver(GRPCI_SouthMsgSetRpcData(msg.get())), 1);

  // All four go on the wire, and come back from it, together.
  const auto frame = SerializeWith(GRPCI_SouthMsgSerialize, 1, msg.get());
  auto received = NewSouthMsg();
  ASSERT_EQ(GRPCI_SouthMsgParse(received.get(), frame.Bytes(4, frame.length - 4).data(),
                                static_cast<int32_t>(frame.length - 4)),
            1);
  for (const Payload& payload : payloads) {
    EXPECT_EQ(payload.has(received.get()), 1) << payload.number;
  }
  EXPECT_EQ(GRPCI_RpcDataGetIsOver(GRPCI_SouthMsgGetRpcData(received.get())), 1);
}

TEST(SouthMsgLifecycle, DeInitIgnoresNull) { GRPCI_SouthMsgDeInit(nullptr); }

}  // namespace
