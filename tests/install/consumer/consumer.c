// Uses the installed library as the device's control software does: serves
// one gNMI Get RPC, its reply reset once and its prefix read from text, and
// frames one south IPC message, whose block comes from the platform's
// OXA_Malloc_F; reads RPC data with its length. Exits non-zero on any unexpected result.
#include <common/mgmtmsg_codes.h>
#include <gnmi/gnmi_ex.h>
#include <gnmi/gnmi_path.h>
#include <gnmi/gnmi_stream.h>
#include <gnmi/gnmi_value.h>
#include <gnmi/gnmi_wire.h>
#include <grpci/grpci_bytes.h>
#include <grpci/grpci_ex.h>
#include <platform/oxa_mem.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  // GetRequest type STATE, encoding JSON_IETF; a length-delimited field cut
  // short; GetResponse with an empty notification, then one of timestamp 1
  // and prefix /a.
  static const unsigned char request[] = {0x18, 0x02, 0x28, 0x04}, malformed[] = {0x12, 0x05, 0x12};
  static const unsigned char response[] = {0x0a, 0x00, 0x0a, 0x09, 0x08, 0x01, 0x12,
                                           0x05, 0x1a, 0x03, 0x0a, 0x01, 'a'};
  // SouthMsg rpc_id 7, behind its length word in host byte order.
  static const unsigned char body[] = {0x10, 0x07};
  const uint32_t length = sizeof body;
  void* ctx = GNMI_Get_Init();
  void* msg = GRPCI_SouthMsgInit();
  void* data = GRPCI_RpcDataInit();
  uint32_t dataLen = 0;
  void* notification = NULL;
  void* out = NULL;
  int outLen = -1;
  unsigned char* frame = NULL;
  uint32_t frameLen = 0;
  int ok = ctx != NULL && msg != NULL && data != NULL &&
           GNMI_GetRequest_Parse(ctx, malformed, 3) == 0 &&
           GNMI_GetRequest_Parse(ctx, request, 4) == 1;
  if (ok) {
    GNMI_Notification_SetTimestamp(GNMI_GetResponse_AppendNotification(ctx), 9);
    ok = GNMI_GetResponse_Reset(ctx) == 1;
    GNMI_GetResponse_AppendNotification(ctx);
    notification = GNMI_GetResponse_AppendNotification(ctx);
    GNMI_Notification_SetTimestamp(notification, 1);
    ok = ok && GNMI_Path_FromString(GNMI_Notification_AddPrefix(notification), "a", 1, NULL) == 1;
    GRPCI_SouthMsgSetRpcId(msg, 7);
    GRPCI_SouthMsgSetReqType(msg, GRPCI_REQTYPE_INVALID);
    GRPCI_RpcDataSetData(data, "\0x", 2); /* RPC data, NUL and all */
    ok = ok && GRPCI_RpcDataReadData(data, &dataLen)[1] == 'x' && dataLen == 2;
    ok = ok && GNMI_GetResponse_Serialize(ctx, &out, &outLen) == 1 &&
         outLen == (int)sizeof response && memcmp(out, response, sizeof response) == 0 &&
         GRPCI_SouthMsgSerialize(1, msg, (void**)&frame, &frameLen) == 1 && frameLen == 6 &&
         memcmp(frame, &length, 4) == 0 && memcmp(frame + 4, body, 2) == 0;
    OXA_Free_F(frame, __FILE__, __LINE__);
  }
  GNMI_Get_DeInit(ctx);
  GRPCI_SouthMsgDeInit(msg);
  GRPCI_RpcDataDeInit(data);
  puts(ok ? "consumer: one Get RPC served, one south IPC frame built" : "consumer: failed");
  return ok ? 0 : 1;
}
