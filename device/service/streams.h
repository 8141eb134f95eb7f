/* The calls that go on: gNMI Subscribe streams (subscribe.c) and dial-in
 * subscriptions (dialin.c). Each _open takes the call's first request
 * message and either keeps the call going or ends it. */
#ifndef SERVICE_STREAMS_H
#define SERVICE_STREAMS_H

#include <stdint.h>

#include "service.h"

void stream_open(struct service* svc, struct call* call, const void* data, uint32_t len);
/* A further client message; isOver with no data is the client's half-close. */
void stream_data(struct service* svc, struct call* call, const void* data, uint32_t len,
                 int isOver);
/* Sends what is due by `now`; returns when it is next due (UINT64_MAX: never). */
uint64_t stream_run(struct service* svc, struct call* call, uint64_t now);
/* The tree changed: on-change subscriptions send what changed. */
void stream_changed(struct service* svc, struct call* call);
void stream_free(struct stream* stream);

void dialin_open(struct service* svc, struct call* call, const void* data, uint32_t len);
void dialin_cancel(struct service* svc, struct call* call, const void* data, uint32_t len);
uint64_t dialin_run(struct service* svc, struct call* call, uint64_t now);
void dialin_free(struct dialin* dialin);

#endif
