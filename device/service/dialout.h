/* Dial-out: the module publishes samples of the tree to collectors, over
 * client calls that the front end makes for it. Each destination has its own
 * call, its ReqId count, a bounded queue of samples and a retry schedule. */
#ifndef SERVICE_DIALOUT_H
#define SERVICE_DIALOUT_H

#include <stddef.h>
#include <stdint.h>

#include "path_store.h"

struct service;

/* The configuration as the options give it. */
struct dialout_options {
  const char* destinations; /* HOST:PORT[,HOST:PORT...]; NULL: no dial-out */
  const char* service;      /* "dataPublish" or "Dialout" */
  long interval_ms;         /* 0: as fast as the collector takes them */
  const char* paths;        /* path strings, comma-separated */
  int tls;                  /* the collectors serve TLS */
};

#define DIALOUT_QUEUE 16 /* samples waiting per destination */

struct sample {
  int64_t req_id;
  unsigned char* data; /* the encoded notification */
  size_t len;
};

struct destination {
  char* host;
  uint32_t port;
  int state;
  uint32_t rpc_id;    /* the call's, while opening or open */
  uint32_t trans_num; /* messages sent on the call */
  uint64_t retry_at;  /* monotonic ns */
  uint64_t backoff_ns;
  struct sample queue[DIALOUT_QUEUE];
  size_t head;
  size_t count;
  uint32_t in_flight; /* sent, not yet written to the collector */
  uint64_t dropped;   /* samples dropped since the last message sent */
  int64_t next_req_id;
};

struct dialout {
  struct destination* dests;
  size_t count;
  int any_packed; /* dialout.Dialout: the notification goes in an Any */
  int tls;
  uint64_t interval_ns;
  uint64_t next_sample;
  struct path_store patterns;
  void** pattern;
  size_t pattern_count;
  void* ctx; /* a Subscribe context: the writer makes the notifications */
  uint32_t last_rpc_id;
  uint32_t random;
};

/* Reads the options (none: no destination); 0 with a message on stderr when
 * one is bad or memory runs out. */
int dialout_init(struct dialout* dialout, const struct dialout_options* options);
void dialout_free(struct dialout* dialout);
/* Samples, opens calls and sends what is due by `now`; the time anything is
 * next due (UINT64_MAX: nothing). */
uint64_t dialout_run(struct service* svc, uint64_t now);
/* A response of the front end on a client call. */
void dialout_receive(struct service* svc, void* msg);
/* Closes every call (the module stops). */
void dialout_close(struct service* svc);
/* The channel is gone: every call with it; they are opened again once a
 * channel is back. */
void dialout_lost_channel(struct dialout* dialout);

#endif
