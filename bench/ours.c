/* The workloads through the library's C entry points, called from C as the
 * device's control software calls them. */
#include <stddef.h>
#include <string.h>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_stream.h"
#include "grpci/grpci_ex.h"
#include "oxa_mem.h"
#include "workloads.h"

void BenchBuildCounterPath(void* path, int n) {
  BenchText name = BenchEthName(n);
  void* elem;
  GNMI_PathElem_SetName(GNMI_Path_AppendPathElem(path), "interfaces", 10);
  elem = GNMI_Path_AppendPathElem(path);
  GNMI_PathElem_SetName(elem, "interface", 9);
  GNMI_PathElem_AppendKey(elem, "name", 4, name.data, name.len);
  GNMI_PathElem_SetName(GNMI_Path_AppendPathElem(path), "counters", 8);
}

/* The counter path of n, valued with the 48-byte JSON text for even n and a
 * counter for odd n. */
static void AppendCounterUpdate(void* notification, int n, uint64_t counter,
                                BenchPathFn buildPath) {
  void* update = GNMI_Notification_AppendUpdate(notification);
  void* value = GNMI_Update_SetVal(update);
  buildPath(GNMI_Update_SetPath(update), n);
  if (n % 2 == 0) {
    GNMI_TypedValue_SetJsonIetfVal(value, kBenchJsonValue.data, kBenchJsonValue.len);
  } else {
    GNMI_TypedValue_SetUintVal(value, counter);
  }
}

/* W1's response, built into the Get context's (empty) response. */
static void BuildGetResponse(void* ctx) {
  void* notification = GNMI_GetResponse_AppendNotification(ctx);
  void* prefix = GNMI_Notification_AddPrefix(notification);
  int n;

  GNMI_Notification_SetTimestamp(notification, BenchTimestamp(0));
  GNMI_Path_SetOrigin(prefix, "openconfig", 10);
  GNMI_PathElem_SetName(GNMI_Path_AppendPathElem(prefix), "device", 6);
  for (n = 0; n < kGetUpdates; n++) {
    AppendCounterUpdate(notification, n, BenchCounterValue(n), BenchBuildCounterPath);
  }
}

void* OursW1Build(void) {
  void* ctx = GNMI_Get_Init();
  BuildGetResponse(ctx);
  return ctx;
}

size_t BenchSerializeResponse(int (*serialize)(void*, void**, int*), void* ctx, BenchSink* sink) {
  void* out;
  int len;
  if (!serialize(ctx, &out, &len)) {
    return 0;
  }
  BenchHand(sink, out, (size_t)len);
  return (size_t)len;
}

size_t OursW1Serialize(void* ctx, BenchSink* sink) {
  return BenchSerializeResponse(GNMI_GetResponse_Serialize, ctx, sink);
}

size_t OursW1(BenchSink* sink) {
  void* ctx = OursW1Build();
  size_t produced = OursW1Serialize(ctx, sink);
  GNMI_Get_DeInit(ctx);
  return produced;
}

size_t OursW1Reset(void* getCtx, BenchSink* sink) {
  if (!GNMI_GetResponse_Reset(getCtx)) {
    return 0;
  }
  BuildGetResponse(getCtx);
  return OursW1Serialize(getCtx, sink);
}

static size_t ReadText(const char* text, BenchSink* sink) {
  BenchHand(sink, text, strlen(text));
  return (unsigned char)text[0];
}

static size_t ReadPath(void* path, BenchSink* sink) {
  size_t digest = 0;
  int count = GNMI_Path_PathElemSizeof(path);
  int i, k;
  for (i = 0; i < count; i++) {
    void* elem = GNMI_Path_GetPathElem(path, i);
    int keys = GNMI_PathElem_KeySizeof(elem);
    digest += ReadText(GNMI_PathElem_GetName(elem), sink);
    for (k = 0; k < keys; k++) {
      const char* key;
      const char* value;
      GNMI_PathElem_GetKey(elem, k, &key, &value);
      digest += ReadText(key, sink) + ReadText(value, sink);
    }
  }
  return digest;
}

size_t OursW2(BenchText request, BenchSink* sink) {
  void* ctx = GNMI_Set_Init();
  size_t digest = 0;
  if (GNMI_SetRequest_Parse(ctx, request.data, (int)request.len)) {
    int count = GNMI_SetRequest_UpdateSizeof(ctx);
    int i;
    for (i = 0; i < count; i++) {
      void* update = GNMI_SetRequest_GetUpdate(ctx, i);
      digest += ReadPath(GNMI_Update_GetPath(update), sink);
      digest += ReadText(GNMI_TypedValue_GetJsonVal(GNMI_Update_GetVal(update)), sink);
    }
  }
  GNMI_Set_DeInit(ctx);
  return digest;
}

void OursW3BuildWith(void* ctx, int m, BenchPathFn buildPath) {
  void* notification = GNMI_SubscribeResponse_GetNotification(ctx);
  int n;
  GNMI_Notification_SetTimestamp(notification, BenchTimestamp(m));
  for (n = 0; n < kStreamUpdates; n++) {
    AppendCounterUpdate(notification, n, BenchCounterValue(m + n), buildPath);
  }
}

void OursW3Build(void* ctx, int m) { OursW3BuildWith(ctx, m, BenchBuildCounterPath); }

size_t OursW3Serialize(void* ctx, BenchSink* sink) {
  return BenchSerializeResponse(GNMI_SubscribeResponse_Serialize, ctx, sink);
}

size_t OursW3Message(BenchStartFn start, void* ctx, int m, BenchSink* sink) {
  if (!start(ctx)) {
    return 0;
  }
  OursW3Build(ctx, m);
  return OursW3Serialize(ctx, sink);
}

size_t OursW3(BenchStartFn start, BenchSink* sink) {
  void* ctx = GNMI_Subscribe_Init();
  size_t produced = 0;
  int m;
  for (m = 0; m < kStreamMessages; m++) {
    produced += OursW3Message(start, ctx, m, sink);
  }
  GNMI_Subscribe_DeInit(ctx);
  return produced;
}

void* OursW4Build(uint32_t payloadBytes) {
  void* msg = GRPCI_SouthMsgInit();
  void* data = GRPCI_SouthMsgSetRpcData(msg);
  GRPCI_SouthMsgSetConnectId(msg, 12);
  GRPCI_SouthMsgSetRpcId(msg, 3);
  GRPCI_SouthMsgSetTransNum(msg, 41);
  GRPCI_SouthMsgSetReqType(msg, 1);
  GRPCI_SouthMsgSetMsgType(msg, 3);
  GRPCI_RpcDataSetData(data, BenchPayload(), payloadBytes);
  GRPCI_RpcDataSetIsOver(data, 1);
  return msg;
}

/* Serializes a GRPCI_ message into a platform block, hands the bytes to the
 * sink and releases the block, as a sender does once the bytes are sent. */
static size_t SerializeToBlock(int32_t (*serialize)(uint32_t, void*, void**, uint32_t*), void* msg,
                               BenchSink* sink) {
  void* block;
  uint32_t len;
  if (!serialize(kBenchOwnerId, msg, &block, &len)) {
    return 0;
  }
  BenchHand(sink, block, len);
  OXA_Free_F(block, __FILE__, __LINE__);
  return len;
}

size_t OursW4(void* southMsg, BenchSink* sink) {
  return SerializeToBlock(GRPCI_SouthMsgSerialize, southMsg, sink);
}

void* OursW5Build(void) {
  void* reply = GRPCI_SubsReplyInit();
  GRPCI_SubsReplySetSubscriptionId(reply, 7);
  GRPCI_SubsReplySetRequestId(reply, 1001);
  GRPCI_SubsReplySetResponseCode(reply, "ok", 2);
  GRPCI_SubsReplySetMessage(reply, BenchPayload(), kReplyBytes);
  return reply;
}

size_t OursW5(void* reply, int runs, BenchSink* sink) {
  size_t produced = 0;
  int run;
  for (run = 0; run < runs; run++) {
    produced += SerializeToBlock(GRPCI_SubsReplySerialize, reply, sink);
  }
  return produced;
}
