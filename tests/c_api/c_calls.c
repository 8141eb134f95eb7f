// The public headers used from C99 exactly as a C caller would, driven by
// api_test.cc through CRunCalls.
#include <string.h>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "gnmi/gnmi_stream.h"
#include "grpci/grpci_ex.h"
#include "oxa_mem_host.h"

#define CHECK(condition) \
  if (!(condition)) return __LINE__

// Answers 0 when each check held, else the line of the first that failed
// (leaving what it made). A Get exchange: the request {path {origin: "oc"}
// type: STATE}, the response {notification {} notification {timestamp: 1234}}. Then a south
// frame for owner 42 of a result description of 0x123e bytes: its length
// word, 0x1241, has two distinct non-zero bytes, so that it shows the byte
// order: the host's, most significant byte first on the device.
int CRunCalls(void) {
  static const unsigned char request[] = {0x12, 0x04, 0x12, 0x02, 'o', 'c', 0x18, 0x02};
  static const unsigned char response[] = {0x0a, 0x00, 0x0a, 0x03, 0x08, 0xd2, 0x09};
  static const char desc[0x123e];
  const uint32_t length = 0x1241;
  void* ctx = GNMI_Get_Init();
  void* msg = GRPCI_SouthMsgInit();
  void* out = NULL;
  int outLen = 0;
  uint32_t frameLen = 0;
  CHECK(ctx != NULL && msg != NULL && GNMI_GetRequest_Parse(ctx, request, sizeof request) == 1 &&
        strcmp(GNMI_Path_GetOrigin(GNMI_GetRequest_GetPath(ctx, 0)), "oc") == 0);
  GNMI_GetResponse_AppendNotification(ctx);
  GNMI_Notification_SetTimestamp(GNMI_GetResponse_AppendNotification(ctx), 1234);
  CHECK(GNMI_GetResponse_Serialize(ctx, &out, &outLen) == 1 && outLen == (int)sizeof response &&
        memcmp(out, response, sizeof response) == 0);
  GNMI_Get_DeInit(ctx);
  GRPCI_SouthMsgSetResultDesc(msg, desc, sizeof desc);
  CHECK(GRPCI_SouthMsgSerialize(42, msg, &out, &frameLen) == 1 && frameLen == 4 + length &&
        memcmp(out, &length, 4) == 0 && OxaHost_Stats().lastMalloc.ownerId == 42);
  OXA_Free_F(out, __FILE__, __LINE__);
  GRPCI_SouthMsgDeInit(msg);
  return 0;
}
