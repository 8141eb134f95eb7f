#include "gnmi_common.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "gnmi/gnmi_ex.h"
#include "hexdump.h"

/* Appends a then b at *used, never past size. */
static void Append(char* text, size_t size, size_t* used, const char* a, const char* b) {
  int n;
  if (*used >= size) {
    return;
  }
  n = snprintf(text + *used, size - *used, "%s%s", a, b);
  if (n > 0) {
    *used += (size_t)n;
  }
}

const char* GnmiPathText(void* path, char* text, size_t size) {
  size_t used = 0;
  int i, k;
  text[0] = '\0';
  for (i = 0; i < GNMI_Path_PathElemSizeof(path); i++) {
    void* elem = GNMI_Path_GetPathElem(path, i);
    Append(text, size, &used, "/", GNMI_PathElem_GetName(elem));
    for (k = 0; k < GNMI_PathElem_KeySizeof(elem); k++) {
      const char* key;
      const char* value;
      GNMI_PathElem_GetKey(elem, k, &key, &value);
      Append(text, size, &used, "[", key);
      Append(text, size, &used, "=", value);
      Append(text, size, &used, "]", "");
    }
  }
  return text;
}

/* Sets a string field through its setter from a NUL-terminated text. */
static void SetText(void (*set)(void*, const char*, uint32_t), void* message, const char* text) {
  set(message, text, (uint32_t)strlen(text));
}

void GnmiCopyPath(void* from, void* to) {
  int i, k;
  SetText(GNMI_Path_SetOrigin, to, GNMI_Path_GetOrigin(from));
  SetText(GNMI_Path_SetTarget, to, GNMI_Path_GetTarget(from));
  for (i = 0; i < GNMI_Path_PathElemSizeof(from); i++) {
    void* source = GNMI_Path_GetPathElem(from, i);
    void* elem = GNMI_Path_AppendPathElem(to);
    SetText(GNMI_PathElem_SetName, elem, GNMI_PathElem_GetName(source));
    for (k = 0; k < GNMI_PathElem_KeySizeof(source); k++) {
      const char* key;
      const char* value;
      GNMI_PathElem_GetKey(source, k, &key, &value);
      GNMI_PathElem_AppendKey(elem, key, (uint32_t)strlen(key), value, (uint32_t)strlen(value));
    }
  }
}

void GnmiAppendJsonUpdate(void* notification, void* path, const char* json) {
  void* update = GNMI_Notification_AppendUpdate(notification);
  GnmiCopyPath(path, GNMI_Update_SetPath(update));
  SetText(GNMI_TypedValue_SetJsonIetfVal, GNMI_Update_SetVal(update), json);
}

const char* const kGnmiEncodings[5] = {"JSON", "BYTES", "PROTO", "ASCII", "JSON_IETF"};

const char* GnmiEnumName(const char* const* names, int count, int value) {
  return value >= 0 && value < count ? names[value] : "unknown";
}

int GnmiSendReply(const char* label, int (*serialize)(void*, void**, int*), void* ctx) {
  void* out = NULL;
  int outLen = 0;
  if (!serialize(ctx, &out, &outLen)) {
    return 0;
  }
  PrintBytes(label, out, (size_t)outLen);
  return 1;
}
