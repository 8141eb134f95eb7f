/** @defgroup gnmi_wire gNMI notification writer
 * @brief mgmtmsg: telemetry written straight into wire bytes
 * (`gnmi/gnmi_wire.h`).
 *
 * A sampled stream sends the same leaf paths message after message with new
 * values. A wire path holds a path encoded once; the writer then puts
 * notifications of such paths and plain values straight into bytes, with no
 * message objects in between, on a Subscribe context (its update response)
 * or a Get context (its response, of one or more notifications).
 *
 * Conventions (those of `gnmi/gnmi_ex.h` hold as well):
 *  1. Calling order for one message: Begin, then any number of updates (the
 *     Add calls but AddDelete), then any number of deletes (AddDelete), then
 *     Begin again for the next notification of a Get response, and at the end
 *     Finish. On a Subscribe context, which answers with one notification per
 *     message, each Begin starts a new message, dropping one begun and not
 *     finished. An Add with no notification begun, or an update after a
 *     delete of the same notification, returns 0 and writes nothing.
 *  2. The bytes are those that building the same content with the entry
 *     points of @ref gnmi into an empty response (AppendNotification or
 *     GetNotification, SetTimestamp, AddPrefix, AppendUpdate with SetPath and
 *     SetVal, AppendDelete) and serializing it gives, byte for byte: a
 *     timestamp of 0 is left out as the runtime leaves it out, a value of 0
 *     or empty text is written as the runtime writes a oneof member. Where a
 *     path element has several keys, they are in the order in which the
 *     runtime wrote them when the wire path was made, which for the same
 *     path in a response may differ (both are the same message).
 *  3. The context's response message is neither read nor changed: Finish
 *     hands out the bytes of what was written, in the context's output
 *     buffer, as a Serialize of the response would (same `out` and `outLen`
 *     contract: valid until the next Serialize or Finish on the context or
 *     its DeInit). The writer keeps a second buffer of its own, into which
 *     the next message is written while the bytes handed out stay valid.
 *     Both grow to the largest message and are kept: at steady state a
 *     message takes no memory from the heap.
 *  4. Every writer call returns 1, or 0 when memory runs out or the message
 *     would pass 52428800 bytes; after a 0 the message being written, and
 *     the output handed out before, are as they were. No exception leaves a
 *     writer call.
 *  5. Strings and bytes are a pointer and a byte count, copied as they are;
 *     NULL with a count of 0 is the empty value, NULL with another count
 *     returns 0. The `string` values (string, ASCII) are not checked for
 *     UTF-8. The gNMI 0.7.0 TypedValue has no double member: a double goes as
 *     a float (AddFloat) or as JSON text.
 *  6. A wire path belongs to its maker until GNMI_WirePath_Free and may be
 *     used by any number of contexts on any threads at once; it does not
 *     refer to the path it was made from.
 * @{
 */
/** @file
 * The gNMI notification writer: see @ref gnmi_wire. */
#ifndef MGMTMSG_GNMI_WIRE_H
#define MGMTMSG_GNMI_WIRE_H

#include <stdint.h>

#ifndef MGMTMSG_API
#define MGMTMSG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Encodes `path` (any Path handle, a read-only one included) once.
 * @return the wire path, or NULL when memory runs out or its encoding passes
 * 52428800 bytes. */
MGMTMSG_API void* GNMI_WirePath_Make(void* path);
/** Frees a wire path; NULL is ignored. */
MGMTMSG_API void GNMI_WirePath_Free(void* wirePath);

/** Begins a notification (convention 1).
 * @param ctx a Get or Subscribe context.
 * @param timestamp the notification's timestamp (0: none written).
 * @param prefix a wire path, or NULL for no prefix.
 * @return 1, or 0 (convention 4). */
MGMTMSG_API int GNMI_Writer_Begin(void* ctx, int64_t timestamp, void* prefix);

/** Adds an update of `wirePath` with an int_val. @return 1, or 0 (conventions 1, 4). */
MGMTMSG_API int GNMI_Writer_AddInt(void* ctx, void* wirePath, int64_t value);
/** Adds an update with a uint_val. @return 1, or 0 (conventions 1, 4). */
MGMTMSG_API int GNMI_Writer_AddUint(void* ctx, void* wirePath, uint64_t value);
/** Adds an update with a bool_val, true for any non-zero flag.
 * @return 1, or 0 (conventions 1, 4). */
MGMTMSG_API int GNMI_Writer_AddBool(void* ctx, void* wirePath, int flag);
/** Adds an update with a float_val. @return 1, or 0 (conventions 1, 4). */
MGMTMSG_API int GNMI_Writer_AddFloat(void* ctx, void* wirePath, float value);
/** Adds an update with a string_val. @return 1, or 0 (conventions 1, 4, 5). */
MGMTMSG_API int GNMI_Writer_AddString(void* ctx, void* wirePath, const char* data, uint32_t len);
/** Adds an update with a bytes_val. @return 1, or 0 (conventions 1, 4, 5). */
MGMTMSG_API int GNMI_Writer_AddBytes(void* ctx, void* wirePath, const char* data, uint32_t len);
/** Adds an update with a json_val. @return 1, or 0 (conventions 1, 4, 5). */
MGMTMSG_API int GNMI_Writer_AddJson(void* ctx, void* wirePath, const char* data, uint32_t len);
/** Adds an update with a json_ietf_val. @return 1, or 0 (conventions 1, 4, 5). */
MGMTMSG_API int GNMI_Writer_AddJsonIetf(void* ctx, void* wirePath, const char* data, uint32_t len);
/** Adds an update with an ascii_val. @return 1, or 0 (conventions 1, 4, 5). */
MGMTMSG_API int GNMI_Writer_AddAscii(void* ctx, void* wirePath, const char* data, uint32_t len);
/** Adds a delete of `wirePath`. @return 1, or 0 (conventions 1, 4). */
MGMTMSG_API int GNMI_Writer_AddDelete(void* ctx, void* wirePath);

/** Finishes the message (a message with no notification is empty) and hands
 * out its bytes (convention 3); the next writer call starts a new message.
 * @return 1, or 0 when memory runs out (convention 4). */
MGMTMSG_API int GNMI_Writer_Finish(void* ctx, void** out, int* outLen);

#ifdef __cplusplus
}
#endif

/** @} */
#endif
