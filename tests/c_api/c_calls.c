/* The public headers used from C99 exactly as a C caller would. */
#include "c_calls.h"

#include <string.h>

#include "gnmi/gnmi_ex.h"
#include "grpci/grpci_ex.h"
#include "platform/oxa_mem.h"

void CRunGet(CGetRun* run) {
  /* GetRequest: path {origin: "oc"}, type STATE. */
  static const unsigned char request[] = {0x12, 0x04, 0x12, 0x02, 'o', 'c', 0x18, 0x02};
  static const unsigned char truncated[] = {0x12, 0x04, 0x12};
  void* out = NULL;
  void* ctx = GNMI_Get_Init();

  memset(run, 0, sizeof *run);
  run->initOk = ctx != NULL;
  if (ctx == NULL) {
    return;
  }
  run->malformedParse = GNMI_GetRequest_Parse(ctx, truncated, (int)sizeof truncated);
  run->parse = GNMI_GetRequest_Parse(ctx, request, (int)sizeof request);
  run->pathCount = GNMI_GetRequest_PathSizeof(ctx);
  run->type = GNMI_GetRequest_GetType(ctx);
  if (run->pathCount > 0) {
    strncpy(run->origin, GNMI_Path_GetOrigin(GNMI_GetRequest_GetPath(ctx, 0)),
            sizeof run->origin - 1);
  }
  GNMI_Notification_SetTimestamp(GNMI_GetResponse_AppendNotification(ctx), 1234);
  run->serialize = GNMI_GetResponse_Serialize(ctx, &out, &run->responseLen);
  if (run->serialize == 1 && run->responseLen <= (int)sizeof run->response) {
    memcpy(run->response, out, (size_t)run->responseLen);
  }
  GNMI_Get_DeInit(ctx);
}

void CRunSouth(CSouthRun* run) {
  void* frame = NULL;
  void* sent = GRPCI_SouthMsgInit();
  void* received = GRPCI_SouthMsgInit();

  memset(run, 0, sizeof *run);
  run->initOk = sent != NULL && received != NULL;
  if (run->initOk) {
    GRPCI_SouthMsgSetRpcId(sent, 7);
    GRPCI_SouthMsgSetMsgType(sent, 1);
    GRPCI_ClientRpcSetPeerPort(GRPCI_SouthMsgSetClientRpc(sent), 50051);
    run->serialize = GRPCI_SouthMsgSerialize(42, sent, &frame, &run->frameLen);
  }
  if (run->serialize == 1 && run->frameLen <= sizeof run->frame) {
    memcpy(run->frame, frame, run->frameLen);
    run->parse = GRPCI_SouthMsgParse(received, run->frame + 4, (int32_t)(run->frameLen - 4));
    run->rpcId = GRPCI_SouthMsgGetRpcId(received);
    run->msgType = GRPCI_SouthMsgGetMsgType(received);
    if (GRPCI_SouthMsgHasClientRpc(received)) {
      run->peerPort = GRPCI_ClientRpcGetPeerPort(GRPCI_SouthMsgGetClientRpc(received));
    }
  }
  if (frame != NULL) {
    OXA_Free_F(frame, __FILE__, __LINE__);
  }
  GRPCI_SouthMsgDeInit(sent);
  GRPCI_SouthMsgDeInit(received);
}
