/* mgmtmsg: south IPC and dial-in entry points for C callers.
 *
 * Conventions (each entry point below is commented only where it differs):
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
 *     used. Nothing is logged, except the fatal index check.
 *  4. Serialize allocates one block with OXA_Malloc_F(ownerId,
 *     g_aucOxaMemPt[0], ...) and stores it in *out with its length in
 *     *outLen. The block belongs to the caller, outlives the message and is
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
 *     the C++ allocation exception, which no entry point catches.
 *  8. A message, with the records and strings reached from it, is used by
 *     one thread at a time; distinct messages may be used on different
 *     threads at once.
 */
#ifndef MGMTMSG_GRPCI_EX_H
#define MGMTMSG_GRPCI_EX_H

#include <stdint.h>

#ifndef MGMTMSG_API
#define MGMTMSG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- South IPC envelope (SouthMsg) ---- */
MGMTMSG_API void* GRPCI_SouthMsgInit(void);
MGMTMSG_API int32_t GRPCI_SouthMsgParse(void* msg, const void* data, int32_t size);
/* Builds the IPC frame: the message length N as a 32-bit word in host byte
 * order, then the N message bytes; *outLen is N + 4. */
MGMTMSG_API int32_t GRPCI_SouthMsgSerialize(uint32_t ownerId, void* msg, void** out,
                                            uint32_t* outLen);
MGMTMSG_API void GRPCI_SouthMsgDeInit(void* msg);

MGMTMSG_API uint32_t GRPCI_SouthMsgGetConnectId(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetConnectId(void* msg, uint32_t value);
MGMTMSG_API uint32_t GRPCI_SouthMsgGetRpcId(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetRpcId(void* msg, uint32_t value);
MGMTMSG_API uint32_t GRPCI_SouthMsgGetTransNum(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetTransNum(void* msg, uint32_t value);
MGMTMSG_API int32_t GRPCI_SouthMsgGetReqType(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetReqType(void* msg, int32_t value);
MGMTMSG_API int32_t GRPCI_SouthMsgGetOpType(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetOpType(void* msg, int32_t value);
MGMTMSG_API int32_t GRPCI_SouthMsgGetMsgType(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetMsgType(void* msg, int32_t value);
MGMTMSG_API uint32_t GRPCI_SouthMsgGetVrId(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetVrId(void* msg, uint32_t value);
MGMTMSG_API uint32_t GRPCI_SouthMsgGetResult(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetResult(void* msg, uint32_t value);
MGMTMSG_API const char* GRPCI_SouthMsgGetResultDesc(void* msg);
MGMTMSG_API void GRPCI_SouthMsgSetResultDesc(void* msg, const char* data, uint32_t len);

/* Payload records. Has: 1 when the record is present. Get: the record, or
 * NULL when absent (never created). Set: the record, created empty when
 * absent; it copies nothing, the caller fills the record afterwards. */
MGMTMSG_API int32_t GRPCI_SouthMsgHasLogin(void* msg);
MGMTMSG_API void* GRPCI_SouthMsgGetLogin(void* msg);
MGMTMSG_API void* GRPCI_SouthMsgSetLogin(void* msg);
MGMTMSG_API int32_t GRPCI_SouthMsgHasClientRpc(void* msg);
MGMTMSG_API void* GRPCI_SouthMsgGetClientRpc(void* msg);
MGMTMSG_API void* GRPCI_SouthMsgSetClientRpc(void* msg);
MGMTMSG_API int32_t GRPCI_SouthMsgHasServerRpc(void* msg);
MGMTMSG_API void* GRPCI_SouthMsgGetServerRpc(void* msg);
MGMTMSG_API void* GRPCI_SouthMsgSetServerRpc(void* msg);
MGMTMSG_API int32_t GRPCI_SouthMsgHasRpcData(void* msg);
MGMTMSG_API void* GRPCI_SouthMsgGetRpcData(void* msg);
MGMTMSG_API void* GRPCI_SouthMsgSetRpcData(void* msg);

/* ---- Login record (LoginAuthenticate; read only) ---- */
MGMTMSG_API const char* GRPCI_LoginAuthGetUserName(void* login);
MGMTMSG_API const char* GRPCI_LoginAuthGetPassword(void* login);
MGMTMSG_API const char* GRPCI_LoginAuthGetHandle(void* login);
/* The token's bytes, which may hold NULs; their count is stored in *len. */
MGMTMSG_API const char* GRPCI_LoginAuthGetToken(void* login, uint32_t* len);

/* ---- Client RPC record (ClientRpc; client_name and client_id are carried
 * but have no entry point) ---- */
MGMTMSG_API const char* GRPCI_ClientRpcGetPeerAddr(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetPeerAddr(void* rpc, const char* data, uint32_t len);
MGMTMSG_API uint32_t GRPCI_ClientRpcGetPeerPort(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetPeerPort(void* rpc, uint32_t value);
MGMTMSG_API const char* GRPCI_ClientRpcGetMyAddr(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetMyAddr(void* rpc, const char* data, uint32_t len);
MGMTMSG_API uint32_t GRPCI_ClientRpcGetMyPort(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetMyPort(void* rpc, uint32_t value);
MGMTMSG_API uint32_t GRPCI_ClientRpcGetVpnIndex(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetVpnIndex(void* rpc, uint32_t value);
MGMTMSG_API const char* GRPCI_ClientRpcGetVpnName(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetVpnName(void* rpc, const char* data, uint32_t len);
MGMTMSG_API uint32_t GRPCI_ClientRpcGetDscp(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetDscp(void* rpc, uint32_t value);
MGMTMSG_API int32_t GRPCI_ClientRpcGetNoTls(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetNoTls(void* rpc, int32_t value);
MGMTMSG_API const char* GRPCI_ClientRpcGetRpcName(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetRpcName(void* rpc, const char* data, uint32_t len);
MGMTMSG_API uint32_t GRPCI_ClientRpcGetCompression(void* rpc);
MGMTMSG_API void GRPCI_ClientRpcSetCompression(void* rpc, uint32_t value);

/* ---- Server RPC record (ServerRpc) ---- */
MGMTMSG_API const char* GRPCI_ServerRpcGetPeerAddr(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetPeerAddr(void* rpc, const char* data, uint32_t len);
MGMTMSG_API uint32_t GRPCI_ServerRpcGetPeerPort(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetPeerPort(void* rpc, uint32_t value);
MGMTMSG_API const char* GRPCI_ServerRpcGetMyAddr(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetMyAddr(void* rpc, const char* data, uint32_t len);
MGMTMSG_API uint32_t GRPCI_ServerRpcGetMyPort(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetMyPort(void* rpc, uint32_t value);
MGMTMSG_API uint32_t GRPCI_ServerRpcGetVpnIndex(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetVpnIndex(void* rpc, uint32_t value);
MGMTMSG_API const char* GRPCI_ServerRpcGetVpnName(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetVpnName(void* rpc, const char* data, uint32_t len);
MGMTMSG_API const char* GRPCI_ServerRpcGetRpcName(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetRpcName(void* rpc, const char* data, uint32_t len);
/* The parameter bytes, which may hold NULs; their count is stored in *len. */
MGMTMSG_API const char* GRPCI_ServerRpcGetRpcParament(void* rpc, uint32_t* len);
MGMTMSG_API void GRPCI_ServerRpcSetRpcParament(void* rpc, const char* data, uint32_t len);
MGMTMSG_API uint32_t GRPCI_ServerRpcGetDeadLine(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetDeadLine(void* rpc, uint32_t value);
MGMTMSG_API uint32_t GRPCI_ServerRpcGetCompression(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetCompression(void* rpc, uint32_t value);
MGMTMSG_API uint32_t GRPCI_ServerRpcGetDscp(void* rpc);
MGMTMSG_API void GRPCI_ServerRpcSetDscp(void* rpc, uint32_t value);

/* ---- RPC data record (RpcData) ---- */
/* A stand-alone record, owned by the caller; it cannot be attached to a
 * SouthMsg. DeInit only such records, never the one of a SouthMsg. */
MGMTMSG_API void* GRPCI_RpcDataInit(void);
MGMTMSG_API void GRPCI_RpcDataDeInit(void* data);
/* The data bytes, without their length: NUL-terminated in storage, but they
 * may hold NULs of their own. */
MGMTMSG_API const char* GRPCI_RpcDataGetData(void* data);
MGMTMSG_API void GRPCI_RpcDataSetData(void* data, const char* bytes, uint32_t len);
MGMTMSG_API int32_t GRPCI_RpcDataGetIsOver(void* data);
MGMTMSG_API void GRPCI_RpcDataSetIsOver(void* data, int32_t value);

/* ---- Dial-in subscribe request (SubsArgs; read only) ---- */
MGMTMSG_API void* GRPCI_SubsArgsInit(void);
MGMTMSG_API int32_t GRPCI_SubsArgsParse(void* args, const void* data, int32_t size);
MGMTMSG_API void GRPCI_SubsArgsDeInit(void* args);
MGMTMSG_API uint64_t GRPCI_SubsArgsGetRequestId(void* args);
MGMTMSG_API uint32_t GRPCI_SubsArgsGetEncoding(void* args);
MGMTMSG_API int32_t GRPCI_SubsArgsPathSizeof(void* args);
/* The Path at `index`; an index outside 0 .. PathSizeof - 1 is a fatal
 * check ("CHECK failed: ...") and the call does not return. */
MGMTMSG_API void* GRPCI_SubsArgsGetPath(void* args, int32_t index);
MGMTMSG_API uint64_t GRPCI_SubsArgsGetSampleInterval(void* args);
MGMTMSG_API uint64_t GRPCI_SubsArgsGetHeartbeat(void* args);
/* Which member of the Suppress choice is set: 0 none, 8 suppress_redundant,
 * 9 delay_time. */
MGMTMSG_API uint32_t GRPCI_SubsArgsGetSuppressCase(void* args);
/* suppress_redundant as 0 or 1 when it is the member set, else 0. */
MGMTMSG_API uint64_t GRPCI_SubsArgsGetSuppressRedundant(void* args);
/* delay_time when it is the member set, else 0. */
MGMTMSG_API uint64_t GRPCI_SubsArgsGetDelayTime(void* args);

MGMTMSG_API const char* GRPCI_PathGetPath(void* path);
MGMTMSG_API uint32_t GRPCI_PathGetDepth(void* path);

/* ---- Dial-in cancel request (CancelArgs; read only) ---- */
MGMTMSG_API void* GRPCI_CancelArgsInit(void);
MGMTMSG_API int32_t GRPCI_CancelArgsParse(void* args, const void* data, int32_t size);
MGMTMSG_API void GRPCI_CancelArgsDeInit(void* args);
MGMTMSG_API uint64_t GRPCI_CancelArgsGetRequestId(void* args);
MGMTMSG_API uint32_t GRPCI_CancelArgsGetSubscriptionId(void* args);

/* ---- Dial-in replies (SubsReply, CancelReply; write only) ----
 * Serialize writes the bare encoding, with no length prefix, into a block
 * one byte longer than it; that byte is never written, and *outLen is the
 * encoding's length without it. */
MGMTMSG_API void* GRPCI_SubsReplyInit(void);
MGMTMSG_API void GRPCI_SubsReplyDeInit(void* reply);
MGMTMSG_API void GRPCI_SubsReplySetSubscriptionId(void* reply, uint32_t value);
MGMTMSG_API void GRPCI_SubsReplySetRequestId(void* reply, uint64_t value);
MGMTMSG_API void GRPCI_SubsReplySetResponseCode(void* reply, const char* data, uint32_t len);
/* Sets the bytes member `message` of the reply's data; it is always the
 * member chosen, never the JSON text. */
MGMTMSG_API void GRPCI_SubsReplySetMessage(void* reply, const char* data, uint32_t len);
MGMTMSG_API int32_t GRPCI_SubsReplySerialize(uint32_t ownerId, void* reply, void** out,
                                             uint32_t* outLen);

MGMTMSG_API void* GRPCI_CancelReplyInit(void);
MGMTMSG_API void GRPCI_CancelReplyDeInit(void* reply);
MGMTMSG_API void GRPCI_CancelReplySetRequestId(void* reply, uint64_t value);
MGMTMSG_API void GRPCI_CancelReplySetResponseCode(void* reply, const char* data, uint32_t len);
MGMTMSG_API void GRPCI_CancelReplySetMessage(void* reply, const char* data, uint32_t len);
MGMTMSG_API int32_t GRPCI_CancelReplySerialize(uint32_t ownerId, void* reply, void** out,
                                               uint32_t* outLen);

#ifdef __cplusplus
}
#endif

#endif
