/** @defgroup gnmi_stream gNMI response reset for streams and reused contexts
 * @brief mgmtmsg: emptying a gNMI context's response (`gnmi/gnmi_stream.h`).
 *
 * A device answers a Subscribe with a stream of update messages, and a busy
 * target answers Get after Get on a context kept per connection or per
 * worker. The reset entry points below empty a context's response so that
 * the next reply is built from an empty message on the same context, with
 * the memory of the previous replies reused.
 *
 * Conventions (those of `gnmi/gnmi_ex.h` hold as well):
 *  1. Handles taken from a response before its reset (a notification, an
 *     update, a path, a string read from them) are invalid after it. Handles
 *     into the request, and for Subscribe into the sync response, stay valid.
 *  2. A reset returns 1, or 0 when memory could not be had, the response then
 *     left as it was. No exception leaves a reset. A context of another kind
 *     (a Get context given to the Subscribe reset, and so on) is refused with
 *     0 and left alone; a handle that is no context at all is undefined.
 *  3. From its first reset on, a context keeps its response in a memory region
 *     of its own, which each reset rewinds; building a reply of the same shape
 *     again takes no message objects from the heap (the characters of string
 *     values longer than the message runtime's inline string size still are).
 *     The region grows to at most about twice the largest reply built
 *     between two resets and is freed with the context by its DeInit. A
 *     context never reset keeps its response on the heap.
 *  4. The output buffer is kept: the bytes of the last Serialize stay valid
 *     across a reset, until the next Serialize or the DeInit.
 *  5. As for every entry point, a context is used by one thread at a time,
 *     and it may move between threads: the region serves the thread that
 *     first reaches the response through the context after the reset (its
 *     first builder), whichever thread reset it. Parts of a reply built on a
 *     further thread, through handles handed to it, take blocks of that
 *     thread's own, freed by the next reset; memory stays bounded either way.
 *
 * Calling order of a stream: Init and Parse once; then for each message:
 * reset, build, Serialize, send; DeInit at the end.
 * @{
 */
/** @file
 * Resetting a gNMI context's response for its next reply: see @ref gnmi_stream. */
#ifndef MGMTMSG_GNMI_STREAM_H
#define MGMTMSG_GNMI_STREAM_H

#ifndef MGMTMSG_API
#define MGMTMSG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Empties a Subscribe context's update response: the next
 * GNMI_SubscribeResponse_GetNotification makes a new, empty notification. The
 * request and the sync response are left as they are.
 * @param ctx a Subscribe context.
 * @return 1; 0 when memory could not be had, or for a context of another
 * kind (convention 2). */
MGMTMSG_API int GNMI_SubscribeResponse_Reset(void* ctx);

/** Empties a Get context's response (no notification left); the request is
 * left as it is, to be replaced by the next Parse.
 * @param ctx a Get context.
 * @return 1; 0 when memory could not be had, or for a context of another
 * kind (convention 2). */
MGMTMSG_API int GNMI_GetResponse_Reset(void* ctx);

/** Empties a Set context's response (no prefix, result, timestamp or
 * extension left); the request is left as it is.
 * @param ctx a Set context.
 * @return 1; 0 when memory could not be had, or for a context of another
 * kind (convention 2). */
MGMTMSG_API int GNMI_SetResponse_Reset(void* ctx);

#ifdef __cplusplus
}
#endif

/** @} */
#endif
