#include "buffer.h"

#include <stdlib.h>
#include <string.h>

int buffer_append(struct buffer* buf, const void* data, size_t len) {
  if (buf->len + len > buf->cap) {
    size_t cap = buf->cap ? buf->cap : 4096;
    unsigned char* grown;
    while (cap < buf->len + len) cap *= 2;
    grown = realloc(buf->data, cap);
    if (grown == NULL) return 0;
    buf->data = grown;
    buf->cap = cap;
  }
  if (len) memcpy(buf->data + buf->len, data, len);
  buf->len += len;
  return 1;
}

void buffer_consume(struct buffer* buf, size_t len) {
  memmove(buf->data, buf->data + len, buf->len - len);
  buf->len -= len;
}

void buffer_free(struct buffer* buf) {
  free(buf->data);
  buf->data = NULL;
  buf->len = buf->cap = 0;
}
