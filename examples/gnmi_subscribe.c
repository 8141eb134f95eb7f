/* One gNMI Subscribe exchange: a STREAM subscription's bytes in, read field
 * by field; an update carrying the current value of every subscribed path,
 * then the sync response that closes the initial data, then two more updates
 * of the stream, each built from an empty response after a reset; the
 * replies' bytes out. */
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "common/mgmtmsg_codes.h"
#include "exchanges.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "gnmi/gnmi_stream.h"
#include "gnmi_common.h"
#include "hexdump.h"

/* A SubscribeRequest as a collector sends it: a STREAM subscription list with
 * encoding JSON_IETF and prefix /interfaces/interface[name=eth0]/state on
 * target router1, subscribing under it to counters, sampled every 10 s, and
 * to oper-status, on change. */
static const unsigned char kSubscribeRequest[] = {
    0x0a, 0x6c, /* subscribe */
    0x0a, 0x3b, /* prefix */
    0x1a, 0x0c, 0x0a, 0x0a, 'i',  'n',  't',  'e', 'r', 'f', 'a', 'c',  'e',  's',  0x1a,
    0x19, 0x0a, 0x09, 'i',  'n',  't',  'e',  'r', 'f', 'a', 'c', 'e',  0x12, 0x0c, 0x0a,
    0x04, 'n',  'a',  'm',  'e',  0x12, 0x04, 'e', 't', 'h', '0', 0x1a, 0x07, 0x0a, 0x05,
    's',  't',  'a',  't',  'e',  0x22, 0x07, 'r', 'o', 'u', 't', 'e',  'r',  '1', /* target */
    0x12, 0x16, 0x0a, 0x0c, /* subscription, path */
    0x1a, 0x0a, 0x0a, 0x08, 'c',  'o',  'u',  'n', 't', 'e', 'r', 's',  0x10, 0x02, /* mode SAMPLE
                                                                                     */
    0x18, 0x80, 0xc8, 0xaf, 0xa0, 0x25, /* sample_interval 10000000000 ns */
    0x12, 0x13, 0x0a, 0x0f,             /* subscription, path */
    0x1a, 0x0d, 0x0a, 0x0b, 'o',  'p',  'e',  'r', '-', 's', 't', 'a',  't',  'u',  's',
    0x10, 0x01,  /* mode ON_CHANGE */
    0x40, 0x04}; /* encoding JSON_IETF */

static const char* const kListModes[] = {[GNMI_SUBSCRIPTIONLIST_STREAM] = "STREAM",
                                         [GNMI_SUBSCRIPTIONLIST_ONCE] = "ONCE",
                                         [GNMI_SUBSCRIPTIONLIST_POLL] = "POLL"};
static const char* const kSubscriptionModes[] = {
    [GNMI_SUBSCRIPTIONMODE_TARGET_DEFINED] = "TARGET_DEFINED",
    [GNMI_SUBSCRIPTIONMODE_ON_CHANGE] = "ON_CHANGE",
    [GNMI_SUBSCRIPTIONMODE_SAMPLE] = "SAMPLE"};

/* The interface's leaves under the prefix, with their current values, as the
 * control software keeps them. */
static const struct {
  const char* path;
  const char* json;
} kLeaves[] = {{"/mtu", "1500"},
               {"/counters", "{\"in-octets\":\"81275\",\"out-octets\":\"20311\"}"},
               {"/oper-status", "\"UP\""}};

static const int64_t kTimestamp = INT64_C(1700000000000000000);
/* The stream's period: 10 s, in nanoseconds. */
static const int64_t kPeriod = INT64_C(10000000000);
enum { kStreamMessages = 3 };

static void PrintRequest(void* ctx) {
  void* prefix = GNMI_SubscribeRequest_GetPrefix(ctx);
  char text[256];
  int i;
  printf("gNMI Subscribe request: mode %s, encoding %s, prefix %s on target %s\n",
         GnmiEnumName(kListModes, 3, GNMI_SubscribeRequest_GetSubscriptionMode(ctx)),
         GnmiEnumName(kGnmiEncodings, 5, GNMI_SubscribeRequest_GetEncoding(ctx)),
         prefix != NULL ? GnmiPathText(prefix, text, sizeof text) : "(none)",
         prefix != NULL ? GNMI_Path_GetTarget(prefix) : "(none)");
  for (i = 0; i < GNMI_SubscribeRequest_SubscriptionSize(ctx); i++) {
    printf("    subscription %s, %s, sample interval %" PRIu64 " ns\n",
           GnmiPathText(GNMI_SubscribeRequest_GetPath(ctx, i), text, sizeof text),
           GnmiEnumName(kSubscriptionModes, 3, GNMI_SubscribeRequest_GetSampleMode(ctx, i)),
           GNMI_SubscribeRequest_GetSampleInterval(ctx, i));
  }
}

/* Appends to the notification an update of the first leaf that the
 * subscription's path covers, its path read from the leaf's text. */
static void AppendCoveredLeaf(void* notification, void* subscription) {
  void* update = GNMI_Notification_AppendUpdate(notification);
  void* path = GNMI_Update_SetPath(update);
  char text[256];
  size_t i;
  for (i = 0; i < sizeof kLeaves / sizeof kLeaves[0]; i++) {
    GNMI_Path_FromString(path, kLeaves[i].path, (uint32_t)strlen(kLeaves[i].path), NULL);
    if (GNMI_Path_Covers(subscription, path)) {
      GNMI_TypedValue_SetJsonIetfVal(GNMI_Update_SetVal(update), kLeaves[i].json,
                                     (uint32_t)strlen(kLeaves[i].json));
      printf("    %s = %s\n", GnmiPathText(path, text, sizeof text), kLeaves[i].json);
      return;
    }
  }
}

/* Stream message m (0: the initial data): one notification, under the
 * request's prefix, with an update per subscription. */
static void BuildUpdate(void* ctx, int m) {
  void* prefix = GNMI_SubscribeRequest_GetPrefix(ctx);
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx);
  char text[256];
  int i;
  GNMI_Notification_SetTimestamp(notification, kTimestamp + m * kPeriod);
  if (prefix != NULL) {
    GNMI_Path_CopyFrom(GNMI_Notification_AddPrefix(notification), prefix);
  }
  printf("gNMI Subscribe update at %" PRId64 " under %s:\n",
         GNMI_Notification_GetTimestamp(notification),
         GnmiPathText(GNMI_Notification_GetPrefix(notification), text, sizeof text));
  for (i = 0; i < GNMI_SubscribeRequest_SubscriptionSize(ctx); i++) {
    AppendCoveredLeaf(notification, GNMI_SubscribeRequest_GetPath(ctx, i));
  }
}

int RunGnmiSubscribe(void) {
  void* ctx = GNMI_Subscribe_Init();
  int ok = ctx != NULL &&
           GNMI_SubscribeRequest_Parse(ctx, kSubscribeRequest, (int)sizeof kSubscribeRequest) &&
           GNMI_SubscribeRequest_HasSubscribe(ctx);
  int m;

  PrintBytes("gNMI Subscribe request bytes", kSubscribeRequest, sizeof kSubscribeRequest);
  if (ok) {
    PrintRequest(ctx);
  }
  /* Each message of the stream starts from an empty update response. */
  for (m = 0; ok && m < kStreamMessages; m++) {
    ok = GNMI_SubscribeResponse_Reset(ctx);
    if (ok) {
      BuildUpdate(ctx, m);
      ok = GnmiSendReply("gNMI Subscribe update bytes", GNMI_SubscribeResponse_Serialize, ctx);
    }
    if (ok && m == 0) {
      GNMI_SubscribeRequest_SyncResponse(ctx, 1);
      printf("gNMI Subscribe sync response: the initial data is complete\n");
      ok = GnmiSendReply("gNMI Subscribe sync response bytes", GNMI_SubscribeSyncResponse_Serialize,
                         ctx);
    }
  }
  if (!ok) {
    printf("gNMI Subscribe: no context, or the request could not be parsed or answered\n");
  }
  GNMI_Subscribe_DeInit(ctx);
  return ok ? 0 : 1;
}
