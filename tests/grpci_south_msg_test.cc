// The south IPC envelope: its frame, parsing, enumerations and payload records.
#include <gtest/gtest.h>

#include <string>

#include "common/handles.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/owned.h"
#include "support/oxa_blocks.h"

namespace {

using quorix_grpc_ipc::SouthMsg;
using testsupport::SerializeWith;

auto NewSouthMsg() { return testsupport::Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>(); }
SouthMsg& Object(void* msg) { return *mgmtmsg::As<SouthMsg>(msg); }

using SouthMsgFrame = testsupport::OxaTest;

TEST_F(SouthMsgFrame, IsTheHostOrderLengthWordThenTheMessageInOneBlock) {
  auto msg = NewSouthMsg();
  GRPCI_SouthMsgSetConnectId(msg.get(), 0x11223344u);
  GRPCI_SouthMsgSetResultDesc(msg.get(), "ok", 2);
  const std::string encoded = Object(msg.get()).SerializeAsString();

  const auto frame = SerializeWith(GRPCI_SouthMsgSerialize, 0xC0FFEEu, msg.get());
  ASSERT_EQ(frame.result, 1);
  ASSERT_EQ(frame.length, encoded.size() + 4);
  EXPECT_EQ(frame.LengthWord(), encoded.size());
  EXPECT_EQ(frame.Bytes(4, encoded.size()), encoded);
  EXPECT_EQ(OxaHost_Stats().mallocCalls, 1u);
  testsupport::ExpectLastMalloc(0xC0FFEEu, frame.length, "grpci_ex", 690);
  EXPECT_EQ(Object(msg.get()).SerializeAsString(), encoded);  // the message is left as it was

  auto empty = NewSouthMsg();
  const auto emptyFrame = SerializeWith(GRPCI_SouthMsgSerialize, 1, empty.get());
  ASSERT_EQ(emptyFrame.result, 1);
  EXPECT_EQ(emptyFrame.length, 4u);
  EXPECT_EQ(emptyFrame.LengthWord(), 0u);
  EXPECT_EQ(OxaHost_Stats().lastMalloc.size, 4u);
}

TEST_F(SouthMsgFrame, HoldsAtMost52428800MessageBytes) {
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

TEST(SouthMsg, ParseKeepsEveryFieldReplacesTheWholeMessageAndRefusesMalformedBytes) {
  auto msg = NewSouthMsg();
  // connect_id 5, client_rpc { client_name "k" client_id 9 }: fields without entry points
  const char first[] = {0x08, 0x05, 0x5a, 0x05, 0x52, 0x01, 'k', 0x58, 0x09};
  ASSERT_EQ(GRPCI_SouthMsgParse(msg.get(), first, sizeof first), 1);
  GRPCI_ClientRpcSetDscp(GRPCI_SouthMsgGetClientRpc(msg.get()), 46);
  EXPECT_EQ(Object(msg.get()).SerializeAsString(), "\x08\x05\x5a\x07\x38\x2e\x52\x01k\x58\x09");
  const char second[] = {0x20, 0x07};  // req_type 7, outside ReqType
  ASSERT_EQ(GRPCI_SouthMsgParse(msg.get(), second, sizeof second), 1);
  EXPECT_EQ(GRPCI_SouthMsgGetReqType(msg.get()), 7);
  EXPECT_EQ(GRPCI_SouthMsgGetConnectId(msg.get()), 0u);
  EXPECT_EQ(GRPCI_SouthMsgHasClientRpc(msg.get()), 0);

  // Enumerations outside their range are stored and sent as they are.
  GRPCI_SouthMsgSetReqType(msg.get(), 5);
  GRPCI_SouthMsgSetOpType(msg.get(), 0x7fffffff);
  GRPCI_SouthMsgSetMsgType(msg.get(), -2);
  EXPECT_EQ(GRPCI_SouthMsgGetReqType(msg.get()), 5);
  EXPECT_EQ(GRPCI_SouthMsgGetOpType(msg.get()), 0x7fffffff);
  EXPECT_EQ(GRPCI_SouthMsgGetMsgType(msg.get()), -2);
  EXPECT_EQ(Object(msg.get()).SerializeAsString(),
            "\x20\x05\x28\xff\xff\xff\xff\x07\x30\xfe\xff\xff\xff\xff\xff\xff\xff\xff\x01");
  const char truncated[] = {0x4a, 0x05, 'o'};
  EXPECT_EQ(GRPCI_SouthMsgParse(msg.get(), truncated, sizeof truncated), 0);
}

TEST(SouthMsg, PayloadRecordsAreIndependentAndMadeOnlyBySet) {
  const struct {
    const char* field;
    int32_t (*has)(void*);
    void* (*get)(void*);
    void* (*set)(void*);
  } payloads[] = {
      {"login", GRPCI_SouthMsgHasLogin, GRPCI_SouthMsgGetLogin, GRPCI_SouthMsgSetLogin},
      {"client_rpc", GRPCI_SouthMsgHasClientRpc, GRPCI_SouthMsgGetClientRpc,
       GRPCI_SouthMsgSetClientRpc},
      {"server_rpc", GRPCI_SouthMsgHasServerRpc, GRPCI_SouthMsgGetServerRpc,
       GRPCI_SouthMsgSetServerRpc},
      {"rpc_data", GRPCI_SouthMsgHasRpcData, GRPCI_SouthMsgGetRpcData, GRPCI_SouthMsgSetRpcData}};
  auto msg = NewSouthMsg();
  for (const auto& payload : payloads) {
    EXPECT_EQ(payload.get(msg.get()), nullptr) << payload.field;
    EXPECT_EQ(payload.has(msg.get()), 0) << payload.field;
    void* record = payload.set(msg.get());
    EXPECT_EQ(payload.set(msg.get()), record);
    EXPECT_EQ(payload.get(msg.get()), record);
    EXPECT_EQ(payload.has(msg.get()), 1);
    const auto* field = SouthMsg::descriptor()->FindFieldByName(payload.field);
    EXPECT_EQ(record, &Object(msg.get()).GetReflection()->GetMessage(Object(msg.get()), field));
  }
  // All four are there at once: none replaced another.
  EXPECT_EQ(Object(msg.get()).SerializeAsString(),
            std::string("\x52\x00\x5a\x00\x62\x00\x6a\x00", 8));
}

TEST(GrpciLifecycle, DeInitIgnoresNull) {
  for (auto deinit : {GRPCI_SouthMsgDeInit, GRPCI_RpcDataDeInit, GRPCI_SubsArgsDeInit,
                      GRPCI_CancelArgsDeInit, GRPCI_SubsReplyDeInit, GRPCI_CancelReplyDeInit}) {
    deinit(nullptr);
  }
}

}  // namespace
