/* One south IPC message: the sending side builds a SouthMsg carrying a client
 * RPC and frames it; the receiving side strips the length prefix, parses the
 * message and prints it. */
#include <stdio.h>
#include <string.h>

#include "common/mgmtmsg_codes.h"
#include "exchanges.h"
#include "frame_file.h"
#include "grpci/grpci_ex.h"
#include "hexdump.h"
#include "oxa_mem.h"

#define EXAMPLE_OWNER_ID 0x4950u /* memory owner of the example's blocks */

typedef void (*TextSetter)(void* record, const char* data, uint32_t len);

static void SetText(TextSetter set, void* record, const char* text) {
  set(record, text, (uint32_t)strlen(text));
}

/* A request to open a client RPC towards a collector. NULL when memory runs
 * out. */
static void* BuildClientRpcRequest(void) {
  void* msg = GRPCI_SouthMsgInit();
  void* rpc;

  if (msg == NULL) {
    return NULL;
  }
  GRPCI_SouthMsgSetConnectId(msg, 12);
  GRPCI_SouthMsgSetRpcId(msg, 3);
  GRPCI_SouthMsgSetTransNum(msg, 41);
  GRPCI_SouthMsgSetReqType(msg, GRPCI_REQTYPE_REQUEST);
  GRPCI_SouthMsgSetOpType(msg, GRPCI_OPTYPE_CREATE);
  GRPCI_SouthMsgSetMsgType(msg, GRPCI_MSGTYPE_CLIENT_RPC);
  GRPCI_SouthMsgSetVrId(msg, 0);
  rpc = GRPCI_SouthMsgSetClientRpc(msg);
  SetText(GRPCI_ClientRpcSetPeerAddr, rpc, "192.0.2.10");
  GRPCI_ClientRpcSetPeerPort(rpc, 57400);
  SetText(GRPCI_ClientRpcSetMyAddr, rpc, "198.51.100.1");
  GRPCI_ClientRpcSetMyPort(rpc, 50051);
  GRPCI_ClientRpcSetVpnIndex(rpc, 1);
  SetText(GRPCI_ClientRpcSetVpnName, rpc, "mgmt");
  GRPCI_ClientRpcSetDscp(rpc, 46);
  GRPCI_ClientRpcSetNoTls(rpc, 0);
  SetText(GRPCI_ClientRpcSetRpcName, rpc, "/quorix_dialout.gRPCDataservice/dataPublish");
  GRPCI_ClientRpcSetCompression(rpc, 0);
  return msg;
}

static void PrintSouthMsg(void* msg) {
  void* rpc = GRPCI_SouthMsgGetClientRpc(msg);

  printf(
      "south message: connect %lu, rpc %lu, transaction %lu, req_type %ld, op_type %ld,"
      " msg_type %ld, vrid %lu, result %lu \"%s\"\n",
      (unsigned long)GRPCI_SouthMsgGetConnectId(msg), (unsigned long)GRPCI_SouthMsgGetRpcId(msg),
      (unsigned long)GRPCI_SouthMsgGetTransNum(msg), (long)GRPCI_SouthMsgGetReqType(msg),
      (long)GRPCI_SouthMsgGetOpType(msg), (long)GRPCI_SouthMsgGetMsgType(msg),
      (unsigned long)GRPCI_SouthMsgGetVrId(msg), (unsigned long)GRPCI_SouthMsgGetResult(msg),
      GRPCI_SouthMsgGetResultDesc(msg));
  if (rpc == NULL) {
    printf("  no client RPC\n");
    return;
  }
  printf("  client RPC %s: %s:%lu -> %s:%lu, vpn %lu \"%s\", dscp %lu, tls %s, compression %lu\n",
         GRPCI_ClientRpcGetRpcName(rpc), GRPCI_ClientRpcGetMyAddr(rpc),
         (unsigned long)GRPCI_ClientRpcGetMyPort(rpc), GRPCI_ClientRpcGetPeerAddr(rpc),
         (unsigned long)GRPCI_ClientRpcGetPeerPort(rpc),
         (unsigned long)GRPCI_ClientRpcGetVpnIndex(rpc), GRPCI_ClientRpcGetVpnName(rpc),
         (unsigned long)GRPCI_ClientRpcGetDscp(rpc), GRPCI_ClientRpcGetNoTls(rpc) ? "off" : "on",
         (unsigned long)GRPCI_ClientRpcGetCompression(rpc));
}

/* The receiving side: the frame's first 4 bytes are the message length in
 * host byte order, which must account for the rest of the frame. */
static int Receive(const unsigned char* frame, uint32_t frameLen) {
  uint32_t msgLen;
  void* msg;
  int ok;

  if (frameLen < sizeof msgLen) {
    printf("south IPC: frame shorter than its length word\n");
    return 1;
  }
  memcpy(&msgLen, frame, sizeof msgLen);
  if (msgLen != frameLen - sizeof msgLen) {
    printf("south IPC: length word %lu does not match the %lu bytes after it\n",
           (unsigned long)msgLen, (unsigned long)(frameLen - sizeof msgLen));
    return 1;
  }
  msg = GRPCI_SouthMsgInit();
  ok = msg != NULL && GRPCI_SouthMsgParse(msg, frame + sizeof msgLen, (int32_t)msgLen);
  if (ok) {
    PrintSouthMsg(msg);
  } else {
    printf("south IPC: the message could not be parsed\n");
  }
  GRPCI_SouthMsgDeInit(msg);
  return ok ? 0 : 1;
}

int RunSouthIpc(const char* frameDir) {
  void* msg = BuildClientRpcRequest();
  void* frame = NULL;
  uint32_t frameLen = 0;
  int failed;

  if (msg == NULL || !GRPCI_SouthMsgSerialize(EXAMPLE_OWNER_ID, msg, &frame, &frameLen)) {
    printf("south IPC: the message could not be built or framed\n");
    GRPCI_SouthMsgDeInit(msg);
    return 1;
  }
  GRPCI_SouthMsgDeInit(msg); /* the frame outlives the message */
  PrintBytes("south IPC frame", frame, frameLen);
  failed = WriteFrameFile(frameDir, "south_msg.frame", frame, frameLen);
  failed |= Receive(frame, frameLen);
  OXA_Free_F(frame, __FILE__, __LINE__);
  return failed;
}
