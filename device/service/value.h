/* A leaf's value: a string, an unsigned or signed integer or a flag, and its
 * forms in a gNMI TypedValue. */
#ifndef SERVICE_VALUE_H
#define SERVICE_VALUE_H

#include <stdint.h>

#include "buffer.h"

enum value_kind { VALUE_STRING, VALUE_UINT, VALUE_INT, VALUE_BOOL };

struct value {
  enum value_kind kind;
  uint64_t u;
  int64_t i;
  int b;
  char* s; /* owned, VALUE_STRING only */
};

/* Reads a TypedValue sent by a client: a string, integer or bool member, or
 * JSON (either flavour) holding one scalar. 1, or 0 for anything else. */
int value_from_typed(void* typed, struct value* out);
/* Writes the value into a TypedValue in the Encoding given: PROTO as the
 * scalar member, JSON and JSON_IETF as JSON text (RFC 7951 quotes 64-bit
 * integers). 1, or 0 when memory runs out. */
int value_to_typed(void* typed, const struct value* value, int encoding);
/* Writes an update of wirePath with the value through the notification
 * writer on ctx, as value_to_typed would make it. 1, or 0 on no memory. */
int value_write(void* ctx, void* wirePath, const struct value* value, int encoding);
/* Makes `incoming` of the leaf's kind when the two agree (an integer of
 * either sign in range, a string of digits for an unsigned leaf); 1, or 0
 * when they don't. */
int value_convert(struct value* incoming, enum value_kind kind);
int value_equal(const struct value* a, const struct value* b);
/* 1, or 0 when memory runs out. */
int value_copy(struct value* to, const struct value* from);
void value_clear(struct value* value);

/* The value as JSON text; ietf quotes 64-bit integers. 1, or 0 on no memory. */
int json_format(const struct value* value, int ietf, struct buffer* out);
/* One JSON scalar (string, integer, true, false) with optional whitespace
 * around it. 1, or 0 when the text is anything else. */
int json_parse(const char* text, uint32_t len, struct value* out);

#endif
