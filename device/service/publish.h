/* What dial-out publishes: a sample of the tree as an encoded
 * gnmi.Notification, and the message of the publish stream that carries it. */
#ifndef SERVICE_PUBLISH_H
#define SERVICE_PUBLISH_H

#include <stddef.h>
#include <stdint.h>

#include "buffer.h"
#include "tree.h"

/* Appends the Notification of every present leaf that one of the patterns
 * covers, values in PROTO encoding, written with the writer on ctx (a
 * Subscribe context). 1, or 0 when memory runs out. */
int publish_sample(void* ctx, struct tree* tree, void* const* patterns, size_t count,
                   struct buffer* out);
/* Appends a quorix_dialout.serviceArgs (data = the notification) or, when
 * anyPacked, a dialout.DialoutArgs (data = the notification in an Any),
 * with ReqId and errors ("" for none). 1, or 0 when memory runs out. */
int publish_message(int anyPacked, int64_t reqId, const void* notification, size_t len,
                    const char* errors, struct buffer* out);

#endif
