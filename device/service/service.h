/* The service module: its state, and the calls it holds for the front end.
 * Single-threaded: everything below runs from the event loop. */
#ifndef SERVICE_SERVICE_H
#define SERVICE_SERVICE_H

#include <stddef.h>
#include <stdint.h>

#include "buffer.h"
#include "clock.h"
#include "dialout.h"
#include "tree.h"
#include "users.h"

struct stream; /* a gNMI Subscribe (subscribe.c) */
struct dialin; /* a dial-in Subscribe (dialin.c) */

/* A call the front end opened and the module has not ended. */
struct call {
  uint32_t connect_id;
  uint32_t rpc_id;
  uint32_t trans_num; /* messages sent on the call */
  struct stream* stream;
  struct dialin* dialin;
};

struct service {
  struct tree tree;
  struct users users;
  struct call** calls;
  size_t call_count;
  size_t call_cap;
  struct buffer in;
  struct buffer out;
  int fd;                  /* the channel, or -1 */
  uint64_t tick_ns;        /* counter period */
  uint64_t next_tick;      /* monotonic ns */
  uint32_t next_dialin_id; /* the last subscription id given */
  void* scratch;           /* a Subscribe context for a stream's further messages */
  struct dialout dialout;
};

/* calls.c: a SouthMsg with its identity and kind; NULL on no memory. */
void* south_message(uint32_t connectId, uint32_t rpcId, uint32_t transNum, int32_t req, int32_t op,
                    int32_t type);
/* Frames the message onto the output and frees it; 1, or 0 on no memory. */
int south_send(struct service* svc, void* msg);
/* What the channel receives. Takes the bytes received so far and
 * acts on every whole frame, consuming them. 0 when the connection must be
 * dropped (a frame too long or no SouthMsg), 1 otherwise. */
int service_receive(struct service* svc);
/* Queues a reply message on the call; isOver marks the last one. 1, or 0
 * when memory runs out (the call is then ended). */
int call_reply(struct service* svc, struct call* call, const void* data, uint32_t len, int isOver);
/* Ends the call with a gRPC status and message and frees it. */
void call_end(struct service* svc, struct call* call, uint32_t status, const char* message);
/* Frees every call, sending nothing (the channel is gone). */
void calls_drop(struct service* svc);
/* Runs the streams due by `now`; the earliest time any is due next. */
uint64_t calls_run(struct service* svc, uint64_t now);
/* Tells every stream that the tree changed. */
void calls_changed(struct service* svc);

/* unary.c: the one-reply methods; each ends its call. */
void answer_capabilities(struct service* svc, struct call* call, const void* data, uint32_t len);
void answer_get(struct service* svc, struct call* call, const void* data, uint32_t len);
void answer_set(struct service* svc, struct call* call, const void* data, uint32_t len);
/* Whether the module answers in this Encoding (JSON, JSON_IETF, PROTO). */
int encoding_served(int encoding);
/* Appends an update of the leaf to a notification; 1, or 0 on no memory. */
int notify_leaf(void* notification, const struct leaf* leaf, int encoding);

#endif
