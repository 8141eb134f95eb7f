/* JSON text of a scalar leaf value, both ways. */
#include <ctype.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "value.h"

static int format_string(const char* s, struct buffer* out) {
  int ok = buffer_append(out, "\"", 1);
  for (; ok && *s; s++) {
    unsigned char c = (unsigned char)*s;
    char escaped[8];
    if (c == '"' || c == '\\') {
      escaped[0] = '\\';
      escaped[1] = (char)c;
      ok = buffer_append(out, escaped, 2);
    } else if (c < 0x20) {
      snprintf(escaped, sizeof escaped, "\\u%04x", c);
      ok = buffer_append(out, escaped, 6);
    } else {
      ok = buffer_append(out, s, 1);
    }
  }
  return ok && buffer_append(out, "\"", 1);
}

int json_format(const struct value* value, int ietf, struct buffer* out) {
  char text[32];
  const char* quote = ietf ? "\"" : "";
  switch (value->kind) {
    case VALUE_STRING:
      return format_string(value->s, out);
    case VALUE_BOOL:
      return buffer_append(out, value->b ? "true" : "false", value->b ? 4 : 5);
    case VALUE_UINT:
      snprintf(text, sizeof text, "%s%" PRIu64 "%s", quote, value->u, quote);
      break;
    case VALUE_INT:
      snprintf(text, sizeof text, "%s%" PRId64 "%s", quote, value->i, quote);
      break;
  }
  return buffer_append(out, text, strlen(text));
}

/* The string starting after the opening quote at *p; NULL when malformed. */
static char* parse_string(const char** p, const char* end) {
  struct buffer text = {0};
  const char* s = *p;
  while (s < end && *s != '"') {
    char c = *s++;
    if ((unsigned char)c < 0x20) break;
    if (c == '\\') {
      static const char from[] = "\"\\/bfnrt", to[] = "\"\\/\b\f\n\r\t";
      const char* at = s < end ? strchr(from, *s) : NULL;
      if (at == NULL || *at == '\0') break;
      c = to[at - from];
      s++;
    }
    if (!buffer_append(&text, &c, 1)) break;
  }
  if (s >= end || *s != '"' || !buffer_append(&text, "", 1)) {
    buffer_free(&text);
    return NULL;
  }
  *p = s + 1;
  return (char*)text.data;
}

static int parse_integer(const char** p, const char* end, struct value* out) {
  const char* s = *p;
  int negative = s < end && *s == '-';
  uint64_t magnitude = 0;
  s += negative;
  if (s >= end || !isdigit((unsigned char)*s)) return 0;
  for (; s < end && isdigit((unsigned char)*s); s++) {
    unsigned digit = (unsigned)(*s - '0');
    if (magnitude > (UINT64_MAX - digit) / 10) return 0;
    magnitude = magnitude * 10 + digit;
  }
  if (negative) {
    if (magnitude > (uint64_t)INT64_MAX + 1) return 0;
    out->kind = VALUE_INT;
    out->i = magnitude == (uint64_t)INT64_MAX + 1 ? INT64_MIN : -(int64_t)magnitude;
  } else {
    out->kind = VALUE_UINT;
    out->u = magnitude;
  }
  *p = s;
  return 1;
}

static const char* skip_space(const char* s, const char* end) {
  while (s < end && isspace((unsigned char)*s)) s++;
  return s;
}

int json_parse(const char* text, uint32_t len, struct value* out) {
  const char* end = text + len;
  const char* s = skip_space(text, end);
  struct value parsed = {VALUE_STRING, 0, 0, 0, NULL};
  int ok = 0;
  if (s < end && *s == '"') {
    s++;
    parsed.s = parse_string(&s, end);
    ok = parsed.s != NULL;
  } else if ((size_t)(end - s) >= 4 && memcmp(s, "true", 4) == 0) {
    parsed.kind = VALUE_BOOL;
    parsed.b = 1;
    s += 4;
    ok = 1;
  } else if ((size_t)(end - s) >= 5 && memcmp(s, "false", 5) == 0) {
    parsed.kind = VALUE_BOOL;
    s += 5;
    ok = 1;
  } else {
    ok = parse_integer(&s, end, &parsed);
  }
  if (ok && skip_space(s, end) == end) {
    *out = parsed;
    return 1;
  }
  value_clear(&parsed);
  return 0;
}
