#include "gnmi_common.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "common/mgmtmsg_codes.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "hexdump.h"

const char* GnmiPathText(void* path, char* text, size_t size) {
  GNMI_Path_ToString(path, text, (uint32_t)size);
  return text;
}

/* Sets a string field through its setter from a NUL-terminated text. */
static void SetText(void (*set)(void*, const char*, uint32_t), void* message, const char* text) {
  set(message, text, (uint32_t)strlen(text));
}

void GnmiAppendJsonUpdate(void* notification, void* path, const char* json) {
  void* update = GNMI_Notification_AppendUpdate(notification);
  GNMI_Path_CopyFrom(GNMI_Update_SetPath(update), path);
  SetText(GNMI_TypedValue_SetJsonIetfVal, GNMI_Update_SetVal(update), json);
}

const char* const kGnmiEncodings[5] = {[GNMI_ENCODING_JSON] = "JSON",
                                       [GNMI_ENCODING_BYTES] = "BYTES",
                                       [GNMI_ENCODING_PROTO] = "PROTO",
                                       [GNMI_ENCODING_ASCII] = "ASCII",
                                       [GNMI_ENCODING_JSON_IETF] = "JSON_IETF"};

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
