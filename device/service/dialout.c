#include "dialout.h"

#include <common/mgmtmsg_codes.h>
#include <gnmi/gnmi_ex.h>
#include <grpci/grpci_ex.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "publish.h"
#include "service.h"

enum state { WAITING, OPENING, OPEN };

#define WINDOW 4                     /* messages at the front end per call */
#define FIRST_BACKOFF_NS 1000000000u /* 1 s */
#define LAST_BACKOFF_NS 30000000000u /* 30 s */
#define MAX_DESTINATIONS 64

static const char* const kMethod[] = {"/quorix_dialout.gRPCDataservice/dataPublish",
                                      "/dialout.Dialout/Dialout"};

static const char kDefaultPaths[] = "/interfaces/interface/state/counters";

/* Splits text at the commas that are not inside a key's brackets; calls
 * take(part) for each; 0 when take does. */
static int split(const char* text, int (*take)(struct dialout*, char*), struct dialout* dialout) {
  char* copy = malloc(strlen(text) + 1);
  char *part, *p;
  int depth = 0, ok = copy != NULL;
  if (!ok) return 0;
  strcpy(copy, text);
  for (part = p = copy; ok; p++) {
    if (*p == '[') depth++;
    if (*p == ']' && depth > 0) depth--;
    if ((*p == ',' && depth == 0) || *p == '\0') {
      int last = *p == '\0';
      *p = '\0';
      if (*part != '\0') ok = take(dialout, part);
      if (last) break;
      part = p + 1;
    }
  }
  free(copy);
  return ok;
}

static int add_destination(struct dialout* dialout, char* text) {
  char* colon = strrchr(text, ':');
  char* end = NULL;
  unsigned long port = colon != NULL ? strtoul(colon + 1, &end, 10) : 0;
  struct destination* dest;
  size_t hostLen;
  if (colon == NULL || colon == text || *end != '\0' || port == 0 || port > 65535 ||
      dialout->count == MAX_DESTINATIONS) {
    fprintf(stderr, "service: dial-out destination %s is no HOST:PORT\n", text);
    return 0;
  }
  if (text[0] == '[' && colon[-1] == ']') { /* [v6 address]:port */
    text++;
    colon--;
  }
  hostLen = (size_t)(colon - text);
  dest = &dialout->dests[dialout->count];
  memset(dest, 0, sizeof *dest);
  dest->host = malloc(hostLen + 1);
  if (dest->host == NULL) return 0;
  memcpy(dest->host, text, hostLen);
  dest->host[hostLen] = '\0';
  dest->port = (uint32_t)port;
  dest->backoff_ns = FIRST_BACKOFF_NS;
  dest->next_req_id = 1;
  dialout->count++;
  return 1;
}

static int add_pattern(struct dialout* dialout, char* text) {
  void** grown = realloc(dialout->pattern, (dialout->pattern_count + 1) * sizeof *grown);
  if (grown == NULL) return 0;
  dialout->pattern = grown;
  grown[dialout->pattern_count] = path_store_parse(&dialout->patterns, text);
  if (grown[dialout->pattern_count] == NULL) {
    fprintf(stderr, "service: dial-out path %s is no path\n", text);
    return 0;
  }
  dialout->pattern_count++;
  return 1;
}

int dialout_init(struct dialout* dialout, const struct dialout_options* options) {
  memset(dialout, 0, sizeof *dialout);
  if (options->destinations == NULL || *options->destinations == '\0') return 1;
  if (strcmp(options->service, "Dialout") != 0 && strcmp(options->service, "dataPublish") != 0) {
    fprintf(stderr, "service: dial-out service %s is neither dataPublish nor Dialout\n",
            options->service);
    return 0;
  }
  dialout->any_packed = strcmp(options->service, "Dialout") == 0;
  dialout->tls = options->tls;
  dialout->interval_ns = (uint64_t)options->interval_ms * 1000000u;
  dialout->random = (uint32_t)monotonic_ns() | 1u;
  dialout->dests = calloc(MAX_DESTINATIONS, sizeof *dialout->dests);
  return dialout->dests != NULL && (dialout->ctx = GNMI_Subscribe_Init()) != NULL &&
         path_store_init(&dialout->patterns) &&
         split(options->destinations, add_destination, dialout) &&
         split(options->paths != NULL ? options->paths : kDefaultPaths, add_pattern, dialout);
}

static void drop_oldest(struct destination* dest) {
  free(dest->queue[dest->head].data);
  dest->head = (dest->head + 1) % DIALOUT_QUEUE;
  dest->count--;
}

void dialout_free(struct dialout* dialout) {
  size_t i;
  for (i = 0; i < dialout->count; i++) {
    while (dialout->dests[i].count > 0) drop_oldest(&dialout->dests[i]);
    free(dialout->dests[i].host);
  }
  free(dialout->dests);
  free(dialout->pattern);
  if (dialout->ctx != NULL) path_store_free(&dialout->patterns);
  GNMI_Subscribe_DeInit(dialout->ctx);
}

/* The backoff with up to a fifth of it added or taken away (xorshift). */
static uint64_t jittered(struct dialout* dialout, uint64_t backoff) {
  uint32_t r = dialout->random;
  r ^= r << 13;
  r ^= r >> 17;
  r ^= r << 5;
  dialout->random = r;
  return backoff - backoff / 5 + backoff / 5 * 2 / 1000 * (r % 1000);
}

/* The call is gone: the samples it had not written are dropped, and the
 * destination waits for its next attempt. */
static void lose(struct dialout* dialout, struct destination* dest, uint64_t now, uint32_t result,
                 const char* why) {
  uint64_t wait = jittered(dialout, dest->backoff_ns);
  dest->dropped += dest->in_flight;
  dest->in_flight = 0;
  dest->state = WAITING;
  dest->retry_at = now + wait;
  dest->backoff_ns =
      dest->backoff_ns * 2 < LAST_BACKOFF_NS ? dest->backoff_ns * 2 : LAST_BACKOFF_NS;
  fprintf(stderr, "service: dial-out %s:%u: %s (status %u); next attempt in %llu ms\n", dest->host,
          dest->port, why, result, (unsigned long long)(wait / 1000000u));
}

/* A sample for every destination; past its queue's bound the oldest goes. */
static void take_sample(struct service* svc) {
  struct dialout* dialout = &svc->dialout;
  struct buffer notification = {NULL, 0, 0};
  size_t i;
  if (!publish_sample(dialout->ctx, &svc->tree, dialout->pattern, dialout->pattern_count,
                      &notification)) {
    fprintf(stderr, "service: dial-out: no memory for a sample\n");
    buffer_free(&notification);
    return;
  }
  for (i = 0; i < dialout->count; i++) {
    struct destination* dest = &dialout->dests[i];
    struct sample* slot;
    if (dest->count == DIALOUT_QUEUE) {
      drop_oldest(dest);
      dest->dropped++;
    }
    slot = &dest->queue[(dest->head + dest->count) % DIALOUT_QUEUE];
    slot->req_id = dest->next_req_id++;
    slot->len = notification.len;
    slot->data = malloc(notification.len ? notification.len : 1);
    if (slot->data == NULL) {
      dest->dropped++;
      continue;
    }
    memcpy(slot->data, notification.data, notification.len);
    dest->count++;
  }
  buffer_free(&notification);
}

static void* client_message(struct destination* dest, size_t index, int32_t op, int32_t type) {
  return south_message((uint32_t)index + 1, dest->rpc_id, ++dest->trans_num, GRPCI_REQTYPE_REQUEST,
                       op, type);
}

/* Asks the front end for the destination's call. */
static void open_call(struct service* svc, struct destination* dest, size_t index) {
  struct dialout* dialout = &svc->dialout;
  const char* method = kMethod[dialout->any_packed];
  void* msg;
  dest->rpc_id = ++dialout->last_rpc_id;
  dest->trans_num = 0;
  msg = client_message(dest, index, GRPCI_OPTYPE_CREATE, GRPCI_MSGTYPE_CLIENT_RPC);
  if (msg != NULL) {
    void* rpc = GRPCI_SouthMsgSetClientRpc(msg);
    GRPCI_ClientRpcSetPeerAddr(rpc, dest->host, (uint32_t)strlen(dest->host));
    GRPCI_ClientRpcSetPeerPort(rpc, dest->port);
    GRPCI_ClientRpcSetNoTls(rpc, !dialout->tls);
    GRPCI_ClientRpcSetRpcName(rpc, method, (uint32_t)strlen(method));
  }
  if (south_send(svc, msg)) {
    dest->state = OPENING;
  } else {
    lose(dialout, dest, monotonic_ns(), MGMTMSG_STATUS_RESOURCE_EXHAUSTED, "no memory to open");
  }
}

/* Sends the oldest sample; 1, or 0 when memory runs out (it stays queued). */
static int send_sample(struct service* svc, struct destination* dest, size_t index) {
  struct sample* sample = &dest->queue[dest->head];
  struct buffer message = {NULL, 0, 0};
  char errors[64] = "";
  void* msg = NULL;
  int ok;
  if (dest->dropped > 0) {
    sprintf(errors, "%llu samples dropped", (unsigned long long)dest->dropped);
    fprintf(stderr, "service: dial-out %s:%u: %s before ReqId %lld\n", dest->host, dest->port,
            errors, (long long)sample->req_id);
  }
  ok = publish_message(svc->dialout.any_packed, sample->req_id, sample->data, sample->len, errors,
                       &message) &&
       (msg = client_message(dest, index, GRPCI_OPTYPE_MODIFY, GRPCI_MSGTYPE_RPC_DATA)) != NULL;
  if (ok) {
    GRPCI_RpcDataSetData(GRPCI_SouthMsgSetRpcData(msg), (const char*)message.data,
                         (uint32_t)message.len);
  }
  ok = ok && south_send(svc, msg);
  buffer_free(&message);
  if (!ok) return 0;
  dest->dropped = 0;
  dest->in_flight++;
  drop_oldest(dest);
  return 1;
}

/* Whether a sample is wanted now in the as-fast-as-taken mode: a call has
 * room and nothing waiting. */
static int room_for_sample(const struct dialout* dialout) {
  size_t i;
  for (i = 0; i < dialout->count; i++) {
    const struct destination* dest = &dialout->dests[i];
    if (dest->state == OPEN && dest->in_flight < WINDOW && dest->count == 0) return 1;
  }
  return 0;
}

uint64_t dialout_run(struct service* svc, uint64_t now) {
  struct dialout* dialout = &svc->dialout;
  uint64_t next = UINT64_MAX;
  size_t i;
  if (dialout->count == 0) return next;
  if (dialout->interval_ns == 0 ? room_for_sample(dialout) : now >= dialout->next_sample) {
    take_sample(svc);
    dialout->next_sample = dialout->next_sample + dialout->interval_ns > now
                               ? dialout->next_sample + dialout->interval_ns
                               : now + dialout->interval_ns;
  }
  if (dialout->interval_ns != 0) next = dialout->next_sample;
  for (i = 0; i < dialout->count && svc->fd >= 0; i++) {
    struct destination* dest = &dialout->dests[i];
    if (dest->state == WAITING && now >= dest->retry_at) open_call(svc, dest, i);
    while (dest->state == OPEN && dest->in_flight < WINDOW && dest->count > 0 &&
           send_sample(svc, dest, i)) {
    }
    if (dest->state == WAITING && dest->retry_at < next) next = dest->retry_at;
  }
  return next;
}

static struct destination* find(struct dialout* dialout, uint32_t rpcId, size_t* index) {
  for (*index = 0; *index < dialout->count; (*index)++) {
    struct destination* dest = &dialout->dests[*index];
    if (dest->state != WAITING && dest->rpc_id == rpcId) return dest;
  }
  return NULL;
}

void dialout_receive(struct service* svc, void* msg) {
  struct dialout* dialout = &svc->dialout;
  int32_t op = GRPCI_SouthMsgGetOpType(msg), type = GRPCI_SouthMsgGetMsgType(msg);
  uint32_t result = GRPCI_SouthMsgGetResult(msg);
  size_t index;
  struct destination* dest = find(dialout, GRPCI_SouthMsgGetRpcId(msg), &index);
  if (dest == NULL || (type == GRPCI_MSGTYPE_RPC_DATA && op == GRPCI_OPTYPE_NOTIFY)) {
    /* A call already closed or lost (what crossed its end is dropped), or the
     * collector's own messages, which the publish streams need none of. */
  } else if (type == GRPCI_MSGTYPE_CLIENT_RPC && op == GRPCI_OPTYPE_CREATE &&
             dest->state == OPENING && result == MGMTMSG_STATUS_OK) {
    dest->state = OPEN;
    dest->backoff_ns = FIRST_BACKOFF_NS;
    fprintf(stderr, "service: dial-out %s:%u: publishing\n", dest->host, dest->port);
  } else if (type == GRPCI_MSGTYPE_CLIENT_RPC &&
             (op == GRPCI_OPTYPE_CREATE || op == GRPCI_OPTYPE_DELETE)) {
    lose(dialout, dest, monotonic_ns(), result, GRPCI_SouthMsgGetResultDesc(msg));
  } else if (type == GRPCI_MSGTYPE_RPC_DATA && op == GRPCI_OPTYPE_MODIFY) {
    if (dest->in_flight > 0) dest->in_flight--; /* written to the collector */
  } else {
    fprintf(stderr, "service: dial-out: a response of an unknown kind, dropped\n");
  }
}

void dialout_close(struct service* svc) {
  struct dialout* dialout = &svc->dialout;
  size_t i;
  for (i = 0; i < dialout->count; i++) {
    struct destination* dest = &dialout->dests[i];
    if (dest->state != WAITING) {
      south_send(svc, client_message(dest, i, GRPCI_OPTYPE_DELETE, GRPCI_MSGTYPE_CLIENT_RPC));
      dest->state = WAITING;
    }
  }
}

void dialout_lost_channel(struct dialout* dialout) {
  size_t i;
  for (i = 0; i < dialout->count; i++) {
    struct destination* dest = &dialout->dests[i];
    if (dest->state != WAITING) {
      dest->dropped += dest->in_flight;
      dest->in_flight = 0;
      dest->state = WAITING;
      dest->retry_at = 0; /* opened as soon as a channel is back */
    }
  }
}
