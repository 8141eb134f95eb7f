// The payload records of the south IPC envelope: login, client RPC, server
// RPC and RPC data.
#include "common/handles.h"
#include "grpci/grpci_ex.h"
#include "grpci/grpci_message.h"
#include "quorix-grpc-ipc.pb.h"

using mgmtmsg::AssignBytes;
using mgmtmsg::BytesWithLength;
using mgmtmsg::Flag;
using quorix_grpc_ipc::ClientRpc;
using quorix_grpc_ipc::LoginAuthenticate;
using quorix_grpc_ipc::RpcData;
using quorix_grpc_ipc::ServerRpc;

namespace {

const LoginAuthenticate& Login(void* login) { return *mgmtmsg::As<LoginAuthenticate>(login); }
ClientRpc& Client(void* rpc) { return *mgmtmsg::As<ClientRpc>(rpc); }
ServerRpc& Server(void* rpc) { return *mgmtmsg::As<ServerRpc>(rpc); }
RpcData& Data(void* data) { return *mgmtmsg::As<RpcData>(data); }

}  // namespace

const char* GRPCI_LoginAuthGetUserName(void* login) { return Login(login).user_name().c_str(); }
const char* GRPCI_LoginAuthGetPassword(void* login) { return Login(login).password().c_str(); }
const char* GRPCI_LoginAuthGetHandle(void* login) { return Login(login).handle().c_str(); }
const char* GRPCI_LoginAuthGetToken(void* login, uint32_t* len) {
  return BytesWithLength(Login(login).token(), len);
}

const char* GRPCI_ClientRpcGetPeerAddr(void* rpc) { return Client(rpc).peer_address().c_str(); }
void GRPCI_ClientRpcSetPeerAddr(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Client(rpc).mutable_peer_address(), data, len);
}
uint32_t GRPCI_ClientRpcGetPeerPort(void* rpc) { return Client(rpc).peer_port(); }
void GRPCI_ClientRpcSetPeerPort(void* rpc, uint32_t value) { Client(rpc).set_peer_port(value); }
const char* GRPCI_ClientRpcGetMyAddr(void* rpc) { return Client(rpc).my_address().c_str(); }
void GRPCI_ClientRpcSetMyAddr(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Client(rpc).mutable_my_address(), data, len);
}
uint32_t GRPCI_ClientRpcGetMyPort(void* rpc) { return Client(rpc).my_port(); }
void GRPCI_ClientRpcSetMyPort(void* rpc, uint32_t value) { Client(rpc).set_my_port(value); }
uint32_t GRPCI_ClientRpcGetVpnIndex(void* rpc) { return Client(rpc).vpn_index(); }
void GRPCI_ClientRpcSetVpnIndex(void* rpc, uint32_t value) { Client(rpc).set_vpn_index(value); }
const char* GRPCI_ClientRpcGetVpnName(void* rpc) { return Client(rpc).vpn_name().c_str(); }
void GRPCI_ClientRpcSetVpnName(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Client(rpc).mutable_vpn_name(), data, len);
}
uint32_t GRPCI_ClientRpcGetDscp(void* rpc) { return Client(rpc).dscp(); }
void GRPCI_ClientRpcSetDscp(void* rpc, uint32_t value) { Client(rpc).set_dscp(value); }
int32_t GRPCI_ClientRpcGetNoTls(void* rpc) { return Client(rpc).no_tls(); }
void GRPCI_ClientRpcSetNoTls(void* rpc, int32_t value) { Client(rpc).set_no_tls(Flag(value)); }
const char* GRPCI_ClientRpcGetRpcName(void* rpc) { return Client(rpc).rpc_name().c_str(); }
void GRPCI_ClientRpcSetRpcName(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Client(rpc).mutable_rpc_name(), data, len);
}
uint32_t GRPCI_ClientRpcGetCompression(void* rpc) { return Client(rpc).compression_type(); }
void GRPCI_ClientRpcSetCompression(void* rpc, uint32_t value) {
  Client(rpc).set_compression_type(value);
}

const char* GRPCI_ServerRpcGetPeerAddr(void* rpc) { return Server(rpc).peer_address().c_str(); }
void GRPCI_ServerRpcSetPeerAddr(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Server(rpc).mutable_peer_address(), data, len);
}
uint32_t GRPCI_ServerRpcGetPeerPort(void* rpc) { return Server(rpc).peer_port(); }
void GRPCI_ServerRpcSetPeerPort(void* rpc, uint32_t value) { Server(rpc).set_peer_port(value); }
const char* GRPCI_ServerRpcGetMyAddr(void* rpc) { return Server(rpc).my_address().c_str(); }
void GRPCI_ServerRpcSetMyAddr(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Server(rpc).mutable_my_address(), data, len);
}
uint32_t GRPCI_ServerRpcGetMyPort(void* rpc) { return Server(rpc).my_port(); }
void GRPCI_ServerRpcSetMyPort(void* rpc, uint32_t value) { Server(rpc).set_my_port(value); }
uint32_t GRPCI_ServerRpcGetVpnIndex(void* rpc) { return Server(rpc).vpn_index(); }
void GRPCI_ServerRpcSetVpnIndex(void* rpc, uint32_t value) { Server(rpc).set_vpn_index(value); }
const char* GRPCI_ServerRpcGetVpnName(void* rpc) { return Server(rpc).vpn_name().c_str(); }
void GRPCI_ServerRpcSetVpnName(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Server(rpc).mutable_vpn_name(), data, len);
}
const char* GRPCI_ServerRpcGetRpcName(void* rpc) { return Server(rpc).rpc_name().c_str(); }
void GRPCI_ServerRpcSetRpcName(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Server(rpc).mutable_rpc_name(), data, len);
}
const char* GRPCI_ServerRpcGetRpcParament(void* rpc, uint32_t* len) {
  return BytesWithLength(Server(rpc).rpc_parament(), len);
}
void GRPCI_ServerRpcSetRpcParament(void* rpc, const char* data, uint32_t len) {
  AssignBytes(Server(rpc).mutable_rpc_parament(), data, len);
}
uint32_t GRPCI_ServerRpcGetDeadLine(void* rpc) { return Server(rpc).deadline(); }
void GRPCI_ServerRpcSetDeadLine(void* rpc, uint32_t value) { Server(rpc).set_deadline(value); }
uint32_t GRPCI_ServerRpcGetCompression(void* rpc) { return Server(rpc).compression_type(); }
void GRPCI_ServerRpcSetCompression(void* rpc, uint32_t value) {
  Server(rpc).set_compression_type(value);
}
uint32_t GRPCI_ServerRpcGetDscp(void* rpc) { return Server(rpc).dscp(); }
void GRPCI_ServerRpcSetDscp(void* rpc, uint32_t value) { Server(rpc).set_dscp(value); }

void* GRPCI_RpcDataInit(void) { return mgmtmsg::NewMessage<RpcData>(); }
void GRPCI_RpcDataDeInit(void* data) { mgmtmsg::DeleteMessage<RpcData>(data); }
const char* GRPCI_RpcDataGetData(void* data) { return Data(data).data().c_str(); }
void GRPCI_RpcDataSetData(void* data, const char* bytes, uint32_t len) {
  AssignBytes(Data(data).mutable_data(), bytes, len);
}
int32_t GRPCI_RpcDataGetIsOver(void* data) { return Data(data).is_over(); }
void GRPCI_RpcDataSetIsOver(void* data, int32_t value) { Data(data).set_is_over(Flag(value)); }
