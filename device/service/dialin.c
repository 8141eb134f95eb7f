/* Dial-in telemetry: a gRPCConfigOper Subscribe streams a SubsReply of its
 * paths every sample interval (milliseconds; 0: the counter tick) until a
 * Cancel names its subscription id. Each reply's message holds an encoded
 * gnmi.SubscribeResponse whose notification carries the leaves. */
#include <common/mgmtmsg_codes.h>
#include <gnmi/gnmi_ex.h>
#include <gnmi/gnmi_path.h>
#include <gnmi/gnmi_stream.h>
#include <grpci/grpci_ex.h>
#include <platform/oxa_mem.h>
#include <stdlib.h>

#include "streams.h"

#define OWNER_ID 0x534du

struct dialin {
  uint32_t id;
  uint64_t request_id;
  int encoding;
  struct path_store patterns; /* the notification's updates are the patterns */
  int count;
  void* ctx; /* the reply's notification, reset for every sample */
  uint64_t interval;
  uint64_t next;
};

void dialin_free(struct dialin* dialin) {
  if (dialin == NULL) return;
  path_store_free(&dialin->patterns);
  GNMI_Subscribe_DeInit(dialin->ctx);
  free(dialin);
}

/* Sends one sample; 1, or 0 when the call has ended. */
static int sample(struct service* svc, struct call* call) {
  struct dialin* dialin = call->dialin;
  void* notification;
  void* bytes = NULL;
  void* reply = GRPCI_SubsReplyInit();
  int len = 0, ok = reply != NULL && GNMI_SubscribeResponse_Reset(dialin->ctx), i;
  uint32_t blockLen = 0;
  size_t l;
  notification = GNMI_SubscribeResponse_GetNotification(dialin->ctx);
  GNMI_Notification_SetTimestamp(notification, (int64_t)realtime_ns());
  for (l = 0; ok && l < svc->tree.count; l++) {
    const struct leaf* leaf = &svc->tree.leaves[l];
    for (i = 0; !leaf->deleted && i < dialin->count; i++) {
      void* pattern =
          GNMI_Update_GetPath(GNMI_Notification_GetUpdate(dialin->patterns.notification, i));
      if (GNMI_Path_Covers(pattern, leaf->path)) {
        ok = notify_leaf(notification, leaf, dialin->encoding);
        break;
      }
    }
  }
  ok = ok && GNMI_SubscribeResponse_Serialize(dialin->ctx, &bytes, &len);
  if (ok) {
    GRPCI_SubsReplySetSubscriptionId(reply, dialin->id);
    GRPCI_SubsReplySetRequestId(reply, dialin->request_id);
    GRPCI_SubsReplySetResponseCode(reply, "ok", 2);
    GRPCI_SubsReplySetMessage(reply, bytes, (uint32_t)len);
    ok = GRPCI_SubsReplySerialize(OWNER_ID, reply, &bytes, &blockLen);
  }
  GRPCI_SubsReplyDeInit(reply);
  if (!ok) {
    call_end(svc, call, MGMTMSG_STATUS_RESOURCE_EXHAUSTED, "out of memory");
    return 0;
  }
  ok = call_reply(svc, call, bytes, blockLen, 0);
  OXA_Free_F(bytes, __FILE__, __LINE__);
  return ok;
}

/* Reads the SubsArgs into the subscription; the status. */
static uint32_t read_args(struct service* svc, struct dialin* dialin, void* args, const void* data,
                          uint32_t len, const char** why) {
  int i;
  if (!GRPCI_SubsArgsParse(args, data, (int32_t)len)) {
    return *why = "SubsArgs not parsed", MGMTMSG_STATUS_INVALID_ARGUMENT;
  }
  dialin->count = GRPCI_SubsArgsPathSizeof(args);
  if (dialin->count == 0) return *why = "no path", MGMTMSG_STATUS_INVALID_ARGUMENT;
  for (i = 0; i < dialin->count; i++) {
    if (path_store_parse(&dialin->patterns, GRPCI_PathGetPath(GRPCI_SubsArgsGetPath(args, i))) ==
        NULL) {
      return *why = "a path that does not read", MGMTMSG_STATUS_INVALID_ARGUMENT;
    }
  }
  dialin->request_id = GRPCI_SubsArgsGetRequestId(args);
  dialin->encoding = (int)GRPCI_SubsArgsGetEncoding(args);
  if (!encoding_served(dialin->encoding)) dialin->encoding = GNMI_ENCODING_PROTO;
  dialin->interval = GRPCI_SubsArgsGetSampleInterval(args) * 1000000u;
  if (dialin->interval == 0) dialin->interval = svc->tick_ns;
  dialin->id = ++svc->next_dialin_id;
  return MGMTMSG_STATUS_OK;
}

void dialin_open(struct service* svc, struct call* call, const void* data, uint32_t len) {
  struct dialin* dialin = calloc(1, sizeof *dialin);
  void* args = GRPCI_SubsArgsInit();
  const char* why = "out of memory";
  uint32_t status = MGMTMSG_STATUS_RESOURCE_EXHAUSTED;
  if (dialin != NULL && args != NULL && path_store_init(&dialin->patterns) &&
      (dialin->ctx = GNMI_Subscribe_Init()) != NULL) {
    status = read_args(svc, dialin, args, data, len, &why);
  }
  GRPCI_SubsArgsDeInit(args);
  call->dialin = dialin;
  if (status != MGMTMSG_STATUS_OK) {
    call_end(svc, call, status, why);
    return;
  }
  dialin->next = monotonic_ns() + dialin->interval;
  sample(svc, call);
}

uint64_t dialin_run(struct service* svc, struct call* call, uint64_t now) {
  struct dialin* dialin = call->dialin;
  uint64_t next;
  if (now < dialin->next) return dialin->next;
  next = dialin->next + dialin->interval > now ? dialin->next + dialin->interval
                                               : now + dialin->interval;
  dialin->next = next;
  return sample(svc, call) ? next : UINT64_MAX;
}

void dialin_cancel(struct service* svc, struct call* call, const void* data, uint32_t len) {
  void* args = GRPCI_CancelArgsInit();
  void* reply = GRPCI_CancelReplyInit();
  void* bytes = NULL;
  uint32_t blockLen = 0, id;
  struct call* target = NULL;
  size_t i;
  if (args == NULL || reply == NULL || !GRPCI_CancelArgsParse(args, data, (int32_t)len)) {
    call_end(svc, call, MGMTMSG_STATUS_INVALID_ARGUMENT, "CancelArgs not parsed");
  } else {
    id = GRPCI_CancelArgsGetSubscriptionId(args);
    for (i = 0; i < svc->call_count && target == NULL; i++) {
      if (svc->calls[i]->dialin != NULL && svc->calls[i]->dialin->id == id) target = svc->calls[i];
    }
    if (target == NULL) {
      call_end(svc, call, MGMTMSG_STATUS_NOT_FOUND, "no such subscription");
    } else {
      call_end(svc, target, MGMTMSG_STATUS_OK, "cancelled");
      GRPCI_CancelReplySetRequestId(reply, GRPCI_CancelArgsGetRequestId(args));
      GRPCI_CancelReplySetResponseCode(reply, "ok", 2);
      if (GRPCI_CancelReplySerialize(OWNER_ID, reply, &bytes, &blockLen)) {
        if (call_reply(svc, call, bytes, blockLen, 1)) call_end(svc, call, MGMTMSG_STATUS_OK, "");
        OXA_Free_F(bytes, __FILE__, __LINE__);
      } else {
        call_end(svc, call, MGMTMSG_STATUS_RESOURCE_EXHAUSTED, "out of memory");
      }
    }
  }
  GRPCI_CancelArgsDeInit(args);
  GRPCI_CancelReplyDeInit(reply);
}
