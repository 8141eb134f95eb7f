/* Uses the installed library as the device's control software does: serves
 * one gNMI Get RPC, whose update path is read from its text, and frames one
 * south IPC message, whose block comes from the platform's OXA_Malloc_F.
 * Exits non-zero on the first unexpected result. */
#include <gnmi/gnmi_ex.h>
#include <gnmi/gnmi_path.h>
#include <grpci/grpci_ex.h>
#include <platform/oxa_mem.h>
#include <stdio.h>
#include <string.h>

static int failures;

static void expect(int ok, const char* what) {
  if (!ok) {
    fprintf(stderr, "consumer: %s\n", what);
    failures++;
  }
}

static void serve_get(void) {
  /* GetRequest: type STATE (field 3), encoding JSON_IETF (field 5). */
  static const unsigned char request[] = {0x18, 0x02, 0x28, 0x04};
  /* A length-delimited field cut short. */
  static const unsigned char malformed[] = {0x12, 0x05, 0x12};
  /* GetResponse: one notification (field 1) with timestamp 1 and prefix /a. */
  static const unsigned char response[] = {0x0a, 0x09, 0x08, 0x01, 0x12, 0x05,
                                           0x1a, 0x03, 0x0a, 0x01, 'a'};
  void* notification;
  void* out = NULL;
  int outLen = -1;
  void* ctx = GNMI_Get_Init();

  expect(ctx != NULL, "GNMI_Get_Init returned NULL");
  if (ctx == NULL) {
    return;
  }
  expect(GNMI_GetRequest_Parse(ctx, malformed, (int)sizeof malformed) == 0,
         "malformed request accepted");
  expect(GNMI_GetRequest_Parse(ctx, request, (int)sizeof request) == 1, "request refused");
  notification = GNMI_GetResponse_AppendNotification(ctx);
  GNMI_Notification_SetTimestamp(notification, 1);
  expect(GNMI_Path_FromString(GNMI_Notification_AddPrefix(notification), "a", 1, NULL) == 1,
         "path text refused");
  expect(GNMI_GetResponse_Serialize(ctx, &out, &outLen) == 1, "Get response not serialized");
  expect(outLen == (int)sizeof response && memcmp(out, response, sizeof response) == 0,
         "Get response bytes differ");
  GNMI_Get_DeInit(ctx);
}

static void frame_south_message(void) {
  /* SouthMsg rpc_id 7 (field 2) behind its length word in host order. */
  static const unsigned char body[] = {0x10, 0x07};
  const uint32_t length = sizeof body;
  unsigned char* frame = NULL;
  uint32_t frameLen = 0;
  void* msg = GRPCI_SouthMsgInit();

  expect(msg != NULL, "GRPCI_SouthMsgInit returned NULL");
  if (msg == NULL) {
    return;
  }
  GRPCI_SouthMsgSetRpcId(msg, 7);
  expect(GRPCI_SouthMsgSerialize(1, msg, (void**)&frame, &frameLen) == 1, "frame not built");
  expect(frameLen == sizeof length + sizeof body && memcmp(frame, &length, sizeof length) == 0 &&
             memcmp(frame + sizeof length, body, sizeof body) == 0,
         "frame bytes differ");
  OXA_Free_F(frame, __FILE__, __LINE__);
  GRPCI_SouthMsgDeInit(msg);
}

int main(void) {
  serve_get();
  frame_south_message();
  if (failures == 0) {
    puts("consumer: one Get RPC served, one south IPC frame built");
  }
  return failures == 0 ? 0 : 1;
}
