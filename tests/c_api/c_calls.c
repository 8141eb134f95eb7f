// The public headers used from C99 exactly as a C caller would, driven by
// api_test.cc through CRunCalls.
#include <string.h>

#include "gnmi/gnmi_ex.h"
#include "grpci/grpci_ex.h"
#include "oxa_mem_host.h"

#define CHECK(condition) \
  if (!(condition)) return __LINE__

// GetRequest {path {origin: "oc"} type: STATE}, cut short, then whole; the
// response {notification {timestamp: 1234}}.
static int RunGet(void* ctx) {
  static const unsigned char request[] = {0x12, 0x04, 0x12, 0x02, 'o', 'c', 0x18, 0x02};
  static const unsigned char response[] = {0x0a, 0x03, 0x08, 0xd2, 0x09};
  void* out = NULL;
  int outLen = 0;
  CHECK(GNMI_GetRequest_Parse(ctx, request, 3) == 0 &&
        GNMI_GetRequest_Parse(ctx, request, (int)sizeof request) == 1);
  CHECK(GNMI_GetRequest_PathSizeof(ctx) == 1 && GNMI_GetRequest_GetType(ctx) == 2 &&
        strcmp(GNMI_Path_GetOrigin(GNMI_GetRequest_GetPath(ctx, 0)), "oc") == 0);
  GNMI_Notification_SetTimestamp(GNMI_GetResponse_AppendNotification(ctx), 1234);
  CHECK(GNMI_GetResponse_Serialize(ctx, &out, &outLen) == 1 && outLen == (int)sizeof response &&
        memcmp(out, response, sizeof response) == 0);
  return 0;
}

// rpc_id 7, msg_type 1, a result description of 0x1234 bytes and client_rpc
// {peer_port: 50051}, framed for owner 42 and parsed back from the frame. The
// length word, 0x1241, has two distinct non-zero bytes, so that it shows the
// byte order: the host's, most significant byte first on the device.
static int RunSouth(void* sent, void* received, void** frame) {
  static char desc[0x1234];
  static const unsigned char head[] = {0x10, 0x07, 0x30, 0x01, 0x4a, 0xb4, 0x24};
  static const unsigned char tail[] = {0x5a, 0x04, 0x10, 0x83, 0x87, 0x03};
  const uint32_t length = sizeof head + sizeof desc + sizeof tail;
  uint32_t frameLen = 0;
  const unsigned char* body = NULL;
  memset(desc, 'r', sizeof desc);
  GRPCI_SouthMsgSetRpcId(sent, 7);
  GRPCI_SouthMsgSetMsgType(sent, 1);
  GRPCI_SouthMsgSetResultDesc(sent, desc, sizeof desc);
  GRPCI_ClientRpcSetPeerPort(GRPCI_SouthMsgSetClientRpc(sent), 50051);
  CHECK(GRPCI_SouthMsgSerialize(42, sent, frame, &frameLen) == 1 && frameLen == 4 + length);
  body = (const unsigned char*)*frame + 4;
  CHECK(memcmp(*frame, &length, 4) == 0);
  CHECK(memcmp(body, head, sizeof head) == 0 &&
        memcmp(body + sizeof head, desc, sizeof desc) == 0 &&
        memcmp(body + sizeof head + sizeof desc, tail, sizeof tail) == 0);
  CHECK(GRPCI_SouthMsgParse(received, body, (int32_t)length) == 1 &&
        GRPCI_SouthMsgGetRpcId(received) == 7 && GRPCI_SouthMsgGetMsgType(received) == 1 &&
        GRPCI_SouthMsgHasClientRpc(received) == 1 &&
        GRPCI_ClientRpcGetPeerPort(GRPCI_SouthMsgGetClientRpc(received)) == 50051);
  return 0;
}

int CRunCalls(void) {
  void* ctx = GNMI_Get_Init();
  void* sent = GRPCI_SouthMsgInit();
  void* received = GRPCI_SouthMsgInit();
  void* frame = NULL;
  OxaHostStats stats;
  int failed = ctx == NULL || sent == NULL || received == NULL ? __LINE__ : RunGet(ctx);
  OxaHost_Reset();
  failed = failed != 0 ? failed : RunSouth(sent, received, &frame);
  OXA_Free_F(frame, __FILE__, __LINE__);
  GNMI_Get_DeInit(ctx);
  GRPCI_SouthMsgDeInit(sent);
  GRPCI_SouthMsgDeInit(received);
  stats = OxaHost_Stats();
  CHECK(failed != 0 ||
        (stats.mallocCalls == 1 && stats.lastMalloc.ownerId == 42 && stats.freeCalls == 1));
  return failed;
}
