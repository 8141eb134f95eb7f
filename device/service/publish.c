#include "publish.h"

#include <common/mgmtmsg_codes.h>
#include <gnmi/gnmi_path.h>
#include <gnmi/gnmi_wire.h>
#include <string.h>

#include "clock.h"
#include "value.h"

#define FIELD_VARINT 0
#define FIELD_BYTES 2

static const char kNotificationType[] = "type.googleapis.com/gnmi.Notification";

static int put_varint(struct buffer* out, uint64_t value) {
  unsigned char bytes[10];
  size_t n = 0;
  for (; value >= 0x80; value >>= 7) bytes[n++] = (unsigned char)(value | 0x80);
  bytes[n++] = (unsigned char)value;
  return buffer_append(out, bytes, n);
}

static int put_bytes(struct buffer* out, uint32_t field, const void* data, size_t len) {
  return put_varint(out, (uint64_t)field << 3 | FIELD_BYTES) && put_varint(out, len) &&
         buffer_append(out, data, len);
}

/* Reads a varint at *pos; 0 when the bytes end first. */
static int get_varint(const unsigned char* data, size_t len, size_t* pos, uint64_t* value) {
  unsigned shift;
  *value = 0;
  for (shift = 0; *pos < len && shift < 64; shift += 7) {
    unsigned char byte = data[(*pos)++];
    *value |= (uint64_t)(byte & 0x7f) << shift;
    if (!(byte & 0x80)) return 1;
  }
  return 0;
}

static int covered(struct leaf* leaf, void* const* patterns, size_t count) {
  size_t i;
  for (i = 0; i < count; i++) {
    if (GNMI_Path_Covers(patterns[i], leaf->path)) return 1;
  }
  return 0;
}

int publish_sample(void* ctx, struct tree* tree, void* const* patterns, size_t count,
                   struct buffer* out) {
  void* bytes = NULL;
  int len = 0, ok = GNMI_Writer_Begin(ctx, (int64_t)realtime_ns(), NULL);
  size_t l, pos = 1;
  uint64_t size;
  for (l = 0; ok && l < tree->count; l++) {
    struct leaf* leaf = &tree->leaves[l];
    if (leaf->deleted || !covered(leaf, patterns, count)) continue;
    ok = tree_wire_path(leaf) != NULL &&
         value_write(ctx, leaf->wire, &leaf->value, GNMI_ENCODING_PROTO);
  }
  if (!ok || !GNMI_Writer_Finish(ctx, &bytes, &len)) return 0;
  /* A SubscribeResponse whose one field is the notification (field 1): its
   * bytes follow the field's tag and length. */
  if (!get_varint(bytes, (size_t)len, &pos, &size) || size != (size_t)len - pos) return 0;
  return buffer_append(out, (const unsigned char*)bytes + pos, (size_t)size);
}

int publish_message(int anyPacked, int64_t reqId, const void* notification, size_t len,
                    const char* errors, struct buffer* out) {
  int ok = put_varint(out, 1 << 3 | FIELD_VARINT) && put_varint(out, (uint64_t)reqId);
  if (anyPacked) {
    struct buffer any = {NULL, 0, 0};
    ok = ok && put_bytes(&any, 1, kNotificationType, sizeof kNotificationType - 1) &&
         put_bytes(&any, 2, notification, len) && put_bytes(out, 2, any.data, any.len);
    buffer_free(&any);
  } else {
    ok = ok && put_bytes(out, 2, notification, len);
  }
  return ok && (*errors == '\0' || put_bytes(out, 3, errors, strlen(errors)));
}
