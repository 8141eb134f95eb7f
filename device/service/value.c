#include "value.h"

#include <common/mgmtmsg_codes.h>
#include <gnmi/gnmi_ex.h>
#include <gnmi/gnmi_value.h>
#include <gnmi/gnmi_wire.h>
#include <stdlib.h>
#include <string.h>

static char* copy_text(const char* data, uint32_t len) {
  char* text = malloc((size_t)len + 1);
  if (text == NULL) return NULL;
  memcpy(text, data, len);
  text[len] = '\0';
  return memchr(text, '\0', len) == NULL ? text : (free(text), (char*)NULL);
}

int value_from_typed(void* typed, struct value* out) {
  uint32_t len = 0;
  const char* text;
  memset(out, 0, sizeof *out);
  switch (GNMI_TypedValue_ValueCase(typed)) {
    case GNMI_TYPEDVALUE_STRING_VAL:
      text = GNMI_TypedValue_ReadString(typed, &len);
      out->kind = VALUE_STRING;
      out->s = copy_text(text, len);
      return out->s != NULL;
    case GNMI_TYPEDVALUE_UINT_VAL:
      out->kind = VALUE_UINT;
      out->u = GNMI_TypedValue_ReadUint(typed);
      return 1;
    case GNMI_TYPEDVALUE_INT_VAL:
      out->kind = VALUE_INT;
      out->i = GNMI_TypedValue_ReadInt(typed);
      return 1;
    case GNMI_TYPEDVALUE_BOOL_VAL:
      out->kind = VALUE_BOOL;
      out->b = GNMI_TypedValue_ReadBool(typed);
      return 1;
    case GNMI_TYPEDVALUE_JSON_VAL:
      text = GNMI_TypedValue_ReadJson(typed, &len);
      return json_parse(text, len, out);
    case GNMI_TYPEDVALUE_JSON_IETF_VAL:
      text = GNMI_TypedValue_ReadJsonIetf(typed, &len);
      return json_parse(text, len, out);
    default:
      return 0;
  }
}

int value_to_typed(void* typed, const struct value* value, int encoding) {
  struct buffer json = {0};
  if (encoding == GNMI_ENCODING_PROTO) {
    switch (value->kind) {
      case VALUE_STRING:
        GNMI_TypedValue_SetStringVal(typed, value->s, (uint32_t)strlen(value->s));
        break;
      case VALUE_UINT:
        GNMI_TypedValue_SetUintVal(typed, value->u);
        break;
      case VALUE_INT:
        GNMI_TypedValue_SetIntVal(typed, value->i);
        break;
      case VALUE_BOOL:
        GNMI_TypedValue_SetBoolVal(typed, value->b);
        break;
    }
    return 1;
  }
  if (!json_format(value, encoding == GNMI_ENCODING_JSON_IETF, &json)) {
    buffer_free(&json);
    return 0;
  }
  if (encoding == GNMI_ENCODING_JSON_IETF) {
    GNMI_TypedValue_SetJsonIetfVal(typed, (const char*)json.data, (uint32_t)json.len);
  } else {
    GNMI_TypedValue_SetJsonVal(typed, (const char*)json.data, (uint32_t)json.len);
  }
  buffer_free(&json);
  return 1;
}

int value_write(void* ctx, void* wirePath, const struct value* value, int encoding) {
  struct buffer json = {0};
  int ok;
  if (encoding == GNMI_ENCODING_PROTO) {
    switch (value->kind) {
      case VALUE_STRING:
        return GNMI_Writer_AddString(ctx, wirePath, value->s, (uint32_t)strlen(value->s));
      case VALUE_UINT:
        return GNMI_Writer_AddUint(ctx, wirePath, value->u);
      case VALUE_INT:
        return GNMI_Writer_AddInt(ctx, wirePath, value->i);
      case VALUE_BOOL:
        return GNMI_Writer_AddBool(ctx, wirePath, value->b);
    }
  }
  ok = json_format(value, encoding == GNMI_ENCODING_JSON_IETF, &json);
  if (ok && encoding == GNMI_ENCODING_JSON_IETF) {
    ok = GNMI_Writer_AddJsonIetf(ctx, wirePath, (const char*)json.data, (uint32_t)json.len);
  } else if (ok) {
    ok = GNMI_Writer_AddJson(ctx, wirePath, (const char*)json.data, (uint32_t)json.len);
  }
  buffer_free(&json);
  return ok;
}

static int digits_only(const char* s) {
  if (*s == '\0') return 0;
  for (; *s; s++) {
    if (*s < '0' || *s > '9') return 0;
  }
  return 1;
}

int value_convert(struct value* incoming, enum value_kind kind) {
  struct value number;
  if (incoming->kind == kind) return 1;
  if (incoming->kind == VALUE_STRING && kind != VALUE_STRING && digits_only(incoming->s) &&
      json_parse(incoming->s, (uint32_t)strlen(incoming->s), &number)) {
    value_clear(incoming);
    *incoming = number;
  }
  if (kind == VALUE_UINT && incoming->kind == VALUE_INT && incoming->i >= 0) {
    incoming->u = (uint64_t)incoming->i;
  } else if (kind == VALUE_INT && incoming->kind == VALUE_UINT && incoming->u <= INT64_MAX) {
    incoming->i = (int64_t)incoming->u;
  } else if (incoming->kind != kind) {
    return 0;
  }
  incoming->kind = kind;
  return 1;
}

int value_equal(const struct value* a, const struct value* b) {
  if (a->kind != b->kind) return 0;
  switch (a->kind) {
    case VALUE_STRING:
      return strcmp(a->s, b->s) == 0;
    case VALUE_UINT:
      return a->u == b->u;
    case VALUE_INT:
      return a->i == b->i;
    case VALUE_BOOL:
      return a->b == b->b;
  }
  return 0;
}

int value_copy(struct value* to, const struct value* from) {
  *to = *from;
  if (from->kind != VALUE_STRING) return 1;
  to->s = copy_text(from->s, (uint32_t)strlen(from->s));
  return to->s != NULL;
}

void value_clear(struct value* value) {
  free(value->s);
  value->s = NULL;
}
