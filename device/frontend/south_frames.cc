#include "south_frames.h"

#include <common/mgmtmsg_codes.h>
#include <grpci/grpci_bytes.h>
#include <grpci/grpci_ex.h>
#include <platform/oxa_mem.h>

#include <cstring>
#include <memory>

namespace frontend {
namespace {

constexpr uint32_t kOwnerId = 0x4645;  // "FE", for the memory manager's counts
constexpr uint32_t kLoginField = 10;   // SouthMsg.login

using Message = std::unique_ptr<void, void (*)(void*)>;

Message NewMessage(const CallId& id, int32_t req, int32_t op, int32_t type) {
  Message msg(GRPCI_SouthMsgInit(), GRPCI_SouthMsgDeInit);
  if (msg) {
    GRPCI_SouthMsgSetConnectId(msg.get(), id.connect_id);
    GRPCI_SouthMsgSetRpcId(msg.get(), id.rpc_id);
    GRPCI_SouthMsgSetTransNum(msg.get(), id.trans_num);
    GRPCI_SouthMsgSetReqType(msg.get(), req);
    GRPCI_SouthMsgSetOpType(msg.get(), op);
    GRPCI_SouthMsgSetMsgType(msg.get(), type);
  }
  return msg;
}

std::string Frame(const Message& msg) {
  void* block = nullptr;
  uint32_t len = 0;
  if (!msg || !GRPCI_SouthMsgSerialize(kOwnerId, msg.get(), &block, &len)) {
    return {};
  }
  std::string frame(static_cast<const char*>(block), len);
  OXA_Free_F(block, __FILE__, __LINE__);
  return frame;
}

void PutVarint(std::string* out, uint64_t value) {
  for (; value >= 0x80; value >>= 7) {
    out->push_back(static_cast<char>((value & 0x7f) | 0x80));
  }
  out->push_back(static_cast<char>(value));
}

void PutBytesField(std::string* out, uint32_t field, const std::string& bytes) {
  PutVarint(out, (field << 3) | 2);
  PutVarint(out, bytes.size());
  out->append(bytes);
}

// The login record has readers only in the API; its encoding is appended to
// the frame's message, which Protocol Buffers reads as the same field set,
// and the length word is updated.
bool AppendLogin(std::string* frame, const std::string& user, const std::string& password) {
  std::string login;
  PutBytesField(&login, 1, user);
  PutBytesField(&login, 2, password);
  PutBytesField(frame, kLoginField, login);
  uint32_t len = static_cast<uint32_t>(frame->size() - 4);
  if (frame->size() - 4 > kMaxSouthMessage) {
    return false;
  }
  std::memcpy(&(*frame)[0], &len, 4);
  return true;
}

// RpcData.data with its length: the data is an encoded message, NULs and all.
std::string RpcDataBytes(void* record) {
  uint32_t len = 0;
  const char* data = GRPCI_RpcDataReadData(record, &len);
  return std::string(data, len);
}

// A message carrying bytes of a call in its RpcData.
std::string RecordFrame(const CallId& id, int32_t req, int32_t op, const std::string& data,
                        bool is_over) {
  Message msg = NewMessage(id, req, op, GRPCI_MSGTYPE_RPC_DATA);
  if (!msg) {
    return {};
  }
  void* record = GRPCI_SouthMsgSetRpcData(msg.get());
  GRPCI_RpcDataSetData(record, data.data(), data.size());
  GRPCI_RpcDataSetIsOver(record, is_over ? 1 : 0);
  return Frame(msg);
}

// A message carrying a status code and its text.
std::string ResultFrame(const CallId& id, int32_t req, int32_t op, int32_t type, uint32_t code,
                        const std::string& why) {
  Message msg = NewMessage(id, req, op, type);
  if (!msg) {
    return {};
  }
  GRPCI_SouthMsgSetResult(msg.get(), code);
  GRPCI_SouthMsgSetResultDesc(msg.get(), why.data(), why.size());
  return Frame(msg);
}

ClientOpen ClientOpenOf(void* rpc) {
  ClientOpen open;
  open.method = GRPCI_ClientRpcGetRpcName(rpc);
  open.peer_address = GRPCI_ClientRpcGetPeerAddr(rpc);
  open.peer_port = GRPCI_ClientRpcGetPeerPort(rpc);
  open.no_tls = GRPCI_ClientRpcGetNoTls(rpc) != 0;
  return open;
}

}  // namespace

std::string OpenFrame(const CallId& id, const CallOpen& open) {
  Message msg =
      NewMessage(id, GRPCI_REQTYPE_REQUEST, GRPCI_OPTYPE_CREATE, GRPCI_MSGTYPE_SERVER_RPC);
  if (!msg) {
    return {};
  }
  void* rpc = GRPCI_SouthMsgSetServerRpc(msg.get());
  GRPCI_ServerRpcSetRpcName(rpc, open.method.data(), open.method.size());
  GRPCI_ServerRpcSetPeerAddr(rpc, open.peer_address.data(), open.peer_address.size());
  GRPCI_ServerRpcSetPeerPort(rpc, open.peer_port);
  GRPCI_ServerRpcSetMyAddr(rpc, open.my_address.data(), open.my_address.size());
  GRPCI_ServerRpcSetMyPort(rpc, open.my_port);
  GRPCI_ServerRpcSetDeadLine(rpc, open.deadline_ms);
  GRPCI_ServerRpcSetRpcParament(rpc, open.first_request.data(), open.first_request.size());
  std::string frame = Frame(msg);
  if (frame.empty() || !AppendLogin(&frame, open.user, open.password)) {
    return {};
  }
  return frame;
}

std::string DataFrame(const CallId& id, const std::string& data, bool is_over) {
  return RecordFrame(id, GRPCI_REQTYPE_REQUEST, GRPCI_OPTYPE_MODIFY, data, is_over);
}

std::string CancelFrame(const CallId& id, uint32_t code, const std::string& why) {
  return ResultFrame(id, GRPCI_REQTYPE_REQUEST, GRPCI_OPTYPE_DELETE, GRPCI_MSGTYPE_SERVER_RPC, code,
                     why);
}

std::string ClientFrame(const CallId& id, ClientNotice notice, uint32_t code,
                        const std::string& text) {
  switch (notice) {
    case ClientNotice::kOpened:
      return ResultFrame(id, GRPCI_REQTYPE_RESPONSE, GRPCI_OPTYPE_CREATE, GRPCI_MSGTYPE_CLIENT_RPC,
                         code, text);
    case ClientNotice::kWritten:
      return ResultFrame(id, GRPCI_REQTYPE_RESPONSE, GRPCI_OPTYPE_MODIFY, GRPCI_MSGTYPE_RPC_DATA,
                         code, text);
    case ClientNotice::kReceived:
      return RecordFrame(id, GRPCI_REQTYPE_RESPONSE, GRPCI_OPTYPE_NOTIFY, text, false);
    case ClientNotice::kLost:
      return ResultFrame(id, GRPCI_REQTYPE_RESPONSE, GRPCI_OPTYPE_DELETE, GRPCI_MSGTYPE_CLIENT_RPC,
                         code, text);
  }
  return {};
}

bool ReadEvent(const std::string& message, SouthEvent* event) {
  Message msg(GRPCI_SouthMsgInit(), GRPCI_SouthMsgDeInit);
  if (!msg ||
      !GRPCI_SouthMsgParse(msg.get(), message.data(), static_cast<int32_t>(message.size()))) {
    return false;
  }
  *event = SouthEvent();
  event->connect_id = GRPCI_SouthMsgGetConnectId(msg.get());
  event->rpc_id = GRPCI_SouthMsgGetRpcId(msg.get());
  event->trans_num = GRPCI_SouthMsgGetTransNum(msg.get());
  const int32_t req = GRPCI_SouthMsgGetReqType(msg.get());
  const int32_t op = GRPCI_SouthMsgGetOpType(msg.get());
  const int32_t type = GRPCI_SouthMsgGetMsgType(msg.get());
  void* record = GRPCI_SouthMsgGetRpcData(msg.get());
  void* client = GRPCI_SouthMsgGetClientRpc(msg.get());
  const bool data = type == GRPCI_MSGTYPE_RPC_DATA && record != nullptr;
  if (req == GRPCI_REQTYPE_RESPONSE && op == GRPCI_OPTYPE_NOTIFY && data) {
    event->kind = SouthEvent::kReply;
    event->is_over = GRPCI_RpcDataGetIsOver(record) != 0;
  } else if (req == GRPCI_REQTYPE_RESPONSE && op == GRPCI_OPTYPE_DELETE &&
             type == GRPCI_MSGTYPE_SERVER_RPC) {
    event->kind = SouthEvent::kEnd;
    event->result = GRPCI_SouthMsgGetResult(msg.get());
    event->description = GRPCI_SouthMsgGetResultDesc(msg.get());
  } else if (req == GRPCI_REQTYPE_REQUEST && op == GRPCI_OPTYPE_CREATE &&
             type == GRPCI_MSGTYPE_CLIENT_RPC && client != nullptr) {
    event->kind = SouthEvent::kClientOpen;
    event->open = ClientOpenOf(client);
  } else if (req == GRPCI_REQTYPE_REQUEST && op == GRPCI_OPTYPE_MODIFY && data) {
    event->kind = SouthEvent::kClientData;
  } else if (req == GRPCI_REQTYPE_REQUEST && op == GRPCI_OPTYPE_DELETE &&
             type == GRPCI_MSGTYPE_CLIENT_RPC) {
    event->kind = SouthEvent::kClientClose;
  }
  if (data) {
    event->data = RpcDataBytes(record);
  }
  return true;
}

}  // namespace frontend
