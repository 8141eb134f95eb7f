/* The south channel's socket: connecting, reading, writing. */
#ifndef SERVICE_CHANNEL_H
#define SERVICE_CHANNEL_H

#include "service.h"

/* Connects to the front end's socket; 1, or 0 (svc->fd stays -1). */
int channel_connect(struct service* svc, const char* path);
/* Reads what has arrived and acts on it; 0 when the connection is gone or
 * must be dropped. */
int channel_read(struct service* svc);
/* Writes what it can of the output without blocking; 0 when the connection
 * is gone or its output has outgrown its bound. */
int channel_flush(struct service* svc);
/* Closes the connection and frees every call. */
void channel_close(struct service* svc);

#endif
