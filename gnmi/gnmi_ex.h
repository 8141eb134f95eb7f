/* mgmtmsg: gNMI entry points for C callers.
 *
 * Conventions (each entry point below is commented only where it differs):
 *  1. Handles are opaque void*. A context handle designates one gNMI RPC and
 *     comes from an Init entry point; a message handle designates a message
 *     inside a context, reached from a context or from another message.
 *  2. The caller owns a context from Init until the matching DeInit, which
 *     frees the context with its messages and output buffer. DeInit ignores
 *     NULL; no other entry point tests a handle for NULL.
 *  3. A message handle returned by an entry point is borrowed from its
 *     parent: never freed by the caller, valid until the context is destroyed
 *     (a handle into the request: until the next Parse on the context).
 *     Read-only handles (from Get readers) must not be written through.
 *  4. Failures are results: Init returns NULL, Parse and Serialize return 0
 *     (1 is success). Nothing is logged, except the fatal index checks.
 *  5. An index outside a repeated field's bounds is a fatal error raised
 *     through the message runtime's check ("CHECK failed: ..."): the call does
 *     not return. Readers that answer out-of-range indices themselves say so.
 *  6. Strings are passed in as a pointer and a byte count: exactly that many
 *     bytes are copied, embedded NULs included, no terminator needed; NULL
 *     with count 0 sets the empty string. Strings returned are NUL-terminated,
 *     never NULL, and point into the message until the field changes.
 *  7. Flags are int: any non-zero value is true; readers return 0 or 1.
 *     Enumerations are int holding the schema's value, never range-checked.
 *  8. A context or message is used by one thread at a time; distinct contexts
 *     may be used on different threads at once.
 */
#ifndef MGMTMSG_GNMI_EX_H
#define MGMTMSG_GNMI_EX_H

#include <stdint.h>

#ifndef MGMTMSG_API
#define MGMTMSG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- RPC lifecycle ----
 * Init creates an empty context (request, response(s), no output buffer).
 * Parse clears the request and decodes len bytes at data into it.
 * Serialize encodes the response into the context's output buffer and stores
 * its address and length in *out and *outLen; the bytes belong to the context
 * and stay valid until the next Serialize on it or its DeInit. A response
 * with nothing in it gives *out == NULL (on a fresh context) and *outLen 0.
 * Parse, Serialize and DeInit act by the class of the context they are given,
 * whichever family's name is used. */
MGMTMSG_API void *GNMI_Capability_Init(void);
MGMTMSG_API void *GNMI_Get_Init(void);
MGMTMSG_API void *GNMI_Set_Init(void);
MGMTMSG_API void *GNMI_Subscribe_Init(void);

MGMTMSG_API int GNMI_CapabilityRequest_Parse(void *ctx, const void *data, int len);
MGMTMSG_API int GNMI_GetRequest_Parse(void *ctx, const void *data, int len);
MGMTMSG_API int GNMI_SetRequest_Parse(void *ctx, const void *data, int len);
MGMTMSG_API int GNMI_SubscribeRequest_Parse(void *ctx, const void *data, int len);

/* Capabilities: failure to allocate the output buffer is not a 0 result but
 * the C++ allocation exception. */
MGMTMSG_API int GNMI_CapabilityResponse_Serialize(void *ctx, void **out, int *outLen);
MGMTMSG_API int GNMI_GetResponse_Serialize(void *ctx, void **out, int *outLen);
MGMTMSG_API int GNMI_SetResponse_Serialize(void *ctx, void **out, int *outLen);
/* Serializes the Subscribe update response. */
MGMTMSG_API int GNMI_SubscribeResponse_Serialize(void *ctx, void **out, int *outLen);
/* Serializes the Subscribe sync response, into the same buffer as the update
 * response (overwriting it). Needs a Subscribe context. */
MGMTMSG_API int GNMI_SubscribeSyncResponse_Serialize(void *ctx, void **out, int *outLen);

MGMTMSG_API void GNMI_Capability_DeInit(void *ctx);
MGMTMSG_API void GNMI_Get_DeInit(void *ctx);
MGMTMSG_API void GNMI_Set_DeInit(void *ctx);
MGMTMSG_API void GNMI_Subscribe_DeInit(void *ctx);

#ifdef __cplusplus
}
#endif

#endif
