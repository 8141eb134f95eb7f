/* The calls of the south channel: frames in, the call table, replies out. */
#include <common/mgmtmsg_codes.h>
#include <grpci/grpci_bytes.h>
#include <grpci/grpci_ex.h>
#include <platform/oxa_mem.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "service.h"
#include "streams.h"

#define FRAME_MAX 52428800u
#define OWNER_ID 0x534du /* "SM", for the memory manager's counts */

/* The methods served; an empty first request is a CapabilityRequest's
 * encoding, and no request of the others. */
static const struct {
  const char* method;
  void (*open)(struct service* svc, struct call* call, const void* data, uint32_t len);
  int empty_ok;
} kMethods[] = {
    {"/gnmi.gNMI/Capabilities", answer_capabilities, 1},
    {"/gnmi.gNMI/Get", answer_get, 0},
    {"/gnmi.gNMI/Set", answer_set, 0},
    {"/gnmi.gNMI/Subscribe", stream_open, 0},
    {"/quorix_dialin.gRPCConfigOper/Subscribe", dialin_open, 0},
    {"/quorix_dialin.gRPCConfigOper/Cancel", dialin_cancel, 0},
};

static struct call* find_call(struct service* svc, uint32_t rpcId) {
  size_t i;
  for (i = 0; i < svc->call_count; i++) {
    if (svc->calls[i]->rpc_id == rpcId) return svc->calls[i];
  }
  return NULL;
}

static void free_call(struct call* call) {
  stream_free(call->stream);
  dialin_free(call->dialin);
  free(call);
}

static void remove_call(struct service* svc, struct call* call) {
  size_t i;
  for (i = 0; i < svc->call_count; i++) {
    if (svc->calls[i] == call) {
      svc->calls[i] = svc->calls[--svc->call_count];
      break;
    }
  }
  free_call(call);
}

void* south_message(uint32_t connectId, uint32_t rpcId, uint32_t transNum, int32_t req, int32_t op,
                    int32_t type) {
  void* msg = GRPCI_SouthMsgInit();
  if (msg != NULL) {
    GRPCI_SouthMsgSetConnectId(msg, connectId);
    GRPCI_SouthMsgSetRpcId(msg, rpcId);
    GRPCI_SouthMsgSetTransNum(msg, transNum);
    GRPCI_SouthMsgSetReqType(msg, req);
    GRPCI_SouthMsgSetOpType(msg, op);
    GRPCI_SouthMsgSetMsgType(msg, type);
  }
  return msg;
}

/* A response on the call; NULL on no memory. */
static void* new_message(struct call* call, int32_t op, int32_t type) {
  return south_message(call->connect_id, call->rpc_id, ++call->trans_num, GRPCI_REQTYPE_RESPONSE,
                       op, type);
}

int south_send(struct service* svc, void* msg) {
  void* block = NULL;
  uint32_t len = 0;
  int ok = msg != NULL && GRPCI_SouthMsgSerialize(OWNER_ID, msg, &block, &len);
  GRPCI_SouthMsgDeInit(msg);
  if (!ok) return 0;
  ok = buffer_append(&svc->out, block, len);
  OXA_Free_F(block, __FILE__, __LINE__);
  return ok;
}

void call_end(struct service* svc, struct call* call, uint32_t status, const char* message) {
  void* msg = new_message(call, GRPCI_OPTYPE_DELETE, GRPCI_MSGTYPE_SERVER_RPC);
  if (msg != NULL) {
    GRPCI_SouthMsgSetResult(msg, status);
    GRPCI_SouthMsgSetResultDesc(msg, message, (uint32_t)strlen(message));
  }
  if (!south_send(svc, msg)) {
    fprintf(stderr, "service: call %u: no memory for its end\n", call->rpc_id);
  }
  remove_call(svc, call);
}

int call_reply(struct service* svc, struct call* call, const void* data, uint32_t len, int isOver) {
  void* msg = new_message(call, GRPCI_OPTYPE_NOTIFY, GRPCI_MSGTYPE_RPC_DATA);
  if (msg != NULL) {
    void* record = GRPCI_SouthMsgSetRpcData(msg);
    GRPCI_RpcDataSetData(record, data, len);
    GRPCI_RpcDataSetIsOver(record, isOver);
  }
  if (south_send(svc, msg)) return 1;
  call_end(svc, call, MGMTMSG_STATUS_RESOURCE_EXHAUSTED, "service module out of memory");
  return 0;
}

/* Opens a call (message 1): login, then the method's first answer. */
static void open_call(struct service* svc, void* msg) {
  void* rpc = GRPCI_SouthMsgGetServerRpc(msg);
  void* login = GRPCI_SouthMsgHasLogin(msg) ? GRPCI_SouthMsgGetLogin(msg) : NULL;
  const char* method = GRPCI_ServerRpcGetRpcName(rpc);
  uint32_t len = 0;
  const char* data = GRPCI_ServerRpcGetRpcParament(rpc, &len);
  struct call** grown;
  struct call* call;
  size_t i;
  if (find_call(svc, GRPCI_SouthMsgGetRpcId(msg)) != NULL) {
    fprintf(stderr, "service: call %u opened twice, dropped\n", GRPCI_SouthMsgGetRpcId(msg));
    return;
  }
  if (svc->call_count == svc->call_cap) {
    size_t cap = svc->call_cap ? svc->call_cap * 2 : 16;
    grown = realloc(svc->calls, cap * sizeof(struct call*));
    if (grown == NULL) return;
    svc->calls = grown;
    svc->call_cap = cap;
  }
  call = calloc(1, sizeof *call);
  if (call == NULL) return;
  call->connect_id = GRPCI_SouthMsgGetConnectId(msg);
  call->rpc_id = GRPCI_SouthMsgGetRpcId(msg);
  svc->calls[svc->call_count++] = call;
  for (i = 0; i < sizeof kMethods / sizeof kMethods[0]; i++) {
    if (strcmp(method, kMethods[i].method) == 0) break;
  }
  if (i == sizeof kMethods / sizeof kMethods[0]) {
    call_end(svc, call, MGMTMSG_STATUS_UNIMPLEMENTED, "method not served");
    return;
  }
  if (login == NULL || !users_check(&svc->users, GRPCI_LoginAuthGetUserName(login),
                                    GRPCI_LoginAuthGetPassword(login))) {
    call_end(svc, call, MGMTMSG_STATUS_UNAUTHENTICATED, "bad username or password");
  } else if (len == 0 && !kMethods[i].empty_ok) {
    call_end(svc, call, MGMTMSG_STATUS_INVALID_ARGUMENT, "no request message");
  } else {
    kMethods[i].open(svc, call, data, len);
  }
}

/* Acts on one SouthMsg from the front end. */
static void dispatch(struct service* svc, void* msg) {
  int32_t op = GRPCI_SouthMsgGetOpType(msg), type = GRPCI_SouthMsgGetMsgType(msg);
  struct call* call = find_call(svc, GRPCI_SouthMsgGetRpcId(msg));
  if (GRPCI_SouthMsgGetReqType(msg) == GRPCI_REQTYPE_RESPONSE) {
    dialout_receive(svc, msg); /* the module's own calls are the client calls */
  } else if (GRPCI_SouthMsgGetReqType(msg) != GRPCI_REQTYPE_REQUEST) {
    fprintf(stderr, "service: a message that is neither request nor response, dropped\n");
  } else if (op == GRPCI_OPTYPE_CREATE && type == GRPCI_MSGTYPE_SERVER_RPC &&
             GRPCI_SouthMsgHasServerRpc(msg)) {
    open_call(svc, msg);
  } else if (call == NULL) {
    /* The call has ended: its half-close or cancel crossed the end on the way. */
  } else if (op == GRPCI_OPTYPE_DELETE && type == GRPCI_MSGTYPE_SERVER_RPC) {
    remove_call(svc, call); /* cancelled: nothing more is sent */
  } else if (op == GRPCI_OPTYPE_MODIFY && type == GRPCI_MSGTYPE_RPC_DATA &&
             GRPCI_SouthMsgHasRpcData(msg)) {
    uint32_t len = 0;
    void* record = GRPCI_SouthMsgGetRpcData(msg);
    const char* data = GRPCI_RpcDataReadData(record, &len);
    if (call->stream != NULL) stream_data(svc, call, data, len, GRPCI_RpcDataGetIsOver(record));
  } else {
    fprintf(stderr, "service: a message of an unknown kind on call %u, dropped\n", call->rpc_id);
  }
}

int service_receive(struct service* svc) {
  while (svc->in.len >= 4) {
    uint32_t size;
    void* msg;
    int ok;
    memcpy(&size, svc->in.data, 4); /* host order */
    if (size > FRAME_MAX) {
      fprintf(stderr, "service: a frame of %u bytes, over the limit\n", size);
      return 0;
    }
    if (svc->in.len - 4 < size) return 1;
    msg = GRPCI_SouthMsgInit();
    ok = msg != NULL && GRPCI_SouthMsgParse(msg, svc->in.data + 4, (int32_t)size);
    if (ok) dispatch(svc, msg);
    GRPCI_SouthMsgDeInit(msg);
    if (!ok) {
      fprintf(stderr, "service: a frame that is no SouthMsg\n");
      return 0;
    }
    buffer_consume(&svc->in, 4 + (size_t)size);
  }
  return 1;
}

void calls_drop(struct service* svc) {
  while (svc->call_count > 0) free_call(svc->calls[--svc->call_count]);
}

uint64_t calls_run(struct service* svc, uint64_t now) {
  uint64_t next = UINT64_MAX, due;
  size_t i = 0;
  /* A stream may end itself, swapping the last call into its place. */
  while (i < svc->call_count) {
    struct call* call = svc->calls[i];
    due = call->stream != NULL   ? stream_run(svc, call, now)
          : call->dialin != NULL ? dialin_run(svc, call, now)
                                 : UINT64_MAX;
    if (i < svc->call_count && svc->calls[i] == call) i++;
    if (due < next) next = due;
  }
  return next;
}

void calls_changed(struct service* svc) {
  size_t i = 0;
  while (i < svc->call_count) {
    struct call* call = svc->calls[i];
    if (call->stream != NULL) stream_changed(svc, call);
    if (i < svc->call_count && svc->calls[i] == call) i++;
  }
}
