// South IPC message bytes from outside: parsed and walked through every
// getter of the envelope and its payload records, then framed by the
// serializer; the frame's length word (host order) must count the rest, and
// the rest must parse back to an equal message.
#include <cstring>

#include "fuzz/walk.h"
#include "grpci/grpci_ex.h"
#include "quorix-grpc-ipc.pb.h"

using namespace fuzzwalk;

namespace {

// A record's getter: NULL exactly when Has says absent.
void* Record(void* msg, int32_t (*has)(void*), void* (*get)(void*)) {
  void* record = get(msg);
  Check((record != nullptr) == (has(msg) == 1), "record presence");
  return record;
}

void ReadBytes(const char* (*get)(void*, uint32_t*), void* record, size_t expected) {
  uint32_t len = 0;
  const char* bytes = get(record, &len);
  Check(bytes != nullptr && len == expected && bytes[len] == '\0', "bytes field");
}

void ReadRecords(void* msg, const quorix_grpc_ipc::SouthMsg& parsed) {
  if (void* login = Record(msg, GRPCI_SouthMsgHasLogin, GRPCI_SouthMsgGetLogin)) {
    Read(GRPCI_LoginAuthGetUserName(login));
    Read(GRPCI_LoginAuthGetPassword(login));
    Read(GRPCI_LoginAuthGetHandle(login));
    ReadBytes(GRPCI_LoginAuthGetToken, login, parsed.login().token().size());
  }
  if (void* rpc = Record(msg, GRPCI_SouthMsgHasClientRpc, GRPCI_SouthMsgGetClientRpc)) {
    Read(GRPCI_ClientRpcGetPeerAddr(rpc));
    Read(GRPCI_ClientRpcGetMyAddr(rpc));
    Read(GRPCI_ClientRpcGetVpnName(rpc));
    Read(GRPCI_ClientRpcGetRpcName(rpc));
    Check(GRPCI_ClientRpcGetNoTls(rpc) <= 1, "flag");
    GRPCI_ClientRpcGetPeerPort(rpc);
    GRPCI_ClientRpcGetMyPort(rpc);
    GRPCI_ClientRpcGetVpnIndex(rpc);
    GRPCI_ClientRpcGetDscp(rpc);
    GRPCI_ClientRpcGetCompression(rpc);
  }
  if (void* rpc = Record(msg, GRPCI_SouthMsgHasServerRpc, GRPCI_SouthMsgGetServerRpc)) {
    Read(GRPCI_ServerRpcGetPeerAddr(rpc));
    Read(GRPCI_ServerRpcGetMyAddr(rpc));
    Read(GRPCI_ServerRpcGetVpnName(rpc));
    Read(GRPCI_ServerRpcGetRpcName(rpc));
    ReadBytes(GRPCI_ServerRpcGetRpcParament, rpc, parsed.server_rpc().rpc_parament().size());
    GRPCI_ServerRpcGetPeerPort(rpc);
    GRPCI_ServerRpcGetMyPort(rpc);
    GRPCI_ServerRpcGetVpnIndex(rpc);
    GRPCI_ServerRpcGetDeadLine(rpc);
    GRPCI_ServerRpcGetCompression(rpc);
    GRPCI_ServerRpcGetDscp(rpc);
  }
  if (void* data = Record(msg, GRPCI_SouthMsgHasRpcData, GRPCI_SouthMsgGetRpcData)) {
    Check(std::memcmp(GRPCI_RpcDataGetData(data), parsed.rpc_data().data().c_str(),
                      parsed.rpc_data().data().size() + 1) == 0,
          "data bytes");
    Check(GRPCI_RpcDataGetIsOver(data) <= 1, "flag");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto msg = Parsed<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>(GRPCI_SouthMsgParse, data, size);
  if (!msg) return 0;
  const auto& parsed = *static_cast<const quorix_grpc_ipc::SouthMsg*>(msg.get());
  GRPCI_SouthMsgGetConnectId(msg.get());
  GRPCI_SouthMsgGetRpcId(msg.get());
  GRPCI_SouthMsgGetTransNum(msg.get());
  GRPCI_SouthMsgGetReqType(msg.get());
  GRPCI_SouthMsgGetOpType(msg.get());
  GRPCI_SouthMsgGetMsgType(msg.get());
  GRPCI_SouthMsgGetVrId(msg.get());
  GRPCI_SouthMsgGetResult(msg.get());
  Read(GRPCI_SouthMsgGetResultDesc(msg.get()));
  ReadRecords(msg.get(), parsed);

  const std::string frame = ReplyBytes(GRPCI_SouthMsgSerialize, msg.get());
  uint32_t word = 0;
  Check(frame.size() >= sizeof word, "frame shorter than its length word");
  std::memcpy(&word, frame.data(), sizeof word);
  Check(word == frame.size() - sizeof word, "length word");
  auto again = testsupport::Make<GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>();
  Check(GRPCI_SouthMsgParse(again.get(), frame.data() + sizeof word, static_cast<int32_t>(word)),
        "the frame's message does not parse");
  CheckEqual(*static_cast<const quorix_grpc_ipc::SouthMsg*>(again.get()), parsed, "round trip");
  return 0;
}
