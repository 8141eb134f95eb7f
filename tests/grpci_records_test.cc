// The conversions that the accessors of both families share, each over one
// table of all its entry points: byte-exact text setters, flags and plain
// numbers; and the readers of bytes fields with their length.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_ex.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/gnmi_access.h"
#include "support/owned.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using testsupport::Bytes;
namespace ipc = quorix_grpc_ipc;

// Accessors of the fields of one record type: each field's name, setter and
// reader (null where there is none).
template <class Set, class Get>
struct Record {
  const Message& type;
  std::vector<std::tuple<const char*, Set, Get>> fields;
};

// Runs `check` on each field of each record, with a fresh record.
template <class Set, class Get, size_t kCount, class Check>
void ForEachField(const Record<Set, Get> (&records)[kCount], Check check) {
  for (const auto& record : records) {
    for (const auto& [name, set, get] : record.fields) {
      const std::unique_ptr<Message> message(record.type.New());
      const auto* field = message->GetDescriptor()->FindFieldByName(name);
      SCOPED_TRACE(field->full_name());
      check(message.get(), field, set, get);
    }
  }
}

TEST(Accessors, TextSettersCopyExactlyTheBytesGivenAndRefuseNullData) {
  const Record<void (*)(void*, const char*, uint32_t), const char* (*)(void*)> records[] = {
      {gnmi::Path::default_instance(),
       {{"origin", GNMI_Path_SetOrigin, GNMI_Path_GetOrigin},
        {"target", GNMI_Path_SetTarget, GNMI_Path_GetTarget}}},
      {gnmi::PathElem::default_instance(),
       {{"name", GNMI_PathElem_SetName, GNMI_PathElem_GetName}}},
      {gnmi::Notification::default_instance(),
       {{"alias", GNMI_Notification_SetAlias, GNMI_Notification_GetAlias}}},
      {gnmi::ModelData::default_instance(),
       {{"name", GNMI_ModelData_SetName, GNMI_ModelData_GetName},
        {"organization", GNMI_ModelData_SetOrganization, GNMI_ModelData_GetOrganization},
        {"version", GNMI_ModelData_SetVersion, GNMI_ModelData_GetVersion}}},
      {gnmi::TypedValue::default_instance(),
       {{"string_val", GNMI_TypedValue_SetStringVal, nullptr},
        {"json_val", GNMI_TypedValue_SetJsonVal, GNMI_TypedValue_GetJsonVal},
        {"json_ietf_val", GNMI_TypedValue_SetJsonIetfVal, nullptr},
        {"json_ietf_val", GNMI_TypedValue_SetJsonietf_Val, nullptr},
        {"proto_bytes", GNMI_TypedValue_SetProtoBytes, nullptr}}},
      {ipc::SouthMsg::default_instance(),
       {{"result_description", GRPCI_SouthMsgSetResultDesc, GRPCI_SouthMsgGetResultDesc}}},
      {ipc::ClientRpc::default_instance(),
       {{"peer_address", GRPCI_ClientRpcSetPeerAddr, GRPCI_ClientRpcGetPeerAddr},
        {"my_address", GRPCI_ClientRpcSetMyAddr, GRPCI_ClientRpcGetMyAddr},
        {"vpn_name", GRPCI_ClientRpcSetVpnName, GRPCI_ClientRpcGetVpnName},
        {"rpc_name", GRPCI_ClientRpcSetRpcName, GRPCI_ClientRpcGetRpcName}}},
      {ipc::ServerRpc::default_instance(),
       {{"peer_address", GRPCI_ServerRpcSetPeerAddr, GRPCI_ServerRpcGetPeerAddr},
        {"my_address", GRPCI_ServerRpcSetMyAddr, GRPCI_ServerRpcGetMyAddr},
        {"vpn_name", GRPCI_ServerRpcSetVpnName, GRPCI_ServerRpcGetVpnName},
        {"rpc_name", GRPCI_ServerRpcSetRpcName, GRPCI_ServerRpcGetRpcName},
        {"rpc_parament", GRPCI_ServerRpcSetRpcParament, nullptr}}},
      {ipc::RpcData::default_instance(), {{"data", GRPCI_RpcDataSetData, GRPCI_RpcDataGetData}}},
      {quorix_dialin::SubsReply::default_instance(),
       {{"response_code", GRPCI_SubsReplySetResponseCode, nullptr},
        {"message", GRPCI_SubsReplySetMessage, nullptr}}},
      {quorix_dialin::CancelReply::default_instance(),
       {{"response_code", GRPCI_CancelReplySetResponseCode, nullptr},
        {"message", GRPCI_CancelReplySetMessage, nullptr}}},
  };
  const std::string text("ab\0c", 4);
  ForEachField(records, [&](Message* message, const FieldDescriptor* field, auto set, auto get) {
    const auto* reflection = message->GetReflection();
    set(message, "a much longer first value", 25);
    set(message, "ab\0cd", 4);
    EXPECT_EQ(reflection->GetString(*message, field), text);
    if (get != nullptr) {  // the four bytes, then the terminator
      EXPECT_EQ(std::memcmp(get(message), "ab\0c", 5), 0);
    }
    EXPECT_THROW(set(message, nullptr, 1), std::logic_error);
    EXPECT_EQ(reflection->GetString(*message, field), text);
    set(message, nullptr, 0);
    EXPECT_EQ(reflection->GetString(*message, field), "");
    if (field->containing_oneof() != nullptr) {  // the member chosen, though empty
      EXPECT_TRUE(reflection->HasField(*message, field));
    }
  });
}

TEST(Accessors, FlagsTakeAnyNonZeroValueAsTrueAndReadAsOne) {
  const Record<void (*)(void*, int32_t), int32_t (*)(void*)> records[] = {
      {gnmi::Notification::default_instance(),
       {{"atomic", GNMI_Notification_SetAtomic, GNMI_Notification_GetAtomic}}},
      {gnmi::TypedValue::default_instance(), {{"bool_val", GNMI_TypedValue_SetBoolVal, nullptr}}},
      {ipc::ClientRpc::default_instance(),
       {{"no_tls", GRPCI_ClientRpcSetNoTls, GRPCI_ClientRpcGetNoTls}}},
      {ipc::RpcData::default_instance(),
       {{"is_over", GRPCI_RpcDataSetIsOver, GRPCI_RpcDataGetIsOver}}},
  };
  ForEachField(records, [](Message* message, const FieldDescriptor* field, auto set, auto get) {
    for (int32_t value : {2, 256, -1, INT_MIN, 0, 1}) {
      set(message, value);
      EXPECT_EQ(message->GetReflection()->GetBool(*message, field), value != 0) << value;
      if (get != nullptr) {
        EXPECT_EQ(get(message), value != 0 ? 1 : 0) << value;
      }
    }
  });
}

TEST(Accessors, NumbersRoundTripThroughTheirOwnField) {
  const Record<void (*)(void*, uint32_t), uint32_t (*)(void*)> records[] = {
      {ipc::SouthMsg::default_instance(),
       {{"connect_id", GRPCI_SouthMsgSetConnectId, GRPCI_SouthMsgGetConnectId},
        {"rpc_id", GRPCI_SouthMsgSetRpcId, GRPCI_SouthMsgGetRpcId},
        {"trans_num", GRPCI_SouthMsgSetTransNum, GRPCI_SouthMsgGetTransNum},
        {"vrid", GRPCI_SouthMsgSetVrId, GRPCI_SouthMsgGetVrId},
        {"result", GRPCI_SouthMsgSetResult, GRPCI_SouthMsgGetResult}}},
      {ipc::ClientRpc::default_instance(),
       {{"peer_port", GRPCI_ClientRpcSetPeerPort, GRPCI_ClientRpcGetPeerPort},
        {"my_port", GRPCI_ClientRpcSetMyPort, GRPCI_ClientRpcGetMyPort},
        {"vpn_index", GRPCI_ClientRpcSetVpnIndex, GRPCI_ClientRpcGetVpnIndex},
        {"dscp", GRPCI_ClientRpcSetDscp, GRPCI_ClientRpcGetDscp},
        {"compression_type", GRPCI_ClientRpcSetCompression, GRPCI_ClientRpcGetCompression}}},
      {ipc::ServerRpc::default_instance(),
       {{"peer_port", GRPCI_ServerRpcSetPeerPort, GRPCI_ServerRpcGetPeerPort},
        {"my_port", GRPCI_ServerRpcSetMyPort, GRPCI_ServerRpcGetMyPort},
        {"vpn_index", GRPCI_ServerRpcSetVpnIndex, GRPCI_ServerRpcGetVpnIndex},
        {"deadline", GRPCI_ServerRpcSetDeadLine, GRPCI_ServerRpcGetDeadLine},
        {"compression_type", GRPCI_ServerRpcSetCompression, GRPCI_ServerRpcGetCompression},
        {"dscp", GRPCI_ServerRpcSetDscp, GRPCI_ServerRpcGetDscp}}},
      {gnmi::Update::default_instance(),
       {{"duplicates", GNMI_Update_SetDuplicates, GNMI_Update_GetDuplicates}}},
  };
  ForEachField(records, [](Message* message, const FieldDescriptor* field, auto set, auto get) {
    set(message, 0xFFFFFF00u);
    EXPECT_EQ(message->GetReflection()->GetUInt32(*message, field), 0xFFFFFF00u);
    EXPECT_EQ(get(message), 0xFFFFFF00u);
  });
}

TEST(Accessors, LoginTextsAndBytesFieldsReadWithTheirExactLength) {
  auto login = testsupport::FromText<ipc::LoginAuthenticate>(
      R"(user_name: "admin" password: "secret" handle: "h-17" token: "\000\001\000")");
  EXPECT_STREQ(GRPCI_LoginAuthGetUserName(&login), "admin");
  EXPECT_STREQ(GRPCI_LoginAuthGetPassword(&login), "secret");
  EXPECT_STREQ(GRPCI_LoginAuthGetHandle(&login), "h-17");
  uint32_t len = 0;
  const char* token = GRPCI_LoginAuthGetToken(&login, &len);
  EXPECT_EQ(Bytes(token, len), login.token());
  ipc::ServerRpc server;
  EXPECT_STREQ(GRPCI_ServerRpcGetRpcParament(&server, &len), "");
  EXPECT_EQ(len, 0u);
  server.set_rpc_parament(std::string("\0\xff\0p", 4));
  const char* parameters = GRPCI_ServerRpcGetRpcParament(&server, &len);
  EXPECT_EQ(Bytes(parameters, len), server.rpc_parament());
}

}  // namespace
