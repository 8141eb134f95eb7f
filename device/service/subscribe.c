/* gNMI Subscribe: ONCE, POLL and STREAM (SAMPLE, ON_CHANGE, TARGET_DEFINED),
 * each stream with a context of its own whose notifications the writer
 * puts straight into bytes. TARGET_DEFINED is on-change:
 * the counters change every tick, so they come every tick. */
#include <common/mgmtmsg_codes.h>
#include <gnmi/gnmi_ex.h>
#include <gnmi/gnmi_path.h>
#include <gnmi/gnmi_wire.h>
#include <stdlib.h>
#include <string.h>

#include "streams.h"

enum due { DUE_NOT, DUE_CHANGED, DUE_ALL };

/* One Subscription of the list. */
struct entry {
  void* pattern; /* prefix joined with the path */
  int mode;
  uint64_t interval;  /* SAMPLE, ns */
  uint64_t heartbeat; /* ns; 0: none */
  int suppress;
  uint64_t next_sample;
  uint64_t next_heartbeat;
  enum due due;
  uint64_t* sent; /* per leaf of the tree: the version last sent, 0: never */
  size_t sent_count;
};

struct stream {
  void* ctx; /* the request stays; the writer makes every message */
  struct path_store patterns;
  int list_mode;
  int encoding;
  struct entry* entries;
  int count;
};

void stream_free(struct stream* stream) {
  int i;
  if (stream == NULL) return;
  for (i = 0; i < stream->count; i++) free(stream->entries[i].sent);
  free(stream->entries);
  path_store_free(&stream->patterns);
  GNMI_Subscribe_DeInit(stream->ctx);
  free(stream);
}

/* Room in the entry's table for every leaf of the tree. */
static int fit_sent(struct entry* entry, size_t count) {
  uint64_t* grown;
  if (entry->sent_count >= count) return 1;
  grown = realloc(entry->sent, count * sizeof *grown);
  if (grown == NULL) return 0;
  memset(grown + entry->sent_count, 0, (count - entry->sent_count) * sizeof *grown);
  entry->sent = grown;
  entry->sent_count = count;
  return 1;
}

/* What the due entries say of leaf l: 1 update, -1 delete, 0 nothing. Marks
 * it sent for each of them. */
static int pick(struct stream* stream, const struct leaf* leaf, size_t l) {
  int i, verdict = 0;
  for (i = 0; i < stream->count; i++) {
    struct entry* entry = &stream->entries[i];
    int wanted;
    if (entry->due == DUE_NOT || !GNMI_Path_Covers(entry->pattern, leaf->path)) continue;
    if (leaf->deleted) {
      wanted = entry->sent[l] != 0 && entry->sent[l] < leaf->version ? -1 : 0;
    } else {
      wanted = entry->due == DUE_ALL || entry->sent[l] < leaf->version;
    }
    if (wanted) entry->sent[l] = leaf->version;
    if (verdict == 0) verdict = wanted;
  }
  return verdict;
}

/* Sends one notification of what the due entries pick (nothing when they
 * pick nothing, unless it is a snapshot), written straight into bytes with
 * the leaves' wire paths, then clears their dues. 1, or 0 when the call has
 * ended. */
static int emit(struct service* svc, struct call* call, int snapshot) {
  struct stream* stream = call->stream;
  struct buffer deletes = {NULL, 0, 0}; /* leaf indices: written after the updates */
  void* bytes = NULL;
  int len = 0, i, picked = 0, ok = GNMI_Writer_Begin(stream->ctx, (int64_t)realtime_ns(), NULL);
  size_t l;
  for (i = 0; ok && i < stream->count; i++) ok = fit_sent(&stream->entries[i], svc->tree.count);
  for (l = 0; ok && l < svc->tree.count; l++) {
    struct leaf* leaf = &svc->tree.leaves[l];
    int verdict = pick(stream, leaf, l);
    if (verdict != 0) ok = tree_wire_path(leaf) != NULL;
    if (ok && verdict > 0) {
      ok = value_write(stream->ctx, leaf->wire, &leaf->value, stream->encoding);
    }
    if (ok && verdict < 0) ok = buffer_append(&deletes, &l, sizeof l);
    picked |= verdict;
  }
  for (l = 0; ok && l < deletes.len / sizeof l; l++) {
    size_t index;
    memcpy(&index, deletes.data + l * sizeof l, sizeof index);
    ok = GNMI_Writer_AddDelete(stream->ctx, svc->tree.leaves[index].wire);
  }
  buffer_free(&deletes);
  for (i = 0; i < stream->count; i++) stream->entries[i].due = DUE_NOT;
  if (ok && !picked && !snapshot) return 1;
  if (!ok || !GNMI_Writer_Finish(stream->ctx, &bytes, &len)) {
    call_end(svc, call, MGMTMSG_STATUS_RESOURCE_EXHAUSTED, "out of memory");
    return 0;
  }
  return !picked || call_reply(svc, call, bytes, (uint32_t)len, 0);
}

static int send_sync(struct service* svc, struct call* call, int isOver) {
  void* bytes = NULL;
  int len = 0;
  if (!GNMI_SubscribeSyncResponse_Serialize(call->stream->ctx, &bytes, &len)) {
    call_end(svc, call, MGMTMSG_STATUS_INTERNAL, "sync response not serialized");
    return 0;
  }
  return call_reply(svc, call, bytes, (uint32_t)len, isOver);
}

/* Every covered leaf, then sync_response. 1, or 0 when the call has ended. */
static int snapshot(struct service* svc, struct call* call, int isOver) {
  int i;
  for (i = 0; i < call->stream->count; i++) call->stream->entries[i].due = DUE_ALL;
  return emit(svc, call, 1) && send_sync(svc, call, isOver);
}

/* Reads the SubscriptionList into the stream; the status. */
static uint32_t read_list(struct service* svc, struct stream* stream, const char** why) {
  void* ctx = stream->ctx;
  void* prefix = GNMI_SubscribeRequest_HasPrefix(ctx) ? GNMI_SubscribeRequest_GetPrefix(ctx) : NULL;
  uint64_t now = monotonic_ns();
  int i, count;
  if (!GNMI_SubscribeRequest_HasSubscribe(ctx)) {
    return *why = "no SubscriptionList first", MGMTMSG_STATUS_INVALID_ARGUMENT;
  }
  stream->list_mode = GNMI_SubscribeRequest_GetSubscriptionMode(ctx);
  stream->encoding = GNMI_SubscribeRequest_GetEncoding(ctx);
  count = GNMI_SubscribeRequest_SubscriptionSize(ctx);
  if (!encoding_served(stream->encoding)) {
    return *why = "encoding not supported", MGMTMSG_STATUS_UNIMPLEMENTED;
  }
  if (stream->list_mode > GNMI_SUBSCRIPTIONLIST_POLL) {
    return *why = "unknown mode", MGMTMSG_STATUS_INVALID_ARGUMENT;
  }
  if (count == 0) return *why = "no subscription", MGMTMSG_STATUS_INVALID_ARGUMENT;
  stream->entries = calloc((size_t)count, sizeof *stream->entries);
  if (stream->entries == NULL || !path_store_init(&stream->patterns)) {
    return *why = "out of memory", MGMTMSG_STATUS_RESOURCE_EXHAUSTED;
  }
  stream->count = count;
  for (i = 0; i < stream->count; i++) {
    struct entry* entry = &stream->entries[i];
    entry->pattern =
        path_store_join(&stream->patterns, prefix, GNMI_SubscribeRequest_GetPath(ctx, i));
    entry->mode = GNMI_SubscribeRequest_GetSampleMode(ctx, i);
    entry->interval = GNMI_SubscribeRequest_GetSampleInterval(ctx, i);
    if (entry->interval == 0) entry->interval = svc->tick_ns;
    entry->heartbeat = GNMI_SubscribeRequest_GetHeartbeatInterval(ctx, i);
    entry->suppress = GNMI_SubscribeRequest_GetSuppressRedundant(ctx, i);
    entry->next_sample = now + entry->interval;
    entry->next_heartbeat = now + entry->heartbeat;
  }
  return MGMTMSG_STATUS_OK;
}

/* Marks every covered leaf as sent in its present state. 1, or 0 on no memory. */
static int mark_present(struct service* svc, struct stream* stream) {
  int i;
  size_t l;
  for (i = 0; i < stream->count; i++) {
    struct entry* entry = &stream->entries[i];
    if (!fit_sent(entry, svc->tree.count)) return 0;
    for (l = 0; l < svc->tree.count; l++) {
      const struct leaf* leaf = &svc->tree.leaves[l];
      if (!leaf->deleted && GNMI_Path_Covers(entry->pattern, leaf->path)) {
        entry->sent[l] = leaf->version;
      }
    }
  }
  return 1;
}

/* The next sample time: a stream that fell behind skips the samples missed. */
static uint64_t later(uint64_t next, uint64_t now, uint64_t interval) {
  return next > now ? next : now + interval;
}

void stream_open(struct service* svc, struct call* call, const void* data, uint32_t len) {
  struct stream* stream = calloc(1, sizeof *stream);
  const char* why = "SubscribeRequest not parsed";
  uint32_t status = MGMTMSG_STATUS_INVALID_ARGUMENT;
  int once, ok;
  if (stream == NULL || (stream->ctx = GNMI_Subscribe_Init()) == NULL) {
    free(stream);
    call_end(svc, call, MGMTMSG_STATUS_RESOURCE_EXHAUSTED, "out of memory");
    return;
  }
  call->stream = stream;
  if (GNMI_SubscribeRequest_Parse(stream->ctx, data, (int)len)) {
    status = read_list(svc, stream, &why);
  }
  if (status != MGMTMSG_STATUS_OK) {
    call_end(svc, call, status, why);
    return;
  }
  GNMI_SubscribeRequest_SyncResponse(stream->ctx, 1);
  once = stream->list_mode == GNMI_SUBSCRIPTIONLIST_ONCE;
  if (!GNMI_SubscribeRequest_GetUpdatesOnly(stream->ctx)) {
    ok = snapshot(svc, call, once);
  } else if (mark_present(svc, stream)) {
    ok = send_sync(svc, call, once); /* nothing of the present state */
  } else {
    call_end(svc, call, MGMTMSG_STATUS_RESOURCE_EXHAUSTED, "out of memory");
    ok = 0;
  }
  if (ok && once) call_end(svc, call, MGMTMSG_STATUS_OK, "");
}

void stream_data(struct service* svc, struct call* call, const void* data, uint32_t len,
                 int isOver) {
  void* ctx = svc->scratch;
  if (isOver && len == 0) return; /* the client's half-close: a stream goes on */
  if (!GNMI_SubscribeRequest_Parse(ctx, data, (int)len)) {
    call_end(svc, call, MGMTMSG_STATUS_INVALID_ARGUMENT, "SubscribeRequest not parsed");
  } else if (GNMI_SubscribeRequest_HasSubscribe(ctx)) {
    call_end(svc, call, MGMTMSG_STATUS_INVALID_ARGUMENT, "a second SubscriptionList on a stream");
  } else if (!GNMI_SubscribeRequest_HasPoll(ctx) ||
             call->stream->list_mode != GNMI_SUBSCRIPTIONLIST_POLL) {
    call_end(svc, call, MGMTMSG_STATUS_INVALID_ARGUMENT, "only a POLL subscription takes a Poll");
  } else {
    snapshot(svc, call, 0);
  }
}

uint64_t stream_run(struct service* svc, struct call* call, uint64_t now) {
  struct stream* stream = call->stream;
  uint64_t next = UINT64_MAX;
  int i, due = 0;
  if (stream->list_mode != GNMI_SUBSCRIPTIONLIST_STREAM) return UINT64_MAX;
  for (i = 0; i < stream->count; i++) {
    struct entry* entry = &stream->entries[i];
    if (entry->mode == GNMI_SUBSCRIPTIONMODE_SAMPLE && now >= entry->next_sample) {
      entry->due = entry->suppress ? DUE_CHANGED : DUE_ALL;
      entry->next_sample = later(entry->next_sample + entry->interval, now, entry->interval);
    }
    if (entry->heartbeat != 0 && now >= entry->next_heartbeat) {
      entry->due = DUE_ALL;
      entry->next_heartbeat = now + entry->heartbeat;
    }
    due |= entry->due != DUE_NOT;
    if (entry->mode == GNMI_SUBSCRIPTIONMODE_SAMPLE && entry->next_sample < next) {
      next = entry->next_sample;
    }
    if (entry->heartbeat != 0 && entry->next_heartbeat < next) next = entry->next_heartbeat;
  }
  return due && !emit(svc, call, 0) ? UINT64_MAX : next;
}

void stream_changed(struct service* svc, struct call* call) {
  struct stream* stream = call->stream;
  int i, due = 0;
  if (stream->list_mode != GNMI_SUBSCRIPTIONLIST_STREAM) return;
  for (i = 0; i < stream->count; i++) {
    struct entry* entry = &stream->entries[i];
    if (entry->mode != GNMI_SUBSCRIPTIONMODE_SAMPLE) entry->due = DUE_CHANGED;
    due |= entry->due != DUE_NOT;
  }
  if (due) emit(svc, call, 0);
}
