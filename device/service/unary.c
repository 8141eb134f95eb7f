/* Capabilities, Get and Set: one request, one reply, the end. */
#include <common/mgmtmsg_codes.h>
#include <gnmi/gnmi_ex.h>
#include <gnmi/gnmi_path.h>
#include <stdlib.h>
#include <string.h>

#include "json_tree.h"
#include "service.h"

typedef int (*serialize_fn)(void* ctx, void** out, int* outLen);

/* Sends the context's response as the call's one reply and ends it OK. */
static void reply_and_end(struct service* svc, struct call* call, void* ctx,
                          serialize_fn serialize) {
  void* bytes = NULL;
  int len = 0;
  if (!serialize(ctx, &bytes, &len)) {
    call_end(svc, call, MGMTMSG_STATUS_INTERNAL, "reply not serialized");
  } else if (call_reply(svc, call, bytes, (uint32_t)len, 1)) {
    call_end(svc, call, MGMTMSG_STATUS_OK, "");
  }
}

static void add_model(void* ctx, const char* name, const char* version) {
  void* model = GNMI_CapabilityResponse_AppendSupportedModels(ctx);
  GNMI_ModelData_SetName(model, name, (uint32_t)strlen(name));
  GNMI_ModelData_SetOrganization(model, "OpenConfig working group", 24);
  GNMI_ModelData_SetVersion(model, version, (uint32_t)strlen(version));
}

void answer_capabilities(struct service* svc, struct call* call, const void* data, uint32_t len) {
  void* ctx = GNMI_Capability_Init();
  if (ctx != NULL && !GNMI_CapabilityRequest_Parse(ctx, data, (int)len)) {
    call_end(svc, call, MGMTMSG_STATUS_INVALID_ARGUMENT, "CapabilityRequest not parsed");
    GNMI_Capability_DeInit(ctx);
    return;
  }
  if (ctx == NULL) {
    call_end(svc, call, MGMTMSG_STATUS_RESOURCE_EXHAUSTED, "out of memory");
    return;
  }
  GNMI_CapabilityResponse_SetGnmiVersion(ctx, "0.7.0", 5);
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx, GNMI_ENCODING_JSON);
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx, GNMI_ENCODING_JSON_IETF);
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx, GNMI_ENCODING_PROTO);
  add_model(ctx, "openconfig-interfaces", "2.4.3");
  add_model(ctx, "openconfig-system", "0.13.0");
  reply_and_end(svc, call, ctx, GNMI_CapabilityResponse_Serialize);
  GNMI_Capability_DeInit(ctx);
}

/* Whether a leaf is of the Get's DataType: config leaves have a `config`
 * element, all others are state. */
static int of_type(const struct leaf* leaf, int type) {
  return type == GNMI_DATATYPE_ALL || (type == GNMI_DATATYPE_CONFIG) == (leaf->config != 0);
}

int encoding_served(int encoding) {
  return encoding == GNMI_ENCODING_JSON || encoding == GNMI_ENCODING_JSON_IETF ||
         encoding == GNMI_ENCODING_PROTO;
}

int notify_leaf(void* notification, const struct leaf* leaf, int encoding) {
  void* update = GNMI_Notification_AppendUpdate(notification);
  GNMI_Path_CopyFrom(GNMI_Update_SetPath(update), leaf->path);
  return value_to_typed(GNMI_Update_SetVal(update), &leaf->value, encoding);
}

/* Adds the leaf to the notification when it is live and of the DataType: 1
 * added, 0 not, -1 out of memory. */
static int add_leaf(void* notification, const struct leaf* leaf, int type, int encoding) {
  if (leaf->deleted || !of_type(leaf, type)) return 0;
  return notify_leaf(notification, leaf, encoding) ? 1 : -1;
}

/* The leaves under a container's path as one update of a JSON object. The
 * status. */
static uint32_t get_subtree(struct service* svc, void* notification, void* pattern, int type,
                            int encoding) {
  const struct leaf** found = malloc((svc->tree.count + 1) * sizeof(const struct leaf*));
  struct buffer json = {NULL, 0, 0};
  size_t l, count = 0;
  int ok = found != NULL;
  for (l = 0; ok && l < svc->tree.count; l++) {
    const struct leaf* leaf = &svc->tree.leaves[l];
    if (!leaf->deleted && of_type(leaf, type) && GNMI_Path_Covers(pattern, leaf->path)) {
      found[count++] = leaf;
    }
  }
  ok = ok && (count == 0 || json_subtree(found, count, GNMI_Path_PathElemSizeof(pattern),
                                         encoding == GNMI_ENCODING_JSON_IETF, &json));
  if (ok && count > 0) {
    void* update = GNMI_Notification_AppendUpdate(notification);
    void* value = GNMI_Update_SetVal(update);
    GNMI_Path_CopyFrom(GNMI_Update_SetPath(update), pattern);
    if (encoding == GNMI_ENCODING_JSON_IETF) {
      GNMI_TypedValue_SetJsonIetfVal(value, (const char*)json.data, (uint32_t)json.len);
    } else {
      GNMI_TypedValue_SetJsonVal(value, (const char*)json.data, (uint32_t)json.len);
    }
  }
  free((void*)found);
  buffer_free(&json);
  return !ok         ? MGMTMSG_STATUS_RESOURCE_EXHAUSTED
         : count > 0 ? MGMTMSG_STATUS_OK
                     : MGMTMSG_STATUS_NOT_FOUND;
}

/* The leaves at or under a path, an update each. The status. */
static uint32_t get_leaves(struct service* svc, void* notification, void* pattern, int type,
                           int encoding) {
  size_t l;
  int found = 0, added = 0;
  for (l = 0; added >= 0 && l < svc->tree.count; l++) {
    found |= added;
    added = GNMI_Path_Covers(pattern, svc->tree.leaves[l].path)
                ? add_leaf(notification, &svc->tree.leaves[l], type, encoding)
                : 0;
  }
  return added < 0         ? MGMTMSG_STATUS_RESOURCE_EXHAUSTED
         : (found | added) ? MGMTMSG_STATUS_OK
                           : MGMTMSG_STATUS_NOT_FOUND;
}

/* Fills the response: a notification per path. A leaf's own path gives the
 * leaf (looked up by its text: nothing lies under a leaf); in JSON, a
 * container's path without wildcards gives one update of the subtree's
 * object; any other path, an update per leaf at or under it. The status. */
static uint32_t get_into(struct service* svc, void* ctx, struct path_store* scratch,
                         const char** why) {
  void* prefix = GNMI_GetRequest_HasPrefix(ctx) ? GNMI_GetRequest_GetPrefix(ctx) : NULL;
  int encoding = GNMI_GetRequest_GetEncoding(ctx), type = GNMI_GetRequest_GetType(ctx);
  uint64_t now = realtime_ns();
  int i, count = GNMI_GetRequest_PathSizeof(ctx);
  uint32_t status = MGMTMSG_STATUS_OK;
  if (!encoding_served(encoding)) {
    return *why = "encoding not supported", MGMTMSG_STATUS_UNIMPLEMENTED;
  }
  if (count == 0) return *why = "no path", MGMTMSG_STATUS_INVALID_ARGUMENT;
  for (i = 0; i < count && status == MGMTMSG_STATUS_OK; i++) {
    void* pattern = path_store_join(scratch, prefix, GNMI_GetRequest_GetPath(ctx, i));
    void* notification = GNMI_GetResponse_AppendNotification(ctx);
    char* text = path_text(pattern);
    struct leaf* exact = text != NULL ? tree_find(&svc->tree, text) : NULL;
    int wildcard = text == NULL || strchr(text, '*') != NULL || strstr(text, "...") != NULL;
    free(text);
    GNMI_Notification_SetTimestamp(notification, (int64_t)now);
    if (exact != NULL) {
      int added = add_leaf(notification, exact, type, encoding);
      status = added < 0   ? MGMTMSG_STATUS_RESOURCE_EXHAUSTED
               : added > 0 ? MGMTMSG_STATUS_OK
                           : MGMTMSG_STATUS_NOT_FOUND;
    } else if (encoding != GNMI_ENCODING_PROTO && !wildcard) {
      status = get_subtree(svc, notification, pattern, type, encoding);
    } else {
      status = get_leaves(svc, notification, pattern, type, encoding);
    }
  }
  *why = status == MGMTMSG_STATUS_NOT_FOUND ? "no data at a path" : "out of memory";
  return status;
}

void answer_get(struct service* svc, struct call* call, const void* data, uint32_t len) {
  void* ctx = GNMI_Get_Init();
  struct path_store scratch = {NULL, NULL};
  const char* why = "GetRequest not parsed";
  uint32_t status = MGMTMSG_STATUS_INVALID_ARGUMENT;
  if (ctx != NULL && GNMI_GetRequest_Parse(ctx, data, (int)len) && path_store_init(&scratch)) {
    status = get_into(svc, ctx, &scratch, &why);
  }
  if (status == MGMTMSG_STATUS_OK) {
    reply_and_end(svc, call, ctx, GNMI_GetResponse_Serialize);
  } else {
    call_end(svc, call, status, why);
  }
  path_store_free(&scratch);
  GNMI_Get_DeInit(ctx);
}

/* One replace or update of a SetRequest, checked before anything changes. */
struct change {
  void* path; /* prefix joined */
  struct value value;
};

/* Reads and checks replace or update `index` into change; the status. */
static uint32_t check_change(struct service* svc, void* update, void* prefix,
                             struct path_store* scratch, struct change* change, const char** why) {
  char* text;
  struct leaf* leaf;
  int ok;
  change->path = path_store_join(scratch, prefix, GNMI_Update_GetPath(update));
  if (!value_from_typed(GNMI_Update_GetVal(update), &change->value)) {
    return *why = "value not a scalar of a known type", MGMTMSG_STATUS_INVALID_ARGUMENT;
  }
  text = path_text(change->path);
  if (text == NULL) return *why = "out of memory", MGMTMSG_STATUS_RESOURCE_EXHAUSTED;
  leaf = tree_find(&svc->tree, text);
  ok = strcmp(text, "/") != 0 && strchr(text, '*') == NULL && strstr(text, "...") == NULL &&
       (leaf == NULL || leaf->deleted || value_convert(&change->value, leaf->value.kind));
  free(text);
  return ok ? MGMTMSG_STATUS_OK
            : (*why = "path or value does not fit a leaf", MGMTMSG_STATUS_INVALID_ARGUMENT);
}

static void add_result(void* ctx, void* path, int op) {
  void* result = GNMI_SetResponse_AppendUpdateResult(ctx);
  GNMI_Path_CopyFrom(GNMI_UpdateResult_AddPath(result), path);
  GNMI_UpdateResult_SetOp(result, op);
}

/* Deletes, then replaces, then updates, once every change has been checked. */
static uint32_t set_into(struct service* svc, void* ctx, struct path_store* scratch,
                         struct change* changes, const char** why) {
  void* prefix = GNMI_SetRequest_HasPrefix(ctx) ? GNMI_SetRequest_GetPrefix(ctx) : NULL;
  int deletes = GNMI_SetRequest_DeleteSizeof(ctx), replaces = GNMI_SetRequest_ReplaceSizeof(ctx);
  int i, count = replaces + GNMI_SetRequest_UpdateSizeof(ctx);
  uint32_t status = MGMTMSG_STATUS_OK;
  size_t l;
  for (i = 0; i < count && status == MGMTMSG_STATUS_OK; i++) {
    void* update = i < replaces ? GNMI_SetRequest_GetReplace(ctx, i)
                                : GNMI_SetRequest_GetUpdate(ctx, i - replaces);
    status = check_change(svc, update, prefix, scratch, &changes[i], why);
  }
  if (status != MGMTMSG_STATUS_OK) return status;
  if (prefix != NULL) GNMI_Path_CopyFrom(GNMI_SetResponse_AddPrefix(ctx), prefix);
  for (i = 0; i < deletes; i++) {
    void* path = GNMI_SetRequest_GetDelete(ctx, i);
    void* pattern = path_store_join(scratch, prefix, path);
    for (l = 0; l < svc->tree.count; l++) {
      if (GNMI_Path_Covers(pattern, svc->tree.leaves[l].path)) {
        tree_delete(&svc->tree, &svc->tree.leaves[l]);
      }
    }
    add_result(ctx, path, GNMI_UPDATERESULT_DELETE);
  }
  for (i = 0; i < count; i++) {
    void* update = i < replaces ? GNMI_SetRequest_GetReplace(ctx, i)
                                : GNMI_SetRequest_GetUpdate(ctx, i - replaces);
    if (tree_put(&svc->tree, changes[i].path, &changes[i].value) == NULL) {
      return *why = "out of memory", MGMTMSG_STATUS_RESOURCE_EXHAUSTED;
    }
    add_result(ctx, GNMI_Update_GetPath(update),
               i < replaces ? GNMI_UPDATERESULT_REPLACE : GNMI_UPDATERESULT_UPDATE);
  }
  GNMI_SetResponse_SetTimestamp(ctx, (int64_t)realtime_ns());
  return MGMTMSG_STATUS_OK;
}

void answer_set(struct service* svc, struct call* call, const void* data, uint32_t len) {
  void* ctx = GNMI_Set_Init();
  struct path_store scratch = {NULL, NULL};
  struct change* changes = NULL;
  const char* why = "SetRequest not parsed";
  uint32_t status = MGMTMSG_STATUS_INVALID_ARGUMENT;
  int i, count = 0;
  if (ctx != NULL && GNMI_SetRequest_Parse(ctx, data, (int)len) && path_store_init(&scratch)) {
    count = GNMI_SetRequest_ReplaceSizeof(ctx) + GNMI_SetRequest_UpdateSizeof(ctx);
    changes = calloc((size_t)count + 1, sizeof *changes);
    status = changes == NULL ? (why = "out of memory", MGMTMSG_STATUS_RESOURCE_EXHAUSTED)
                             : set_into(svc, ctx, &scratch, changes, &why);
  }
  if (status == MGMTMSG_STATUS_OK) {
    reply_and_end(svc, call, ctx, GNMI_SetResponse_Serialize);
    calls_changed(svc);
  } else {
    call_end(svc, call, status, why);
  }
  for (i = 0; changes != NULL && i < count; i++) value_clear(&changes[i].value);
  free(changes);
  path_store_free(&scratch);
  GNMI_Set_DeInit(ctx);
}
