// The payload records of the south IPC envelope: login, client RPC, server
// RPC and RPC data.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "common/handles.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/owned.h"
#include "support/oxa_blocks.h"

namespace {

using google::protobuf::Message;
using quorix_grpc_ipc::SouthMsg;
using testsupport::Make;
using testsupport::OxaTest;
using testsupport::SerializeWith;

auto NewSouthMsg() { return Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>(); }

// An envelope parsed through the C interface from the encoding of `source`.
auto Received(const SouthMsg& source) {
  auto msg = NewSouthMsg();
  const std::string bytes = source.SerializeAsString();
  EXPECT_EQ(GRPCI_SouthMsgParse(msg.get(), bytes.data(), static_cast<int32_t>(bytes.size())), 1);
  return msg;
}

// The message bytes of the envelope's IPC frame.
std::string Sent(void* msg) {
  const auto frame = SerializeWith(GRPCI_SouthMsgSerialize, 1, msg);
  EXPECT_EQ(frame.result, 1);
  return frame.Bytes(4, frame.length - 4);
}

// A text value of its own for each field, with an embedded NUL.
std::string TextOf(int field) { return std::string("t\0", 2) + std::to_string(field); }

struct Number {
  int field;
  void (*set)(void*, uint32_t);
  uint32_t (*get)(void*);
};
struct Text {
  int field;
  void (*set)(void*, const char*, uint32_t);
  const char* (*get)(void*);
};

// Sets every field of the record at `payload` (a field of SouthMsg) through
// its setter, each with a value of its own, reads it back through its getter
// and finds it under its own field number on the wire.
template <size_t kNumbers, size_t kTexts>
void ExpectEachFieldUnderItsNumber(int payload, void* (*setRecord)(void*),
                                   const Number (&numbers)[kNumbers], const Text (&texts)[kTexts]) {
  auto msg = NewSouthMsg();
  void* record = setRecord(msg.get());
  for (const Number& number : numbers) {
    number.set(record, 1000u * number.field);
  }
  for (const Text& text : texts) {
    const std::string value = TextOf(text.field);
    text.set(record, value.data(), static_cast<uint32_t>(value.size()));
  }
  SouthMsg decoded;
  ASSERT_TRUE(decoded.ParseFromString(Sent(msg.get())));
  const Message& sent = decoded.GetReflection()->GetMessage(
      decoded, SouthMsg::descriptor()->FindFieldByNumber(payload));
  const auto* reflection = sent.GetReflection();
  for (const Number& number : numbers) {
    const auto* field = sent.GetDescriptor()->FindFieldByNumber(number.field);
    EXPECT_EQ(number.get(record), 1000u * number.field) << field->name();
    EXPECT_EQ(reflection->GetUInt32(sent, field), 1000u * number.field) << field->name();
  }
  for (const Text& text : texts) {
    const auto* field = sent.GetDescriptor()->FindFieldByNumber(text.field);
    const std::string value = TextOf(text.field);
    EXPECT_STREQ(text.get(record), "t") << field->name();
    EXPECT_EQ(std::memcmp(text.get(record), value.c_str(), value.size() + 1), 0) << field->name();
    EXPECT_EQ(reflection->GetString(sent, field), value) << field->name();
  }
}

TEST(LoginAuth, ReadsTheReceivedLoginWithTheTokensExactLength) {
  SouthMsg source;
  auto* login = source.mutable_login();
  login->set_user_name("admin");
  login->set_password("secret");
  login->set_handle("h-17");
  login->set_token(std::string("\0\x01\0", 3));
  auto msg = Received(source);
  void* received = GRPCI_SouthMsgGetLogin(msg.get());
  EXPECT_STREQ(GRPCI_LoginAuthGetUserName(received), "admin");
  EXPECT_STREQ(GRPCI_LoginAuthGetPassword(received), "secret");
  EXPECT_STREQ(GRPCI_LoginAuthGetHandle(received), "h-17");
  uint32_t len = 0;
  const char* token = GRPCI_LoginAuthGetToken(received, &len);
  EXPECT_EQ(testsupport::Bytes(token, len), std::string("\0\x01\0", 3));

  auto empty = NewSouthMsg();
  void* blank = GRPCI_SouthMsgSetLogin(empty.get());
  EXPECT_STREQ(GRPCI_LoginAuthGetUserName(blank), "");
  len = 99;
  ASSERT_NE(GRPCI_LoginAuthGetToken(blank, &len), nullptr);
  EXPECT_EQ(len, 0u);
}

using ClientRpc = OxaTest;

TEST_F(ClientRpc, EachFieldTravelsUnderItsOwnNumber) {
  const Number numbers[] = {{2, GRPCI_ClientRpcSetPeerPort, GRPCI_ClientRpcGetPeerPort},
                            {4, GRPCI_ClientRpcSetMyPort, GRPCI_ClientRpcGetMyPort},
                            {5, GRPCI_ClientRpcSetVpnIndex, GRPCI_ClientRpcGetVpnIndex},
                            {7, GRPCI_ClientRpcSetDscp, GRPCI_ClientRpcGetDscp},
                            {12, GRPCI_ClientRpcSetCompression, GRPCI_ClientRpcGetCompression}};
  const Text texts[] = {{1, GRPCI_ClientRpcSetPeerAddr, GRPCI_ClientRpcGetPeerAddr},
                        {3, GRPCI_ClientRpcSetMyAddr, GRPCI_ClientRpcGetMyAddr},
                        {6, GRPCI_ClientRpcSetVpnName, GRPCI_ClientRpcGetVpnName},
                        {9, GRPCI_ClientRpcSetRpcName, GRPCI_ClientRpcGetRpcName}};
  ExpectEachFieldUnderItsNumber(11, GRPCI_SouthMsgSetClientRpc, numbers, texts);
}

TEST_F(ClientRpc, NameAndIdOfTheClientSurviveParseAndReserialize) {
  SouthMsg source;
  source.set_msg_type(quorix_grpc_ipc::MSGTYPE_CLIENT_RPC);
  auto* client = source.mutable_client_rpc();
  client->set_client_name("collector-a");
  client->set_client_id(77);
  client->set_peer_port(50051);
  auto msg = Received(source);
  EXPECT_EQ(Sent(msg.get()), source.SerializeAsString());

  GRPCI_ClientRpcSetDscp(GRPCI_SouthMsgGetClientRpc(msg.get()), 46);
  SouthMsg decoded;
  ASSERT_TRUE(decoded.ParseFromString(Sent(msg.get())));
  EXPECT_EQ(decoded.client_rpc().client_name(), "collector-a");
  EXPECT_EQ(decoded.client_rpc().client_id(), 77u);
  EXPECT_EQ(decoded.client_rpc().dscp(), 46u);
}

TEST(RecordFlags, AnyNonZeroValueIsTrueAndReadsAsOne) {
  auto msg = NewSouthMsg();
  void* client = GRPCI_SouthMsgSetClientRpc(msg.get());
  auto data = Make<GRPCI_RpcDataInit, GRPCI_RpcDataDeInit>();
  for (int32_t value : {2, -1, 0, 1}) {
    GRPCI_ClientRpcSetNoTls(client, value);
    GRPCI_RpcDataSetIsOver(data.get(), value);
    EXPECT_EQ(GRPCI_ClientRpcGetNoTls(client), value != 0 ? 1 : 0) << value;
    EXPECT_EQ(GRPCI_RpcDataGetIsOver(data.get()), value != 0 ? 1 : 0) << value;
  }
  GRPCI_ClientRpcSetNoTls(client, 2);
  EXPECT_EQ(Sent(msg.get()), "\x5a\x02\x40\x01");  // client_rpc { no_tls: true }
}

using ServerRpc = OxaTest;

TEST_F(ServerRpc, EachFieldTravelsUnderItsOwnNumber) {
  const Number numbers[] = {{2, GRPCI_ServerRpcSetPeerPort, GRPCI_ServerRpcGetPeerPort},
                            {4, GRPCI_ServerRpcSetMyPort, GRPCI_ServerRpcGetMyPort},
                            {5, GRPCI_ServerRpcSetVpnIndex, GRPCI_ServerRpcGetVpnIndex},
                            {9, GRPCI_ServerRpcSetDeadLine, GRPCI_ServerRpcGetDeadLine},
                            {10, GRPCI_ServerRpcSetCompression, GRPCI_ServerRpcGetCompression},
                            {11, GRPCI_ServerRpcSetDscp, GRPCI_ServerRpcGetDscp}};
  const Text texts[] = {{1, GRPCI_ServerRpcSetPeerAddr, GRPCI_ServerRpcGetPeerAddr},
                        {3, GRPCI_ServerRpcSetMyAddr, GRPCI_ServerRpcGetMyAddr},
                        {6, GRPCI_ServerRpcSetVpnName, GRPCI_ServerRpcGetVpnName},
                        {7, GRPCI_ServerRpcSetRpcName, GRPCI_ServerRpcGetRpcName}};
  ExpectEachFieldUnderItsNumber(12, GRPCI_SouthMsgSetServerRpc, numbers, texts);
}

TEST_F(ServerRpc, ParametersAreBytesReadWithTheirLength) {
  auto msg = NewSouthMsg();
  void* server = GRPCI_SouthMsgSetServerRpc(msg.get());
  uint32_t len = 99;
  EXPECT_STREQ(GRPCI_ServerRpcGetRpcParament(server, &len), "");
  EXPECT_EQ(len, 0u);

  const char parameters[] = {'\0', '\xff', '\0', 'p'};
  GRPCI_ServerRpcSetRpcParament(server, parameters, sizeof parameters);
  const char* stored = GRPCI_ServerRpcGetRpcParament(server, &len);
  EXPECT_EQ(testsupport::Bytes(stored, len), std::string(parameters, sizeof parameters));
  EXPECT_EQ(Sent(msg.get()), std::string("\x62\x06\x42\x04\0\xff\0p", 8));

  GRPCI_ServerRpcSetDscp(server, 300);
  EXPECT_EQ(GRPCI_ServerRpcGetDscp(server), 300u);
}

TEST(RpcData, StandAloneRecordKeepsEveryByteAndOnlyTheLastValue) {
  auto data = Make<GRPCI_RpcDataInit, GRPCI_RpcDataDeInit>();
  ASSERT_NE(data.get(), nullptr);
  EXPECT_STREQ(GRPCI_RpcDataGetData(data.get()), "");
  EXPECT_EQ(GRPCI_RpcDataGetIsOver(data.get()), 0);

  GRPCI_RpcDataSetData(data.get(), "a much longer first value", 25);
  GRPCI_RpcDataSetData(data.get(), "ab\0cd", 5);
  const char* stored = GRPCI_RpcDataGetData(data.get());
  EXPECT_EQ(std::strlen(stored), 2u);
  EXPECT_EQ(std::memcmp(stored, "ab\0cd", 6), 0);  // five bytes and the terminator
  EXPECT_EQ(mgmtmsg::As<quorix_grpc_ipc::RpcData>(data.get())->data().size(), 5u);
  EXPECT_THROW(GRPCI_RpcDataSetData(data.get(), nullptr, 2), std::logic_error);

  GRPCI_RpcDataDeInit(nullptr);
}

}  // namespace
