/** @defgroup grpci South IPC and dial-in entry points
 * @brief mgmtmsg: south IPC and dial-in entry points for C callers (`grpci/grpci_ex.h`).
 *
 * Conventions (each entry point below is commented only where it differs;
 * "convention N" refers to this list):
 *  1. Handles are opaque void*. A message handle designates a message made
 *     by an Init entry point; the caller owns it until the matching DeInit,
 *     which frees it with everything it owns. DeInit ignores NULL; no other
 *     entry point tests a handle for NULL.
 *  2. A record handle (a payload record of a SouthMsg, a Path of a SubsArgs)
 *     is borrowed from its message: never freed by the caller, valid until
 *     the message is freed or parsed into again.
 *  3. Failures are results: Init returns NULL, Parse and Serialize return 0
 *     (1 is success). Parse clears the message and decodes exactly `size`
 *     bytes, which carry no length prefix; after a 0 the message is not to be
 *     used. A negative `size` is not a 0 result but the message runtime's
 *     fatal error. Nothing is logged, except the fatal index check and the
 *     runtime's report of a `string` field holding invalid UTF-8 (such a
 *     field fails a Parse, and is logged and written all the same by
 *     Serialize).
 *  4. Serialize allocates one block with OXA_Malloc_F(ownerId,
 *     g_aucOxaMemPt[0], ...) and stores it in `*out` with its length in
 *     `*outLen`. The block belongs to the caller, outlives the message and is
 *     released with OXA_Free_F. An encoding longer than 52428800 bytes is
 *     refused before anything is allocated. On failure the out-arguments are
 *     untouched and nothing is left allocated.
 *  5. Strings are passed in as a pointer and a byte count: exactly that many
 *     bytes are copied, embedded NULs included, no terminator needed; NULL
 *     with count 0 sets the empty string. Strings returned are NUL-terminated,
 *     never NULL, and point into the message until the field is set again or
 *     the message is freed or parsed into.
 *  6. Integers are stored and returned unchanged, never range-checked; so
 *     are enumerations, as int32_t holding the schema's value. Flags are
 *     int32_t: any non-zero value is true; readers return 0 or 1.
 *  7. Memory exhaustion inside a setter or a record's creation surfaces as
 *     the C++ allocation exception, which no entry point catches; so does
 *     std::logic_error for NULL data with a non-zero count.
 *  8. A message, with the records and strings reached from it, is used by
 *     one thread at a time; distinct messages may be used on different
 *     threads at once.
 * @{
 */
/** @file
 * The south IPC and dial-in entry points for C callers: see @ref grpci. */
#ifndef MGMTMSG_GRPCI_EX_H
#define MGMTMSG_GRPCI_EX_H

#include <stdint.h>

#ifndef MGMTMSG_API
#define MGMTMSG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup grpci_south South IPC envelope (SouthMsg)
 * The message of the device's south IPC channel, sent as an IPC frame: the
 * message length N as a 32-bit word in host byte order (big-endian on the
 * device), then the N message bytes. Sending side: Init, setters, a
 * payload's Set then the record's setters, Serialize, DeInit (the frame
 * outlives the message), send, OXA_Free_F. Receiving side: check the length
 * word against the bytes received, Init, Parse of the N bytes after it,
 * getters, DeInit.
 * @{ */
/** Creates an empty SouthMsg. @return the handle, or NULL (convention 3). */
MGMTMSG_API void* GRPCI_SouthMsgInit(void);
/** Parses a bare SouthMsg: the frame without its length word.
 * @return 1, or 0 when the bytes are no valid encoding. */
MGMTMSG_API int32_t GRPCI_SouthMsgParse(void* msg, const void* data, int32_t size);
/** Builds the IPC frame (convention 4): the message length N as a 32-bit
 * word in host byte order, then the N message bytes; `*outLen` is N + 4.
 * @return 1, or 0 on failure. */
MGMTMSG_API int32_t GRPCI_SouthMsgSerialize(uint32_t ownerId, void* msg, void** out,
                                            uint32_t* outLen);
/** Frees the message with its records and strings; NULL is ignored. */
MGMTMSG_API void GRPCI_SouthMsgDeInit(void* msg);

/** @return connect_id. */
MGMTMSG_API uint32_t GRPCI_SouthMsgGetConnectId(void* msg);
/** Sets connect_id. */
MGMTMSG_API void GRPCI_SouthMsgSetConnectId(void* msg, uint32_t value);
/** @return rpc_id. */
MGMTMSG_API uint32_t GRPCI_SouthMsgGetRpcId(void* msg);
/** Sets rpc_id. */
MGMTMSG_API void GRPCI_SouthMsgSetRpcId(void* msg, uint32_t value);
/** @return trans_num. */
MGMTMSG_API uint32_t GRPCI_SouthMsgGetTransNum(void* msg);
/** Sets trans_num. */
MGMTMSG_API void GRPCI_SouthMsgSetTransNum(void* msg, uint32_t value);
/** @return req_type: 0 INVALID, 1 REQUEST, 2 RESPONSE, 3 NOTIFICATION (convention 6). */
MGMTMSG_API int32_t GRPCI_SouthMsgGetReqType(void* msg);
/** Sets req_type (convention 6). */
MGMTMSG_API void GRPCI_SouthMsgSetReqType(void* msg, int32_t value);
/** @return op_type: 0 INVALID, 1 CREATE, 2 DELETE, 3 MODIFY, 4 NOTIFY (convention 6). */
MGMTMSG_API int32_t GRPCI_SouthMsgGetOpType(void* msg);
/** Sets op_type (convention 6). */
MGMTMSG_API void GRPCI_SouthMsgSetOpType(void* msg, int32_t value);
/** @return msg_type: 0 INVALID, 1 CLIENT_RPC, 2 SERVER_RPC, 3 RPC_DATA (convention 6). */
MGMTMSG_API int32_t GRPCI_SouthMsgGetMsgType(void* msg);
/** Sets msg_type (convention 6); it is not tied to the payloads present. */
MGMTMSG_API void GRPCI_SouthMsgSetMsgType(void* msg, int32_t value);
/** @return vrid. */
MGMTMSG_API uint32_t GRPCI_SouthMsgGetVrId(void* msg);
/** Sets vrid. */
MGMTMSG_API void GRPCI_SouthMsgSetVrId(void* msg, uint32_t value);
/** @return result. */
MGMTMSG_API uint32_t GRPCI_SouthMsgGetResult(void* msg);
/** Sets result. */
MGMTMSG_API void GRPCI_SouthMsgSetResult(void* msg, uint32_t value);
/** @return result_description (convention 5). */
MGMTMSG_API const char* GRPCI_SouthMsgGetResultDesc(void* msg);
/** Sets result_description (convention 5). */
MGMTMSG_API void GRPCI_SouthMsgSetResultDesc(void* msg, const char* data, uint32_t len);

/** @name Payload records
 * Has: 1 when the record is present. Get: the record, or NULL when absent
 * (never created). Set: the record, created empty when absent; it copies
 * nothing, the caller fills the record afterwards. The four records are
 * independent: any of them may be present at once.
 * @{ */
/** @return 1 when the login record is present. */
MGMTMSG_API int32_t GRPCI_SouthMsgHasLogin(void* msg);
/** @return the login record (see @ref grpci_login), or NULL when absent. */
MGMTMSG_API void* GRPCI_SouthMsgGetLogin(void* msg);
/** @return the login record, created empty when absent; no entry point fills it. */
MGMTMSG_API void* GRPCI_SouthMsgSetLogin(void* msg);
/** @return 1 when the client RPC record is present. */
MGMTMSG_API int32_t GRPCI_SouthMsgHasClientRpc(void* msg);
/** @return the client RPC record (see @ref grpci_client_rpc), or NULL when absent. */
MGMTMSG_API void* GRPCI_SouthMsgGetClientRpc(void* msg);
/** @return the client RPC record, created empty when absent. */
MGMTMSG_API void* GRPCI_SouthMsgSetClientRpc(void* msg);
/** @return 1 when the server RPC record is present. */
MGMTMSG_API int32_t GRPCI_SouthMsgHasServerRpc(void* msg);
/** @return the server RPC record (see @ref grpci_server_rpc), or NULL when absent. */
MGMTMSG_API void* GRPCI_SouthMsgGetServerRpc(void* msg);
/** @return the server RPC record, created empty when absent. */
MGMTMSG_API void* GRPCI_SouthMsgSetServerRpc(void* msg);
/** @return 1 when the RPC data record is present. */
MGMTMSG_API int32_t GRPCI_SouthMsgHasRpcData(void* msg);
/** @return the RPC data record (see @ref grpci_rpc_data), or NULL when absent. */
MGMTMSG_API void* GRPCI_SouthMsgGetRpcData(void* msg);
/** @return the RPC data record, created empty when absent. */
MGMTMSG_API void* GRPCI_SouthMsgSetRpcData(void* msg);
/** @} */
/** @} */

/** @defgroup grpci_login Login record (LoginAuthenticate)
 * Read only: a login record is reached through GRPCI_SouthMsgGetLogin.
 * @{ */
/** @return user_name (convention 5). */
MGMTMSG_API const char* GRPCI_LoginAuthGetUserName(void* login);
/** @return password (convention 5). */
MGMTMSG_API const char* GRPCI_LoginAuthGetPassword(void* login);
/** @return handle (convention 5). */
MGMTMSG_API const char* GRPCI_LoginAuthGetHandle(void* login);
/** @return the token's bytes, which may hold NULs; their count is stored in `*len`. */
MGMTMSG_API const char* GRPCI_LoginAuthGetToken(void* login, uint32_t* len);
/** @} */

/** @defgroup grpci_client_rpc Client RPC record (ClientRpc)
 * An RPC in which the device is the gRPC client. client_name and client_id
 * are carried but have no entry point.
 * @{ */
/** @return peer_address (convention 5). */
MGMTMSG_API const char* GRPCI_ClientRpcGetPeerAddr(void* rpc);
/** Sets peer_address (convention 5). */
MGMTMSG_API void GRPCI_ClientRpcSetPeerAddr(void* rpc, const char* data, uint32_t len);
/** @return peer_port. */
MGMTMSG_API uint32_t GRPCI_ClientRpcGetPeerPort(void* rpc);
/** Sets peer_port. */
MGMTMSG_API void GRPCI_ClientRpcSetPeerPort(void* rpc, uint32_t value);
/** @return my_address (convention 5). */
MGMTMSG_API const char* GRPCI_ClientRpcGetMyAddr(void* rpc);
/** Sets my_address (convention 5). */
MGMTMSG_API void GRPCI_ClientRpcSetMyAddr(void* rpc, const char* data, uint32_t len);
/** @return my_port. */
MGMTMSG_API uint32_t GRPCI_ClientRpcGetMyPort(void* rpc);
/** Sets my_port. */
MGMTMSG_API void GRPCI_ClientRpcSetMyPort(void* rpc, uint32_t value);
/** @return vpn_index. */
MGMTMSG_API uint32_t GRPCI_ClientRpcGetVpnIndex(void* rpc);
/** Sets vpn_index. */
MGMTMSG_API void GRPCI_ClientRpcSetVpnIndex(void* rpc, uint32_t value);
/** @return vpn_name (convention 5). */
MGMTMSG_API const char* GRPCI_ClientRpcGetVpnName(void* rpc);
/** Sets vpn_name (convention 5). */
MGMTMSG_API void GRPCI_ClientRpcSetVpnName(void* rpc, const char* data, uint32_t len);
/** @return dscp. */
MGMTMSG_API uint32_t GRPCI_ClientRpcGetDscp(void* rpc);
/** Sets dscp, unclamped. */
MGMTMSG_API void GRPCI_ClientRpcSetDscp(void* rpc, uint32_t value);
/** @return no_tls, 0 or 1. */
MGMTMSG_API int32_t GRPCI_ClientRpcGetNoTls(void* rpc);
/** Sets no_tls (convention 6). */
MGMTMSG_API void GRPCI_ClientRpcSetNoTls(void* rpc, int32_t value);
/** @return rpc_name (convention 5). */
MGMTMSG_API const char* GRPCI_ClientRpcGetRpcName(void* rpc);
/** Sets rpc_name (convention 5). */
MGMTMSG_API void GRPCI_ClientRpcSetRpcName(void* rpc, const char* data, uint32_t len);
/** @return compression_type. */
MGMTMSG_API uint32_t GRPCI_ClientRpcGetCompression(void* rpc);
/** Sets compression_type. */
MGMTMSG_API void GRPCI_ClientRpcSetCompression(void* rpc, uint32_t value);
/** @} */

/** @defgroup grpci_server_rpc Server RPC record (ServerRpc)
 * An RPC in which the device is the gRPC server.
 * @{ */
/** @return peer_address (convention 5). */
MGMTMSG_API const char* GRPCI_ServerRpcGetPeerAddr(void* rpc);
/** Sets peer_address (convention 5). */
MGMTMSG_API void GRPCI_ServerRpcSetPeerAddr(void* rpc, const char* data, uint32_t len);
/** @return peer_port. */
MGMTMSG_API uint32_t GRPCI_ServerRpcGetPeerPort(void* rpc);
/** Sets peer_port. */
MGMTMSG_API void GRPCI_ServerRpcSetPeerPort(void* rpc, uint32_t value);
/** @return my_address (convention 5). */
MGMTMSG_API const char* GRPCI_ServerRpcGetMyAddr(void* rpc);
/** Sets my_address (convention 5). */
MGMTMSG_API void GRPCI_ServerRpcSetMyAddr(void* rpc, const char* data, uint32_t len);
/** @return my_port. */
MGMTMSG_API uint32_t GRPCI_ServerRpcGetMyPort(void* rpc);
/** Sets my_port. */
MGMTMSG_API void GRPCI_ServerRpcSetMyPort(void* rpc, uint32_t value);
/** @return vpn_index. */
MGMTMSG_API uint32_t GRPCI_ServerRpcGetVpnIndex(void* rpc);
/** Sets vpn_index. */
MGMTMSG_API void GRPCI_ServerRpcSetVpnIndex(void* rpc, uint32_t value);
/** @return vpn_name (convention 5). */
MGMTMSG_API const char* GRPCI_ServerRpcGetVpnName(void* rpc);
/** Sets vpn_name (convention 5). */
MGMTMSG_API void GRPCI_ServerRpcSetVpnName(void* rpc, const char* data, uint32_t len);
/** @return rpc_name (convention 5). */
MGMTMSG_API const char* GRPCI_ServerRpcGetRpcName(void* rpc);
/** Sets rpc_name (convention 5). */
MGMTMSG_API void GRPCI_ServerRpcSetRpcName(void* rpc, const char* data, uint32_t len);
/** @return the rpc_parament bytes, which may hold NULs; their count is stored in `*len`. */
MGMTMSG_API const char* GRPCI_ServerRpcGetRpcParament(void* rpc, uint32_t* len);
/** Sets rpc_parament (convention 5). */
MGMTMSG_API void GRPCI_ServerRpcSetRpcParament(void* rpc, const char* data, uint32_t len);
/** @return deadline. */
MGMTMSG_API uint32_t GRPCI_ServerRpcGetDeadLine(void* rpc);
/** Sets deadline. */
MGMTMSG_API void GRPCI_ServerRpcSetDeadLine(void* rpc, uint32_t value);
/** @return compression_type. */
MGMTMSG_API uint32_t GRPCI_ServerRpcGetCompression(void* rpc);
/** Sets compression_type. */
MGMTMSG_API void GRPCI_ServerRpcSetCompression(void* rpc, uint32_t value);
/** @return dscp. */
MGMTMSG_API uint32_t GRPCI_ServerRpcGetDscp(void* rpc);
/** Sets dscp, unclamped. */
MGMTMSG_API void GRPCI_ServerRpcSetDscp(void* rpc, uint32_t value);
/** @} */

/** @defgroup grpci_rpc_data RPC data record (RpcData)
 * The accessors work on the record of a SouthMsg and on a stand-alone record
 * alike. A stand-alone record is owned by the caller and cannot be attached
 * to a SouthMsg; it has no Parse or Serialize.
 * @{ */
/** Creates a stand-alone record. @return the handle, or NULL (convention 3). */
MGMTMSG_API void* GRPCI_RpcDataInit(void);
/** Frees a stand-alone record, never the one of a SouthMsg; NULL is ignored. */
MGMTMSG_API void GRPCI_RpcDataDeInit(void* data);
/** @return the data bytes, without their length: NUL-terminated in storage,
 * but they may hold NULs of their own. */
MGMTMSG_API const char* GRPCI_RpcDataGetData(void* data);
/** Sets the data bytes (convention 5). */
MGMTMSG_API void GRPCI_RpcDataSetData(void* data, const char* bytes, uint32_t len);
/** @return is_over, 0 or 1. */
MGMTMSG_API int32_t GRPCI_RpcDataGetIsOver(void* data);
/** Sets is_over (convention 6). */
MGMTMSG_API void GRPCI_RpcDataSetIsOver(void* data, int32_t value);
/** @} */

/** @defgroup grpci_subs_args Dial-in subscribe request (SubsArgs)
 * Read only: Init, Parse, getters, DeInit.
 * @{ */
/** Creates an empty SubsArgs. @return the handle, or NULL (convention 3). */
MGMTMSG_API void* GRPCI_SubsArgsInit(void);
/** Parses a SubsArgs. @return 1, or 0 when the bytes are no valid encoding. */
MGMTMSG_API int32_t GRPCI_SubsArgsParse(void* args, const void* data, int32_t size);
/** Frees the request with its paths; NULL is ignored. */
MGMTMSG_API void GRPCI_SubsArgsDeInit(void* args);
/** @return request_id. */
MGMTMSG_API uint64_t GRPCI_SubsArgsGetRequestId(void* args);
/** @return encoding. */
MGMTMSG_API uint32_t GRPCI_SubsArgsGetEncoding(void* args);
/** @return the number of paths. */
MGMTMSG_API int32_t GRPCI_SubsArgsPathSizeof(void* args);
/** @return the Path at `index` (convention 2); an index outside 0 to
 * PathSizeof - 1 is a fatal check ("CHECK failed: ...") and the call does
 * not return. */
MGMTMSG_API void* GRPCI_SubsArgsGetPath(void* args, int32_t index);
/** @return sample_interval. */
MGMTMSG_API uint64_t GRPCI_SubsArgsGetSampleInterval(void* args);
/** @return heartbeat_interval. */
MGMTMSG_API uint64_t GRPCI_SubsArgsGetHeartbeat(void* args);
/** @return which member of the Suppress choice is set: 0 none, 8
 * suppress_redundant, 9 delay_time. */
MGMTMSG_API uint32_t GRPCI_SubsArgsGetSuppressCase(void* args);
/** @return suppress_redundant as 0 or 1 when it is the member set, else 0. */
MGMTMSG_API uint64_t GRPCI_SubsArgsGetSuppressRedundant(void* args);
/** @return delay_time when it is the member set, else 0. */
MGMTMSG_API uint64_t GRPCI_SubsArgsGetDelayTime(void* args);

/** @return the sensor path's text (convention 5). */
MGMTMSG_API const char* GRPCI_PathGetPath(void* path);
/** @return the sensor path's depth. */
MGMTMSG_API uint32_t GRPCI_PathGetDepth(void* path);
/** @} */

/** @defgroup grpci_cancel_args Dial-in cancel request (CancelArgs)
 * Read only: Init, Parse, getters, DeInit.
 * @{ */
/** Creates an empty CancelArgs. @return the handle, or NULL (convention 3). */
MGMTMSG_API void* GRPCI_CancelArgsInit(void);
/** Parses a CancelArgs. @return 1, or 0 when the bytes are no valid encoding. */
MGMTMSG_API int32_t GRPCI_CancelArgsParse(void* args, const void* data, int32_t size);
/** Frees the request; NULL is ignored. */
MGMTMSG_API void GRPCI_CancelArgsDeInit(void* args);
/** @return request_id. */
MGMTMSG_API uint64_t GRPCI_CancelArgsGetRequestId(void* args);
/** @return subscription_id. */
MGMTMSG_API uint32_t GRPCI_CancelArgsGetSubscriptionId(void* args);
/** @} */

/** @defgroup grpci_replies Dial-in replies (SubsReply, CancelReply)
 * Write only: Init, setters, Serialize (any number of times), DeInit.
 * Serialize writes the bare encoding, with no length prefix, into a block
 * one byte longer than it (convention 4); that byte is never written, and
 * `*outLen` is the encoding's length without it.
 * @{ */
/** Creates an empty SubsReply. @return the handle, or NULL (convention 3). */
MGMTMSG_API void* GRPCI_SubsReplyInit(void);
/** Frees the reply; NULL is ignored. */
MGMTMSG_API void GRPCI_SubsReplyDeInit(void* reply);
/** Sets subscription_id. */
MGMTMSG_API void GRPCI_SubsReplySetSubscriptionId(void* reply, uint32_t value);
/** Sets request_id. */
MGMTMSG_API void GRPCI_SubsReplySetRequestId(void* reply, uint64_t value);
/** Sets response_code (convention 5). */
MGMTMSG_API void GRPCI_SubsReplySetResponseCode(void* reply, const char* data, uint32_t len);
/** Sets the bytes member `message` of the reply's data; it is always the
 * member chosen, never the JSON text. */
MGMTMSG_API void GRPCI_SubsReplySetMessage(void* reply, const char* data, uint32_t len);
/** Serializes the reply, unframed. @return 1, or 0 on failure (convention 4). */
MGMTMSG_API int32_t GRPCI_SubsReplySerialize(uint32_t ownerId, void* reply, void** out,
                                             uint32_t* outLen);

/** Creates an empty CancelReply. @return the handle, or NULL (convention 3). */
MGMTMSG_API void* GRPCI_CancelReplyInit(void);
/** Frees the reply; NULL is ignored. */
MGMTMSG_API void GRPCI_CancelReplyDeInit(void* reply);
/** Sets request_id. */
MGMTMSG_API void GRPCI_CancelReplySetRequestId(void* reply, uint64_t value);
/** Sets response_code (convention 5). */
MGMTMSG_API void GRPCI_CancelReplySetResponseCode(void* reply, const char* data, uint32_t len);
/** Sets message, a text field here (convention 5). */
MGMTMSG_API void GRPCI_CancelReplySetMessage(void* reply, const char* data, uint32_t len);
/** Serializes the reply, unframed. @return 1, or 0 on failure (convention 4). */
MGMTMSG_API int32_t GRPCI_CancelReplySerialize(uint32_t ownerId, void* reply, void** out,
                                               uint32_t* outLen);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */
#endif
