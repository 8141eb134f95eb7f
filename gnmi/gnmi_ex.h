/** @defgroup gnmi gNMI entry points
 * @brief mgmtmsg: gNMI entry points for C callers (`gnmi/gnmi_ex.h`).
 *
 * Conventions (each entry point below is commented only where it differs;
 * "convention N" refers to this list):
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
 *     (1 is success). Nothing is logged, except the fatal index checks and
 *     the runtime's report of a `string` field holding invalid UTF-8 (such a
 *     field fails a Parse, and is logged and written all the same by
 *     Serialize).
 *  5. An index outside a repeated field's bounds is a fatal error raised
 *     through the message runtime's check ("CHECK failed: ..."): the call does
 *     not return. Readers that answer out-of-range indices themselves say so.
 *  6. Strings are passed in as a pointer and a byte count: exactly that many
 *     bytes are copied, embedded NULs included, no terminator needed; NULL
 *     with count 0 sets the empty string. Strings returned are NUL-terminated,
 *     never NULL, and point into the message until the field changes; a value
 *     holding NULs reads back up to its first NUL.
 *  7. Flags are int: any non-zero value is true; readers return 0 or 1.
 *     Enumerations are int holding the schema's value, never range-checked.
 *  8. A context or message is used by one thread at a time; distinct contexts
 *     may be used on different threads at once.
 *  9. Get on a sub-message returns it read-only, or the type's shared default
 *     instance when it is absent (never NULL, unless said). Set or Add on a
 *     sub-message returns it mutable, creating it empty when absent. Append
 *     adds a new empty element at the end of a list and returns it. Has
 *     returns 1 when the sub-message is present (0 on a default instance).
 *  10. No entry point catches an exception: memory exhaustion while building
 *      surfaces as std::bad_alloc, and NULL data with a non-zero count as
 *      std::logic_error (the field is then unchanged).
 * @{
 */
/** @file
 * The gNMI entry points for C callers: see @ref gnmi. */
#ifndef MGMTMSG_GNMI_EX_H
#define MGMTMSG_GNMI_EX_H

#include <stdint.h>

#ifndef MGMTMSG_API
#define MGMTMSG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup gnmi_lifecycle RPC lifecycle
 * Calling order: Init, Parse, the readers and builders of the context's
 * family, Serialize (as often as needed), DeInit.
 *
 * Init creates an empty context (request, response(s), no output buffer).
 * Parse clears the request and decodes len bytes at data into it; the
 * response and everything built in it are kept. After a 0 the request holds
 * what was decoded before the fault. A negative len is not a 0 result but
 * the runtime's fatal error. Serialize encodes the response into the
 * context's output buffer and stores its address and length in `*out` and
 * `*outLen`; the bytes belong to the context and stay valid until the next
 * Serialize on it (which reuses the buffer, or frees it for a larger
 * response) or its DeInit. A response with nothing in it gives `*out` NULL
 * (on a fresh context) and `*outLen` 0. Serialize does not clear the
 * response. It fails (0, with `*out` and `*outLen` untouched) when the output
 * buffer cannot be allocated or the encoding would exceed INT_MAX bytes. Parse,
 * Serialize and DeInit act by the class of the context they are given,
 * whichever family's name is used.
 * @{ */
/** Creates a Capabilities context. @return the context, or NULL (convention 4). */
MGMTMSG_API void* GNMI_Capability_Init(void);
/** Creates a Get context. @return the context, or NULL (convention 4). */
MGMTMSG_API void* GNMI_Get_Init(void);
/** Creates a Set context. @return the context, or NULL (convention 4). */
MGMTMSG_API void* GNMI_Set_Init(void);
/** Creates a Subscribe context (a request, an update and a sync response).
 * @return the context, or NULL (convention 4). */
MGMTMSG_API void* GNMI_Subscribe_Init(void);

/** Parses a CapabilityRequest. @return 1, or 0 when the bytes are no valid encoding. */
MGMTMSG_API int GNMI_CapabilityRequest_Parse(void* ctx, const void* data, int len);
/** Parses a GetRequest. @return 1, or 0 when the bytes are no valid encoding. */
MGMTMSG_API int GNMI_GetRequest_Parse(void* ctx, const void* data, int len);
/** Parses a SetRequest. @return 1, or 0 when the bytes are no valid encoding. */
MGMTMSG_API int GNMI_SetRequest_Parse(void* ctx, const void* data, int len);
/** Parses a SubscribeRequest. @return 1, or 0 when the bytes are no valid encoding. */
MGMTMSG_API int GNMI_SubscribeRequest_Parse(void* ctx, const void* data, int len);

/** Serializes the CapabilityResponse. @return 1, or 0 on failure; an output
 * buffer that cannot be allocated is not a 0 result but std::bad_alloc here. */
MGMTMSG_API int GNMI_CapabilityResponse_Serialize(void* ctx, void** out, int* outLen);
/** Serializes the GetResponse. @return 1, or 0 on failure. */
MGMTMSG_API int GNMI_GetResponse_Serialize(void* ctx, void** out, int* outLen);
/** Serializes the SetResponse. @return 1, or 0 on failure. */
MGMTMSG_API int GNMI_SetResponse_Serialize(void* ctx, void** out, int* outLen);
/** Serializes the Subscribe update response. @return 1, or 0 on failure. */
MGMTMSG_API int GNMI_SubscribeResponse_Serialize(void* ctx, void** out, int* outLen);
/** Serializes the Subscribe sync response, into the same buffer as the update
 * response (overwriting it). Needs a Subscribe context. @return 1, or 0 on failure. */
MGMTMSG_API int GNMI_SubscribeSyncResponse_Serialize(void* ctx, void** out, int* outLen);

/** Destroys a context with its messages and output buffer; NULL is ignored. */
MGMTMSG_API void GNMI_Capability_DeInit(void* ctx);
/** Destroys a context with its messages and output buffer; NULL is ignored. */
MGMTMSG_API void GNMI_Get_DeInit(void* ctx);
/** Destroys a context with its messages and output buffer; NULL is ignored. */
MGMTMSG_API void GNMI_Set_DeInit(void* ctx);
/** Destroys a context with its messages and output buffer; NULL is ignored. */
MGMTMSG_API void GNMI_Subscribe_DeInit(void* ctx);
/** @} */

/** @defgroup gnmi_get GetRequest and GetResponse
 * Readers of a Get context's request and the builder of its response. Every
 * handle returned into the request is read-only (convention 3); an indexed
 * reader is fatal outside 0 to count - 1 (convention 5).
 * @{ */
/** @return 1 when the request carries a prefix, even an empty one. */
MGMTMSG_API int GNMI_GetRequest_HasPrefix(void* ctx);
/** @return the prefix (a Path), or NULL when the request has no prefix. */
MGMTMSG_API void* GNMI_GetRequest_GetPrefix(void* ctx);
/** @return path `index` (a Path). */
MGMTMSG_API void* GNMI_GetRequest_GetPath(void* ctx, int index);
/** @return the number of paths. */
MGMTMSG_API int GNMI_GetRequest_PathSizeof(void* ctx);
/** @return the DataType: 0 ALL, 1 CONFIG, 2 STATE, 3 OPERATIONAL. */
MGMTMSG_API int GNMI_GetRequest_GetType(void* ctx);
/** @return the Encoding: 0 JSON, 1 BYTES, 2 PROTO, 3 ASCII, 4 JSON_IETF. */
MGMTMSG_API int GNMI_GetRequest_GetEncoding(void* ctx);
/** @return use_models entry `index` (a ModelData). */
MGMTMSG_API void* GNMI_GetRequest_GetUseModels(void* ctx, int index);
/** @return the number of use_models entries. */
MGMTMSG_API int GNMI_GetRequest_UseModelsSizeof(void* ctx);
/** @return extension `index` (a gnmi_ext.Extension, which no entry point reads). */
MGMTMSG_API void* GNMI_GetRequest_GetExtension(void* ctx, int index);
/** @return the number of extensions. */
MGMTMSG_API int GNMI_GetRequest_ExtensionSizeof(void* ctx);

/** @return a new Notification appended to the response (convention 9). */
MGMTMSG_API void* GNMI_GetResponse_AppendNotification(void* ctx);
/** @} */

/** @defgroup gnmi_set SetRequest and SetResponse
 * Readers of a Set context's request and builders of its response, as for
 * Get.
 * @{ */
/** @return 1 when the request carries a prefix, even an empty one. */
MGMTMSG_API int GNMI_SetRequest_HasPrefix(void* ctx);
/** @return the prefix (a Path), or NULL when the request has no prefix. */
MGMTMSG_API void* GNMI_SetRequest_GetPrefix(void* ctx);
/** @return delete `index` (a Path). */
MGMTMSG_API void* GNMI_SetRequest_GetDelete(void* ctx, int index);
/** @return the number of deletes. */
MGMTMSG_API int GNMI_SetRequest_DeleteSizeof(void* ctx);
/** @return replace `index` (an Update). */
MGMTMSG_API void* GNMI_SetRequest_GetReplace(void* ctx, int index);
/** @return the number of replaces. */
MGMTMSG_API int GNMI_SetRequest_ReplaceSizeof(void* ctx);
/** @return update `index` (an Update). */
MGMTMSG_API void* GNMI_SetRequest_GetUpdate(void* ctx, int index);
/** @return the number of updates. */
MGMTMSG_API int GNMI_SetRequest_UpdateSizeof(void* ctx);
/** @return extension `index` (a gnmi_ext.Extension, which no entry point reads). */
MGMTMSG_API void* GNMI_SetRequest_GetExtension(void* ctx, int index);
/** @return the number of extensions. */
MGMTMSG_API int GNMI_SetRequest_ExtensionSizeof(void* ctx);

/** @return the response's prefix (a Path), made empty when absent (convention 9). */
MGMTMSG_API void* GNMI_SetResponse_AddPrefix(void* ctx);
/** @return a new UpdateResult appended to the response's results (field response). */
MGMTMSG_API void* GNMI_SetResponse_AppendUpdateResult(void* ctx);
/** Sets the response's timestamp (nanoseconds since the Unix epoch). */
MGMTMSG_API void GNMI_SetResponse_SetTimestamp(void* ctx, int64_t timestamp);
/** @return a new gnmi_ext.Extension appended to the response. */
MGMTMSG_API void* GNMI_SetResponse_AppendExtension(void* ctx);
/** @} */

/** @defgroup gnmi_capability CapabilityRequest and CapabilityResponse
 * Readers of a Capabilities context's request and builders of its response,
 * as for Get.
 * @{ */
/** @return extension `index` (a gnmi_ext.Extension, which no entry point reads). */
MGMTMSG_API void* GNMI_CapabilityRequest_GetExtension(void* ctx, int index);
/** @return the number of extensions. */
MGMTMSG_API int GNMI_CapabilityRequest_ExtensionSizeof(void* ctx);
/** @return a new ModelData appended to the supported models. */
MGMTMSG_API void* GNMI_CapabilityResponse_AppendSupportedModels(void* ctx);
/** Appends the value as given, known to the Encoding enumeration or not. */
MGMTMSG_API void GNMI_CapabilityResponse_AppendSupportedEncodings(void* ctx, int encoding);
/** @return a new gnmi_ext.Extension appended to the response. */
MGMTMSG_API void* GNMI_CapabilityResponse_AppendExtension(void* ctx);
/** Sets gNMI_version (convention 6); a negative len throws std::logic_error. */
MGMTMSG_API void GNMI_CapabilityResponse_SetGnmiVersion(void* ctx, const char* text, int len);
/** @} */

/** @defgroup gnmi_subscribe SubscribeRequest and SubscribeResponse
 * Readers of a Subscribe context's request and builders of its update and
 * sync responses. The request readers read the subscription list when the
 * request's oneof holds a subscribe, else an empty one (the subscribe view):
 * defaults, counts of 0, NULL prefix. The four
 * per-subscription field readers have no range test of their own: fatal
 * outside 0 to SubscriptionSize - 1 (convention 5), on any index when the
 * request is no subscribe. Three entry points build although their names
 * say otherwise: GNMI_SubscribeResponse_GetNotification,
 * GNMI_SubscribeRequest_SyncResponse and GNMI_SubscribeRequest_SetAliases.
 * @{ */
/** @return 1 when the request's oneof holds a subscribe (list). */
MGMTMSG_API int GNMI_SubscribeRequest_HasSubscribe(void* ctx);
/** @return 1 when the request's oneof holds a poll. */
MGMTMSG_API int GNMI_SubscribeRequest_HasPoll(void* ctx);
/** @return 1 when the request's oneof holds an alias list. */
MGMTMSG_API int GNMI_SubscribeRequest_HasAliases(void* ctx);
/** @return the number of extensions, counted whatever the oneof holds. */
MGMTMSG_API int GNMI_SubscribeRequest_ExtensionSizeof(void* ctx);
/** @return the number of subscriptions of the subscribe view. */
MGMTMSG_API int GNMI_SubscribeRequest_SubscriptionSize(void* ctx);
/** @return the number of use_models entries of the subscribe view. */
MGMTMSG_API int GNMI_SubscribeRequest_UseModelsSizeof(void* ctx);
/** @return use_aliases of the subscribe view. */
MGMTMSG_API int GNMI_SubscribeRequest_UseAliases(void* ctx);
/** @return allow_aggregation of the subscribe view. */
MGMTMSG_API int GNMI_SubscribeRequest_GetAggregation(void* ctx);
/** @return updates_only of the subscribe view. */
MGMTMSG_API int GNMI_SubscribeRequest_GetUpdatesOnly(void* ctx);
/** @return the subscribe view's mode: 0 STREAM, 1 ONCE, 2 POLL. */
MGMTMSG_API int GNMI_SubscribeRequest_GetSubscriptionMode(void* ctx);
/** @return the subscribe view's Encoding (0 when the request is no subscribe). */
MGMTMSG_API int GNMI_SubscribeRequest_GetEncoding(void* ctx);
/** @return 1 when the request is a subscribe whose list carries a prefix. */
MGMTMSG_API int GNMI_SubscribeRequest_HasPrefix(void* ctx);
/** @return the list's prefix (a Path), or NULL when it has none (or the
 * request is no subscribe). */
MGMTMSG_API void* GNMI_SubscribeRequest_GetPrefix(void* ctx);
/** @return 1 when the request is a subscribe whose list carries a qos. */
MGMTMSG_API int GNMI_SubscribeRequest_HasQosMarking(void* ctx);
/** @return the qos marking; 0 when there is no qos. */
MGMTMSG_API uint32_t GNMI_SubscribeRequest_GetQosMarking(void* ctx);
/** @return subscription `index` (a Subscription, whose fields the indexed
 * readers below give), or NULL when index is at or past the end; a negative
 * index is fatal. */
MGMTMSG_API void* GNMI_SubscribeRequest_GetSubscribe(void* ctx, int index);
/** @return that subscription's path (the Path default instance when it has
 * none); NULL as above. */
MGMTMSG_API void* GNMI_SubscribeRequest_GetPath(void* ctx, int index);
/** @return subscription `index`'s sample_interval (nanoseconds). */
MGMTMSG_API uint64_t GNMI_SubscribeRequest_GetSampleInterval(void* ctx, int index);
/** @return subscription `index`'s heartbeat_interval (nanoseconds). */
MGMTMSG_API uint64_t GNMI_SubscribeRequest_GetHeartbeatInterval(void* ctx, int index);
/** @return subscription `index`'s suppress_redundant. */
MGMTMSG_API int GNMI_SubscribeRequest_GetSuppressRedundant(void* ctx, int index);
/** @return subscription `index`'s mode: 0 TARGET_DEFINED, 1 ON_CHANGE, 2 SAMPLE. */
MGMTMSG_API int GNMI_SubscribeRequest_GetSampleMode(void* ctx, int index);
/** Builds: replaces the request's oneof by an alias list (discarding a
 * subscribe or poll, and the handles into it) and appends a new Alias to it.
 * @return the new Alias, which no entry point fills. */
MGMTMSG_API void* GNMI_SubscribeRequest_SetAliases(void* ctx);

/** Builds: the update response's notification, made (replacing any other
 * member of its oneof) when absent. @return the Notification, mutable. */
MGMTMSG_API void* GNMI_SubscribeResponse_GetNotification(void* ctx);
/** Reads the update response. @return update `index` of its notification
 * (an Update); fatal outside the list, also before any notification is made. */
MGMTMSG_API void* GNMI_SubscribeRequest_GetUpdate(void* ctx, int index);
/** Builds: sets the sync response's sync_response member, which is sent even
 * when false. */
MGMTMSG_API void GNMI_SubscribeRequest_SyncResponse(void* ctx, int flag);
/** @} */

/** @defgroup gnmi_notification Notification
 * Reached from GNMI_GetResponse_AppendNotification or
 * GNMI_SubscribeResponse_GetNotification; indexed readers are fatal outside
 * 0 to count - 1 (convention 5).
 * @{ */
/** Sets the timestamp (nanoseconds since the Unix epoch). */
MGMTMSG_API void GNMI_Notification_SetTimestamp(void* notification, int64_t timestamp);
/** @return the timestamp. */
MGMTMSG_API int64_t GNMI_Notification_GetTimestamp(void* notification);
/** @return the prefix (a Path), made empty when absent (convention 9). */
MGMTMSG_API void* GNMI_Notification_AddPrefix(void* notification);
/** @return 1 when the prefix is present. */
MGMTMSG_API int GNMI_Notification_HasPrefix(void* notification);
/** @return the prefix, read-only; the Path default instance when absent. */
MGMTMSG_API void* GNMI_Notification_GetPrefix(void* notification);
/** @return the alias (convention 6). */
MGMTMSG_API const char* GNMI_Notification_GetAlias(void* notification);
/** Sets the alias (convention 6). */
MGMTMSG_API void GNMI_Notification_SetAlias(void* notification, const char* data, uint32_t len);
/** @return a new Update appended to the updates. */
MGMTMSG_API void* GNMI_Notification_AppendUpdate(void* notification);
/** @return update `index` (an Update), read-only. */
MGMTMSG_API void* GNMI_Notification_GetUpdate(void* notification, int index);
/** @return the number of updates. */
MGMTMSG_API int GNMI_Notification_UpdateSizeof(void* notification);
/** @return a new Path appended to the deletes. */
MGMTMSG_API void* GNMI_Notification_AppendDelete(void* notification);
/** @return delete `index` (a Path), read-only. */
MGMTMSG_API void* GNMI_Notification_GetDelete(void* notification, int index);
/** @return the number of deletes. */
MGMTMSG_API int GNMI_Notification_DeleteSizeof(void* notification);
/** Sets atomic (convention 7). */
MGMTMSG_API void GNMI_Notification_SetAtomic(void* notification, int flag);
/** @return atomic. */
MGMTMSG_API int GNMI_Notification_GetAtomic(void* notification);
/** @} */

/** @defgroup gnmi_update Update, UpdateResult and ModelData
 * Reached from a notification, a response builder or a request reader.
 * @{ */
/** @return the path (a Path), made empty when absent (convention 9). */
MGMTMSG_API void* GNMI_Update_SetPath(void* update);
/** @return the path, read-only; the Path default instance when absent. */
MGMTMSG_API void* GNMI_Update_GetPath(void* update);
/** @return 1 when the path is present. */
MGMTMSG_API int GNMI_Update_HasPath(void* update);
/** @return the value (a TypedValue), made empty when absent (convention 9). */
MGMTMSG_API void* GNMI_Update_SetVal(void* update);
/** @return the value, read-only; the TypedValue default instance when absent. */
MGMTMSG_API void* GNMI_Update_GetVal(void* update);
/** @return 1 when the value is present. */
MGMTMSG_API int GNMI_Update_HasVal(void* update);
/** Sets duplicates. */
MGMTMSG_API void GNMI_Update_SetDuplicates(void* update, uint32_t count);
/** @return duplicates. */
MGMTMSG_API uint32_t GNMI_Update_GetDuplicates(void* update);

/** @return the result's path (a Path), made empty when absent; no entry point reads it. */
MGMTMSG_API void* GNMI_UpdateResult_AddPath(void* result);
/** Sets op (0 INVALID, 1 DELETE, 2 REPLACE, 3 UPDATE), any value kept (convention 7). */
MGMTMSG_API void GNMI_UpdateResult_SetOp(void* result, int op);

/** @return the model's name (convention 6). */
MGMTMSG_API const char* GNMI_ModelData_GetName(void* model);
/** @return the model's organization (convention 6). */
MGMTMSG_API const char* GNMI_ModelData_GetOrganization(void* model);
/** @return the model's version (convention 6). */
MGMTMSG_API const char* GNMI_ModelData_GetVersion(void* model);
/** Sets the model's name (convention 6). */
MGMTMSG_API void GNMI_ModelData_SetName(void* model, const char* data, uint32_t len);
/** Sets the model's organization (convention 6). */
MGMTMSG_API void GNMI_ModelData_SetOrganization(void* model, const char* data, uint32_t len);
/** Sets the model's version (convention 6). */
MGMTMSG_API void GNMI_ModelData_SetVersion(void* model, const char* data, uint32_t len);
/** @} */

/** @defgroup gnmi_value TypedValue and ScalarArray
 * A typed value holds one member: each setter replaces whichever member was
 * set before (a leaf list obtained earlier is then freed). Only json_val can
 * be read back here; `gnmi/gnmi_value.h` reads and sets every member.
 * @{ */
/** Sets string_val (convention 6). */
MGMTMSG_API void GNMI_TypedValue_SetStringVal(void* value, const char* data, uint32_t len);
/** Sets int_val. */
MGMTMSG_API void GNMI_TypedValue_SetIntVal(void* value, int64_t number);
/** Sets uint_val. */
MGMTMSG_API void GNMI_TypedValue_SetUintVal(void* value, uint64_t number);
/** Sets bool_val (convention 7). */
MGMTMSG_API void GNMI_TypedValue_SetBoolVal(void* value, int flag);
/** Sets float_val, a 32-bit float as given. */
MGMTMSG_API void GNMI_TypedValue_SetFloatVal(void* value, float number);
/** @return the value's leaf list (a ScalarArray), made empty when the value
 * holds another member or none. */
MGMTMSG_API void* GNMI_TypedValue_LeaflistVal(void* value);
/** @return a new element (a TypedValue) appended to a leaf list. */
MGMTMSG_API void* GNMI_TypedValue_AddElement(void* leaflist);
/** Sets json_val (convention 6). */
MGMTMSG_API void GNMI_TypedValue_SetJsonVal(void* value, const char* data, uint32_t len);
/** @return json_val up to its first NUL; "" when the value holds another member. */
MGMTMSG_API const char* GNMI_TypedValue_GetJsonVal(void* value);
/** Sets json_ietf_val (convention 6). */
MGMTMSG_API void GNMI_TypedValue_SetJsonIetfVal(void* value, const char* data, uint32_t len);
/** The same as GNMI_TypedValue_SetJsonIetfVal, under a second name. */
MGMTMSG_API void GNMI_TypedValue_SetJsonietf_Val(void* value, const char* data, uint32_t len);
/** Sets proto_bytes (convention 6). */
MGMTMSG_API void GNMI_TypedValue_SetProtoBytes(void* value, const char* data, uint32_t len);
/** @} */

/** @defgroup gnmi_path Path and PathElem
 * Build a path with AppendPathElem, SetName and AppendKey per element; read it
 * with PathElemSizeof, GetPathElem, GetName, KeySizeof and GetKey.
 * @{ */
/** @return the origin (convention 6). */
MGMTMSG_API const char* GNMI_Path_GetOrigin(void* path);
/** Sets the origin (convention 6). */
MGMTMSG_API void GNMI_Path_SetOrigin(void* path, const char* data, uint32_t len);
/** @return the target (convention 6). */
MGMTMSG_API const char* GNMI_Path_GetTarget(void* path);
/** Sets the target (convention 6). */
MGMTMSG_API void GNMI_Path_SetTarget(void* path, const char* data, uint32_t len);
/** @return a new PathElem appended to the path. */
MGMTMSG_API void* GNMI_Path_AppendPathElem(void* path);
/** @return element `index` (a PathElem); fatal outside the list (convention 5). */
MGMTMSG_API void* GNMI_Path_GetPathElem(void* path, int index);
/** @return the number of elements. */
MGMTMSG_API int GNMI_Path_PathElemSizeof(void* path);
/** @return the element's name (convention 6). */
MGMTMSG_API const char* GNMI_PathElem_GetName(void* elem);
/** Sets the element's name (convention 6). */
MGMTMSG_API void GNMI_PathElem_SetName(void* elem, const char* data, uint32_t len);
/** @return the number of distinct keys. */
MGMTMSG_API int GNMI_PathElem_KeySizeof(void* elem);
/** Stores key and value of entry `index` in the keys' own (hash) order, which
 * holds while the element is unchanged; a negative index gives the first
 * entry, an index at or past the end "" for both. The strings live until the
 * element's keys change. */
MGMTMSG_API void GNMI_PathElem_GetKey(void* elem, int index, const char** key, const char** value);
/** Sets the value of key, adding the key when absent (never a second entry).
 * Memory exhaustion while the key table grows (at the first key, and when it
 * doubles) leaves the message runtime's map unusable: the element must not be
 * used or destroyed after that std::bad_alloc. */
MGMTMSG_API void GNMI_PathElem_AppendKey(void* elem, const char* key, uint32_t keyLen,
                                         const char* value, uint32_t valueLen);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */
#endif
