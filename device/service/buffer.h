/* A growable byte buffer: the channel's input and output. */
#ifndef SERVICE_BUFFER_H
#define SERVICE_BUFFER_H

#include <stddef.h>

struct buffer {
  unsigned char* data;
  size_t len;
  size_t cap;
};

/* Appends len bytes; 0 when memory runs out (the buffer is unchanged). */
int buffer_append(struct buffer* buf, const void* data, size_t len);
/* Drops the first len bytes. */
void buffer_consume(struct buffer* buf, size_t len);
void buffer_free(struct buffer* buf);

#endif
