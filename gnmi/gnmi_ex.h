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
 *  9. Get on a sub-message returns it read-only, or the type's shared default
 *     instance when it is absent (never NULL, unless said). Set or Add on a
 *     sub-message returns it mutable, creating it empty when absent. Append
 *     adds a new empty element at the end of a list and returns it. Has
 *     returns 1 when the sub-message is present (0 on a default instance).
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

/* ---- GetRequest (Get context) ---- */
MGMTMSG_API int GNMI_GetRequest_HasPrefix(void *ctx);
/* NULL when the request has no prefix. */
MGMTMSG_API void *GNMI_GetRequest_GetPrefix(void *ctx);
MGMTMSG_API void *GNMI_GetRequest_GetPath(void *ctx, int index);
MGMTMSG_API int GNMI_GetRequest_PathSizeof(void *ctx);
MGMTMSG_API int GNMI_GetRequest_GetType(void *ctx);
MGMTMSG_API int GNMI_GetRequest_GetEncoding(void *ctx);
MGMTMSG_API void *GNMI_GetRequest_GetUseModels(void *ctx, int index);
MGMTMSG_API int GNMI_GetRequest_UseModelsSizeof(void *ctx);
MGMTMSG_API void *GNMI_GetRequest_GetExtension(void *ctx, int index);
MGMTMSG_API int GNMI_GetRequest_ExtensionSizeof(void *ctx);

/* ---- GetResponse (Get context) ---- */
MGMTMSG_API void *GNMI_GetResponse_AppendNotification(void *ctx);

/* ---- SetRequest (Set context) ---- */
MGMTMSG_API int GNMI_SetRequest_HasPrefix(void *ctx);
/* NULL when the request has no prefix. */
MGMTMSG_API void *GNMI_SetRequest_GetPrefix(void *ctx);
MGMTMSG_API void *GNMI_SetRequest_GetDelete(void *ctx, int index);
MGMTMSG_API int GNMI_SetRequest_DeleteSizeof(void *ctx);
MGMTMSG_API void *GNMI_SetRequest_GetReplace(void *ctx, int index);
MGMTMSG_API int GNMI_SetRequest_ReplaceSizeof(void *ctx);
MGMTMSG_API void *GNMI_SetRequest_GetUpdate(void *ctx, int index);
MGMTMSG_API int GNMI_SetRequest_UpdateSizeof(void *ctx);
MGMTMSG_API void *GNMI_SetRequest_GetExtension(void *ctx, int index);
MGMTMSG_API int GNMI_SetRequest_ExtensionSizeof(void *ctx);

/* ---- SetResponse (Set context) ---- */
MGMTMSG_API void *GNMI_SetResponse_AddPrefix(void *ctx);
/* Appends to the response's update results (field response). */
MGMTMSG_API void *GNMI_SetResponse_AppendUpdateResult(void *ctx);
MGMTMSG_API void GNMI_SetResponse_SetTimestamp(void *ctx, int64_t timestamp);
MGMTMSG_API void *GNMI_SetResponse_AppendExtension(void *ctx);

/* ---- CapabilityRequest and CapabilityResponse (Capabilities context) ---- */
MGMTMSG_API void *GNMI_CapabilityRequest_GetExtension(void *ctx, int index);
MGMTMSG_API int GNMI_CapabilityRequest_ExtensionSizeof(void *ctx);
MGMTMSG_API void *GNMI_CapabilityResponse_AppendSupportedModels(void *ctx);
/* Appends the value as given, known to the Encoding enumeration or not. */
MGMTMSG_API void GNMI_CapabilityResponse_AppendSupportedEncodings(void *ctx, int encoding);
MGMTMSG_API void *GNMI_CapabilityResponse_AppendExtension(void *ctx);
MGMTMSG_API void GNMI_CapabilityResponse_SetGnmiVersion(void *ctx, const char *text, int len);

/* ---- SubscribeRequest (Subscribe context) ----
 * Which member of the request's oneof is set: */
MGMTMSG_API int GNMI_SubscribeRequest_HasSubscribe(void *ctx);
MGMTMSG_API int GNMI_SubscribeRequest_HasPoll(void *ctx);
MGMTMSG_API int GNMI_SubscribeRequest_HasAliases(void *ctx);
/* Counted whatever the oneof holds. */
MGMTMSG_API int GNMI_SubscribeRequest_ExtensionSizeof(void *ctx);
/* The readers below read the subscription list when the request is a
 * subscribe, else an empty one: defaults, counts of 0. */
MGMTMSG_API int GNMI_SubscribeRequest_SubscriptionSize(void *ctx);
MGMTMSG_API int GNMI_SubscribeRequest_UseModelsSizeof(void *ctx);
MGMTMSG_API int GNMI_SubscribeRequest_UseAliases(void *ctx);
/* allow_aggregation */
MGMTMSG_API int GNMI_SubscribeRequest_GetAggregation(void *ctx);
MGMTMSG_API int GNMI_SubscribeRequest_GetUpdatesOnly(void *ctx);
/* The list's mode: 0 STREAM, 1 ONCE, 2 POLL. */
MGMTMSG_API int GNMI_SubscribeRequest_GetSubscriptionMode(void *ctx);
MGMTMSG_API int GNMI_SubscribeRequest_GetEncoding(void *ctx);
MGMTMSG_API int GNMI_SubscribeRequest_HasPrefix(void *ctx);
/* NULL when the list has no prefix (or the request is not a subscribe). */
MGMTMSG_API void *GNMI_SubscribeRequest_GetPrefix(void *ctx);
MGMTMSG_API int GNMI_SubscribeRequest_HasQosMarking(void *ctx);
/* The qos marking; 0 when there is no qos. */
MGMTMSG_API uint32_t GNMI_SubscribeRequest_GetQosMarking(void *ctx);
/* Subscription `index` of the list, or NULL when index is at or past the end
 * (a negative index is fatal). */
MGMTMSG_API void *GNMI_SubscribeRequest_GetSubscribe(void *ctx, int index);
/* That subscription's path; NULL as above. */
MGMTMSG_API void *GNMI_SubscribeRequest_GetPath(void *ctx, int index);
/* Fields of subscription `index`: fatal outside 0 .. SubscriptionSize - 1. */
MGMTMSG_API uint64_t GNMI_SubscribeRequest_GetSampleInterval(void *ctx, int index);
MGMTMSG_API uint64_t GNMI_SubscribeRequest_GetHeartbeatInterval(void *ctx, int index);
MGMTMSG_API int GNMI_SubscribeRequest_GetSuppressRedundant(void *ctx, int index);
/* The subscription's mode: 0 TARGET_DEFINED, 1 ON_CHANGE, 2 SAMPLE. */
MGMTMSG_API int GNMI_SubscribeRequest_GetSampleMode(void *ctx, int index);
/* Builds: replaces the request's oneof by an alias list (discarding a
 * subscribe or poll) and appends a new Alias to it. */
MGMTMSG_API void *GNMI_SubscribeRequest_SetAliases(void *ctx);

/* ---- SubscribeResponse (Subscribe context) ---- */
/* Builds: the update response's notification, made (replacing any other
 * member of its oneof) when absent. */
MGMTMSG_API void *GNMI_SubscribeResponse_GetNotification(void *ctx);
/* Reads update `index` of the update response's notification. */
MGMTMSG_API void *GNMI_SubscribeRequest_GetUpdate(void *ctx, int index);
/* Builds: sets the sync response's sync_response member, which is sent even
 * when false. */
MGMTMSG_API void GNMI_SubscribeRequest_SyncResponse(void *ctx, int flag);

/* ---- Notification (message handle) ---- */
MGMTMSG_API void GNMI_Notification_SetTimestamp(void *notification, int64_t timestamp);
MGMTMSG_API int64_t GNMI_Notification_GetTimestamp(void *notification);
MGMTMSG_API void *GNMI_Notification_AddPrefix(void *notification);
MGMTMSG_API int GNMI_Notification_HasPrefix(void *notification);
MGMTMSG_API void *GNMI_Notification_GetPrefix(void *notification);
MGMTMSG_API const char *GNMI_Notification_GetAlias(void *notification);
MGMTMSG_API void GNMI_Notification_SetAlias(void *notification, const char *data, uint32_t len);
MGMTMSG_API void *GNMI_Notification_AppendUpdate(void *notification);
MGMTMSG_API void *GNMI_Notification_GetUpdate(void *notification, int index);
MGMTMSG_API int GNMI_Notification_UpdateSizeof(void *notification);
MGMTMSG_API void *GNMI_Notification_AppendDelete(void *notification);
MGMTMSG_API void *GNMI_Notification_GetDelete(void *notification, int index);
MGMTMSG_API int GNMI_Notification_DeleteSizeof(void *notification);
MGMTMSG_API void GNMI_Notification_SetAtomic(void *notification, int flag);
MGMTMSG_API int GNMI_Notification_GetAtomic(void *notification);

/* ---- Update (message handle) ---- */
MGMTMSG_API void *GNMI_Update_SetPath(void *update);
MGMTMSG_API void *GNMI_Update_GetPath(void *update);
MGMTMSG_API int GNMI_Update_HasPath(void *update);
MGMTMSG_API void *GNMI_Update_SetVal(void *update);
MGMTMSG_API void *GNMI_Update_GetVal(void *update);
MGMTMSG_API int GNMI_Update_HasVal(void *update);
MGMTMSG_API void GNMI_Update_SetDuplicates(void *update, uint32_t count);
MGMTMSG_API uint32_t GNMI_Update_GetDuplicates(void *update);

/* ---- UpdateResult (message handle) ---- */
MGMTMSG_API void *GNMI_UpdateResult_AddPath(void *result);
MGMTMSG_API void GNMI_UpdateResult_SetOp(void *result, int op);

/* ---- ModelData (message handle) ---- */
MGMTMSG_API const char *GNMI_ModelData_GetName(void *model);
MGMTMSG_API const char *GNMI_ModelData_GetOrganization(void *model);
MGMTMSG_API const char *GNMI_ModelData_GetVersion(void *model);
MGMTMSG_API void GNMI_ModelData_SetName(void *model, const char *data, uint32_t len);
MGMTMSG_API void GNMI_ModelData_SetOrganization(void *model, const char *data, uint32_t len);
MGMTMSG_API void GNMI_ModelData_SetVersion(void *model, const char *data, uint32_t len);

/* ---- TypedValue and ScalarArray (message handles) ----
 * A typed value holds one member: each setter replaces whichever member was
 * set before (a leaf list obtained earlier is then freed). */
MGMTMSG_API void GNMI_TypedValue_SetStringVal(void *value, const char *data, uint32_t len);
MGMTMSG_API void GNMI_TypedValue_SetIntVal(void *value, int64_t number);
MGMTMSG_API void GNMI_TypedValue_SetUintVal(void *value, uint64_t number);
MGMTMSG_API void GNMI_TypedValue_SetBoolVal(void *value, int flag);
MGMTMSG_API void GNMI_TypedValue_SetFloatVal(void *value, float number);
/* The value's leaf list (a ScalarArray), made empty when the value holds
 * another member or none. */
MGMTMSG_API void *GNMI_TypedValue_LeaflistVal(void *value);
/* Appends an element (a TypedValue) to a leaf list. */
MGMTMSG_API void *GNMI_TypedValue_AddElement(void *leaflist);
MGMTMSG_API void GNMI_TypedValue_SetJsonVal(void *value, const char *data, uint32_t len);
/* json_val up to its first NUL; "" when the value holds another member. */
MGMTMSG_API const char *GNMI_TypedValue_GetJsonVal(void *value);
MGMTMSG_API void GNMI_TypedValue_SetJsonIetfVal(void *value, const char *data, uint32_t len);
/* The same as GNMI_TypedValue_SetJsonIetfVal. */
MGMTMSG_API void GNMI_TypedValue_SetJsonietf_Val(void *value, const char *data, uint32_t len);
MGMTMSG_API void GNMI_TypedValue_SetProtoBytes(void *value, const char *data, uint32_t len);

/* ---- Path and PathElem (message handles) ---- */
MGMTMSG_API const char *GNMI_Path_GetOrigin(void *path);
MGMTMSG_API void GNMI_Path_SetOrigin(void *path, const char *data, uint32_t len);
MGMTMSG_API const char *GNMI_Path_GetTarget(void *path);
MGMTMSG_API void GNMI_Path_SetTarget(void *path, const char *data, uint32_t len);
MGMTMSG_API void *GNMI_Path_AppendPathElem(void *path);
MGMTMSG_API void *GNMI_Path_GetPathElem(void *path, int index);
MGMTMSG_API int GNMI_Path_PathElemSizeof(void *path);
MGMTMSG_API const char *GNMI_PathElem_GetName(void *elem);
MGMTMSG_API void GNMI_PathElem_SetName(void *elem, const char *data, uint32_t len);
/* Number of distinct keys. */
MGMTMSG_API int GNMI_PathElem_KeySizeof(void *elem);
/* Stores key and value of entry `index` in the keys' own (hash) order, which
 * holds while the element is unchanged; a negative index gives the first
 * entry, an index at or past the end "" for both. The strings live until the
 * element's keys change. */
MGMTMSG_API void GNMI_PathElem_GetKey(void *elem, int index, const char **key, const char **value);
/* Sets the value of key, adding the key when absent (never a second entry). */
MGMTMSG_API void GNMI_PathElem_AppendKey(void *elem, const char *key, uint32_t keyLen,
                                         const char *value, uint32_t valueLen);

#ifdef __cplusplus
}
#endif

#endif
