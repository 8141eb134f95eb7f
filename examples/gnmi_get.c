/* One gNMI Get RPC: the request's bytes in, read field by field; one
 * notification per requested path, holding the path's data as IETF JSON; the
 * reply's bytes out. */
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "common/mgmtmsg_codes.h"
#include "exchanges.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "gnmi_common.h"
#include "hexdump.h"

/* A GetRequest as a collector sends it: prefix with target router1, the paths
 * /interfaces/interface[name=eth0]/state and /system/config/hostname, type
 * STATE, encoding JSON_IETF. */
static const unsigned char kGetRequest[] = {
    0x0a, 0x09, 0x22, 0x07, 'r',  'o',  'u',  't',  'e',  'r',  '1', /* prefix */
    0x12, 0x32,                                                      /* path */
    0x1a, 0x0c, 0x0a, 0x0a, 'i',  'n',  't',  'e',  'r',  'f',  'a',  'c',  'e',
    's',  0x1a, 0x19, 0x0a, 0x09, 'i',  'n',  't',  'e',  'r',  'f',  'a',  'c',
    'e',  0x12, 0x0c, 0x0a, 0x04, 'n',  'a',  'm',  'e',  0x12, 0x04, 'e',  't',
    'h',  '0',  0x1a, 0x07, 0x0a, 0x05, 's',  't',  'a',  't',  'e',  0x12, 0x20, /* path */
    0x1a, 0x08, 0x0a, 0x06, 's',  'y',  's',  't',  'e',  'm',  0x1a, 0x08, 0x0a,
    0x06, 'c',  'o',  'n',  'f',  'i',  'g',  0x1a, 0x0a, 0x0a, 0x08, 'h',  'o',
    's',  't',  'n',  'a',  'm',  'e',  0x18, 0x02, /* type STATE */
    0x28, 0x04};                                    /* encoding JSON_IETF */

/* The device's data by path, as the control software would look it up. */
static const struct {
  const char* path;
  const char* json;
} kData[] = {
    {"/interfaces/interface[name=eth0]/state", "{\"oper-status\":\"UP\",\"mtu\":1500}"},
    {"/system/config/hostname", "\"router1\""},
};

static const char* const kDataTypes[] = {[GNMI_DATATYPE_ALL] = "ALL",
                                         [GNMI_DATATYPE_CONFIG] = "CONFIG",
                                         [GNMI_DATATYPE_STATE] = "STATE",
                                         [GNMI_DATATYPE_OPERATIONAL] = "OPERATIONAL"};

/* When the reply is made: 2023-11-14T22:13:20Z, in nanoseconds. */
static const int64_t kTimestamp = INT64_C(1700000000000000000);

static const char* DataAt(const char* path) {
  size_t i;
  for (i = 0; i < sizeof kData / sizeof kData[0]; i++) {
    if (strcmp(kData[i].path, path) == 0) {
      return kData[i].json;
    }
  }
  return "{}";
}

static void PrintRequest(void* ctx) {
  void* prefix = GNMI_GetRequest_GetPrefix(ctx);
  char text[256];
  int i;
  printf("gNMI Get request: target %s, type %s, encoding %s\n",
         prefix != NULL ? GNMI_Path_GetTarget(prefix) : "(none)",
         GnmiEnumName(kDataTypes, 4, GNMI_GetRequest_GetType(ctx)),
         GnmiEnumName(kGnmiEncodings, 5, GNMI_GetRequest_GetEncoding(ctx)));
  for (i = 0; i < GNMI_GetRequest_PathSizeof(ctx); i++) {
    printf("    path %s\n", GnmiPathText(GNMI_GetRequest_GetPath(ctx, i), text, sizeof text));
  }
}

/* One notification per requested path, under the request's prefix. */
static void Answer(void* ctx) {
  void* prefix = GNMI_GetRequest_GetPrefix(ctx);
  char text[256];
  int i;
  printf("gNMI Get reply:\n");
  for (i = 0; i < GNMI_GetRequest_PathSizeof(ctx); i++) {
    void* path = GNMI_GetRequest_GetPath(ctx, i);
    void* notification = GNMI_GetResponse_AppendNotification(ctx);
    const char* json = DataAt(GnmiPathText(path, text, sizeof text));
    GNMI_Notification_SetTimestamp(notification, kTimestamp);
    if (prefix != NULL) {
      GNMI_Path_CopyFrom(GNMI_Notification_AddPrefix(notification), prefix);
    }
    GnmiAppendJsonUpdate(notification, path, json);
    printf("    notification at %" PRId64 ": %s = %s\n",
           GNMI_Notification_GetTimestamp(notification),
           GnmiPathText(GNMI_Update_GetPath(GNMI_Notification_GetUpdate(notification, 0)), text,
                        sizeof text),
           json);
  }
}

int RunGnmiGet(void) {
  void* ctx = GNMI_Get_Init();
  int ok = ctx != NULL && GNMI_GetRequest_Parse(ctx, kGetRequest, (int)sizeof kGetRequest);

  PrintBytes("gNMI Get request bytes", kGetRequest, sizeof kGetRequest);
  if (ok) {
    PrintRequest(ctx);
    Answer(ctx);
    ok = GnmiSendReply("gNMI Get reply bytes", GNMI_GetResponse_Serialize, ctx);
  }
  if (!ok) {
    printf("gNMI Get: no context, or the request could not be parsed or answered\n");
  }
  GNMI_Get_DeInit(ctx);
  return ok ? 0 : 1;
}
