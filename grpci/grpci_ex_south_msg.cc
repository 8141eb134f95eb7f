// The south IPC envelope: lifecycle, the IPC frame, the envelope's fields and
// its four payload records.
#include "common/handles.h"
#include "common/platform_block.h"
#include "grpci/grpci_ex.h"
#include "grpci/grpci_message.h"
#include "quorix-grpc-ipc.pb.h"

using mgmtmsg::AssignBytes;
using mgmtmsg::HandleOrNull;
using quorix_grpc_ipc::SouthMsg;

namespace {

constexpr mgmtmsg::PlatformBlockSite kIpcFrameSite{mgmtmsg::BlockLayout::kLengthPrefixed,
                                                   "grpci_ex", 690, 701};

SouthMsg& South(void* msg) { return *mgmtmsg::As<SouthMsg>(msg); }

}  // namespace

void* GRPCI_SouthMsgInit(void) { return mgmtmsg::NewMessage<SouthMsg>(); }
int32_t GRPCI_SouthMsgParse(void* msg, const void* data, int32_t size) {
  return mgmtmsg::ParseMessage<SouthMsg>(msg, data, size);
}
int32_t GRPCI_SouthMsgSerialize(uint32_t ownerId, void* msg, void** out, uint32_t* outLen) {
  return mgmtmsg::SerializeToPlatformBlock(South(msg), ownerId, kIpcFrameSite, out, outLen);
}
void GRPCI_SouthMsgDeInit(void* msg) { mgmtmsg::DeleteMessage<SouthMsg>(msg); }

uint32_t GRPCI_SouthMsgGetConnectId(void* msg) { return South(msg).connect_id(); }
void GRPCI_SouthMsgSetConnectId(void* msg, uint32_t value) { South(msg).set_connect_id(value); }
uint32_t GRPCI_SouthMsgGetRpcId(void* msg) { return South(msg).rpc_id(); }
void GRPCI_SouthMsgSetRpcId(void* msg, uint32_t value) { South(msg).set_rpc_id(value); }
uint32_t GRPCI_SouthMsgGetTransNum(void* msg) { return South(msg).trans_num(); }
void GRPCI_SouthMsgSetTransNum(void* msg, uint32_t value) { South(msg).set_trans_num(value); }
uint32_t GRPCI_SouthMsgGetVrId(void* msg) { return South(msg).vrid(); }
void GRPCI_SouthMsgSetVrId(void* msg, uint32_t value) { South(msg).set_vrid(value); }
uint32_t GRPCI_SouthMsgGetResult(void* msg) { return South(msg).result(); }
void GRPCI_SouthMsgSetResult(void* msg, uint32_t value) { South(msg).set_result(value); }

// Enumerations are open: any number is stored and read back as it is.
int32_t GRPCI_SouthMsgGetReqType(void* msg) { return South(msg).req_type(); }
void GRPCI_SouthMsgSetReqType(void* msg, int32_t value) {
  South(msg).set_req_type(static_cast<quorix_grpc_ipc::ReqType>(value));
}
int32_t GRPCI_SouthMsgGetOpType(void* msg) { return South(msg).op_type(); }
void GRPCI_SouthMsgSetOpType(void* msg, int32_t value) {
  South(msg).set_op_type(static_cast<quorix_grpc_ipc::OpType>(value));
}
int32_t GRPCI_SouthMsgGetMsgType(void* msg) { return South(msg).msg_type(); }
void GRPCI_SouthMsgSetMsgType(void* msg, int32_t value) {
  South(msg).set_msg_type(static_cast<quorix_grpc_ipc::MsgType>(value));
}

const char* GRPCI_SouthMsgGetResultDesc(void* msg) {
  return South(msg).result_description().c_str();
}
void GRPCI_SouthMsgSetResultDesc(void* msg, const char* data, uint32_t len) {
  AssignBytes(South(msg).mutable_result_description(), data, len);
}

// Payload records: present or null on reading, created on demand by Set.
int32_t GRPCI_SouthMsgHasLogin(void* msg) { return South(msg).has_login(); }
void* GRPCI_SouthMsgGetLogin(void* msg) {
  return HandleOrNull(South(msg).has_login(), South(msg).login());
}
void* GRPCI_SouthMsgSetLogin(void* msg) { return South(msg).mutable_login(); }

int32_t GRPCI_SouthMsgHasClientRpc(void* msg) { return South(msg).has_client_rpc(); }
void* GRPCI_SouthMsgGetClientRpc(void* msg) {
  return HandleOrNull(South(msg).has_client_rpc(), South(msg).client_rpc());
}
void* GRPCI_SouthMsgSetClientRpc(void* msg) { return South(msg).mutable_client_rpc(); }

int32_t GRPCI_SouthMsgHasServerRpc(void* msg) { return South(msg).has_server_rpc(); }
void* GRPCI_SouthMsgGetServerRpc(void* msg) {
  return HandleOrNull(South(msg).has_server_rpc(), South(msg).server_rpc());
}
void* GRPCI_SouthMsgSetServerRpc(void* msg) { return South(msg).mutable_server_rpc(); }

int32_t GRPCI_SouthMsgHasRpcData(void* msg) { return South(msg).has_rpc_data(); }
void* GRPCI_SouthMsgGetRpcData(void* msg) {
  return HandleOrNull(South(msg).has_rpc_data(), South(msg).rpc_data());
}
void* GRPCI_SouthMsgSetRpcData(void* msg) { return South(msg).mutable_rpc_data(); }
