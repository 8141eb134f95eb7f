// Allocation failure injected into the entry points that allocate: each
// allocation a call makes is failed in turn, and the call must then give its
// documented failure result and leave nothing allocated. Further entry points
// join by adding a row to a table below, or a table of their own run through
// FailEachAllocation.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "grpci/grpci_ex.h"
#include "oxa_mem_host.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/alloc_fault.h"
#include "support/oxa_blocks.h"

namespace {

// More allocations than any entry point under test makes.
constexpr int64_t kAllocationLimit = 64;

// Calls `act` with its k-th allocation failing, for k = 0, 1, ... until a
// call completes without reaching the failure; `check(result, failed, live)`
// judges each call, `live` being the live allocation count before it.
// Returns the number of allocations of the successful call.
template <class Act, class Check>
int64_t FailEachAllocation(Act act, Check check) {
  for (int64_t k = 0; k < kAllocationLimit; ++k) {
    const int64_t live = allocfault::Live();
    allocfault::FailAfter(k);
    const auto result = act();
    allocfault::Disarm();
    const bool failed = allocfault::Fired();
    check(result, failed, live);
    if (!failed) {
      return k;
    }
  }
  ADD_FAILURE() << "still failing after " << kAllocationLimit << " allocations";
  return kAllocationLimit;
}

// Calls `act` with its first allocation failing; true when that happened.
template <class Act>
bool FailFirstAllocation(Act act) {
  allocfault::FailAfter(0);
  act();
  allocfault::Disarm();
  return allocfault::Fired();
}

struct InitCase {
  const char* name;
  void* (*init)();
  void (*deinit)(void*);
  int64_t messages;  // messages besides the object itself, each its own allocation
};

const InitCase kInits[] = {
    {"GNMI_Capability_Init", GNMI_Capability_Init, GNMI_Capability_DeInit, 2},
    {"GNMI_Get_Init", GNMI_Get_Init, GNMI_Get_DeInit, 2},
    {"GNMI_Set_Init", GNMI_Set_Init, GNMI_Set_DeInit, 2},
    {"GNMI_Subscribe_Init", GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, 3},
    {"GRPCI_SouthMsgInit", GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit, 0},
    {"GRPCI_RpcDataInit", GRPCI_RpcDataInit, GRPCI_RpcDataDeInit, 0},
    {"GRPCI_SubsArgsInit", GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit, 0},
    {"GRPCI_CancelArgsInit", GRPCI_CancelArgsInit, GRPCI_CancelArgsDeInit, 0},
    {"GRPCI_SubsReplyInit", GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit, 0},
    {"GRPCI_CancelReplyInit", GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit, 0},
};

TEST(AllocFaultInit, EveryAllocationOfEveryInitFailsToNullWithoutLeaking) {
  for (const InitCase& init : kInits) {
    SCOPED_TRACE(init.name);
    const int64_t allocations =
        FailEachAllocation(init.init, [&](void* handle, bool failed, int64_t live) {
          if (failed) {
            EXPECT_EQ(handle, nullptr);
          } else {
            EXPECT_NE(handle, nullptr);
            init.deinit(handle);
          }
          EXPECT_EQ(allocfault::Live(), live);
        });
    EXPECT_GE(allocations, init.messages + 1);
  }
}

// A context whose response serializes to more bytes with each Grow.
struct BufferCase {
  const char* name;
  void* (*init)();
  void (*grow)(void* ctx);
  int (*serialize)(void* ctx, void** out, int* outLen);
  void (*deinit)(void*);
};

template <class Context>
auto* ResponseOf(void* ctx) {
  return static_cast<Context*>(ctx)->response_;
}

GnmiRpcSubscribe* Subscribe(void* ctx) { return static_cast<GnmiRpcSubscribe*>(ctx); }

const BufferCase kNothrowBuffers[] = {
    {"Get", GNMI_Get_Init, [](void* ctx) { ResponseOf<GnmiRpcGet>(ctx)->add_notification(); },
     GNMI_GetResponse_Serialize, GNMI_Get_DeInit},
    {"Set", GNMI_Set_Init, [](void* ctx) { ResponseOf<GnmiRpcSet>(ctx)->add_response(); },
     GNMI_SetResponse_Serialize, GNMI_Set_DeInit},
    {"Subscribe", GNMI_Subscribe_Init,
     [](void* ctx) { Subscribe(ctx)->GetResponse_()->mutable_update()->add_update(); },
     GNMI_SubscribeResponse_Serialize, GNMI_Subscribe_DeInit},
    {"SubscribeSync", GNMI_Subscribe_Init,
     [](void* ctx) { Subscribe(ctx)->GetSyncResponse_()->add_extension(); },
     GNMI_SubscribeSyncResponse_Serialize, GNMI_Subscribe_DeInit},
};

const BufferCase kCapabilityBuffer = {
    "Capability", GNMI_Capability_Init,
    [](void* ctx) { ResponseOf<GnmiRpcCapability>(ctx)->add_supported_models(); },
    GNMI_CapabilityResponse_Serialize, GNMI_Capability_DeInit};

// A context of `bufferCase` that already holds a buffer, with its response
// grown beyond that buffer, so that the next Serialize must reallocate.
void* ContextNeedingALargerBuffer(const BufferCase& bufferCase) {
  void* ctx = bufferCase.init();
  bufferCase.grow(ctx);
  void* out = nullptr;
  int outLen = 0;
  EXPECT_EQ(bufferCase.serialize(ctx, &out, &outLen), 1);
  bufferCase.grow(ctx);
  return ctx;
}

TEST(AllocFaultSerialize, BufferFailureGivesStatusTwoAndLeavesTheOutputsAlone) {
  for (const BufferCase& bufferCase : kNothrowBuffers) {
    SCOPED_TRACE(bufferCase.name);
    void* ctx = ContextNeedingALargerBuffer(bufferCase);
    const int64_t live = allocfault::Live();
    int untouched = 0;
    void* out = &untouched;
    int outLen = -1;
    int result = -1;
    EXPECT_TRUE(FailFirstAllocation([&] { result = bufferCase.serialize(ctx, &out, &outLen); }));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(out, &untouched);
    EXPECT_EQ(outLen, -1);
    const auto* rpc = static_cast<GnmiRpcBase*>(ctx);
    EXPECT_EQ(rpc->GetSerializeStatus_(), GnmiRpcBase::kStatusBufferAllocFailed);
    EXPECT_EQ(rpc->GetBufferCapacity_(), 0);
    EXPECT_EQ(allocfault::Live(), live - 1);  // the old buffer is gone

    // With memory back, the same context serializes again.
    EXPECT_EQ(bufferCase.serialize(ctx, &out, &outLen), 1);
    EXPECT_GT(outLen, 0);
    EXPECT_EQ(rpc->GetBufferCapacity_(), outLen);
    bufferCase.deinit(ctx);
  }
}

TEST(AllocFaultSerialize, CapabilityBufferFailureThrowsTheAllocationException) {
  void* ctx = ContextNeedingALargerBuffer(kCapabilityBuffer);
  const int64_t live = allocfault::Live();
  int untouched = 0;
  void* out = &untouched;
  int outLen = -1;
  bool threw = false;
  EXPECT_TRUE(FailFirstAllocation([&] {
    try {
      kCapabilityBuffer.serialize(ctx, &out, &outLen);
    } catch (const std::bad_alloc&) {
      threw = true;
    }
  }));
  EXPECT_TRUE(threw);
  EXPECT_EQ(out, &untouched);
  EXPECT_EQ(outLen, -1);
  const auto* rpc = static_cast<GnmiRpcBase*>(ctx);
  EXPECT_EQ(rpc->GetSerializeStatus_(), GnmiRpcBase::kStatusOk);
  EXPECT_EQ(rpc->GetBufferCapacity_(), 0);
  EXPECT_EQ(allocfault::Live(), live - 1);
  kCapabilityBuffer.deinit(ctx);
}

// ---- Builders, setters and serializers, each allocation failing in turn ----

// What a case works on: an object made by an Init entry point, and the bytes
// of the messages in it that the case may change.
struct Owner {
  void* (*init)();
  void (*deinit)(void*);
  std::string (*bytes)(void*);
};

template <class Context>
std::string ResponseBytes(void* ctx) {
  return ResponseOf<Context>(ctx)->SerializeAsString();
}
std::string SubscribeBytes(void* ctx) {
  return Subscribe(ctx)->GetRequest_()->SerializeAsString() +
         Subscribe(ctx)->GetResponse_()->SerializeAsString();
}
template <class Message>
std::string MessageBytes(void* message) {
  return static_cast<Message*>(message)->SerializeAsString();
}

const Owner kGet{GNMI_Get_Init, GNMI_Get_DeInit, ResponseBytes<GnmiRpcGet>};
const Owner kSet{GNMI_Set_Init, GNMI_Set_DeInit, ResponseBytes<GnmiRpcSet>};
const Owner kCapability{GNMI_Capability_Init, GNMI_Capability_DeInit,
                        ResponseBytes<GnmiRpcCapability>};
const Owner kSubscribe{GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, SubscribeBytes};
const Owner kSouth{GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit,
                   MessageBytes<quorix_grpc_ipc::SouthMsg>};
const Owner kRpcData{GRPCI_RpcDataInit, GRPCI_RpcDataDeInit,
                     MessageBytes<quorix_grpc_ipc::RpcData>};
const Owner kSubsReply{GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit,
                       MessageBytes<quorix_dialin::SubsReply>};
const Owner kCancelReply{GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit,
                         MessageBytes<quorix_dialin::CancelReply>};

// Handles inside an owner, reached (with memory available) before the call.
void* Itself(void* owner) { return owner; }
void* Notification(void* ctx) { return GNMI_GetResponse_AppendNotification(ctx); }
void* Update(void* ctx) { return GNMI_Notification_AppendUpdate(Notification(ctx)); }
void* Path(void* ctx) { return GNMI_Update_SetPath(Update(ctx)); }
void* Elem(void* ctx) { return GNMI_Path_AppendPathElem(Path(ctx)); }
// An element with one key: its map's table exists. The runtime's map cannot
// take a failure while it grows its table (it counts the new buckets before
// allocating them, and its destructor then runs past the old table), so the
// insertion is failed here only where it allocates the entry and its strings.
void* KeyedElem(void* ctx) {
  void* elem = Elem(ctx);
  GNMI_PathElem_AppendKey(elem, "name", 4, "eth0", 4);
  return elem;
}
void* Value(void* ctx) { return GNMI_Update_SetVal(Update(ctx)); }
void* Leaflist(void* ctx) { return GNMI_TypedValue_LeaflistVal(Value(ctx)); }
void* Result(void* ctx) { return GNMI_SetResponse_AppendUpdateResult(ctx); }
void* Model(void* ctx) { return GNMI_CapabilityResponse_AppendSupportedModels(ctx); }
void* Client(void* msg) { return GRPCI_SouthMsgSetClientRpc(msg); }
void* Server(void* msg) { return GRPCI_SouthMsgSetServerRpc(msg); }

// Calls, each giving 1 on success. Texts are long enough to need storage of
// their own.
const std::string kText(40, 't');

template <auto kSetter>
int64_t SetText(void* handle) {
  kSetter(handle, kText.data(), static_cast<int>(kText.size()));
  return 1;
}
template <auto kBuilder>
int64_t Build(void* handle) {
  return kBuilder(handle) != nullptr ? 1 : 0;
}
int64_t AppendKey(void* elem) {
  GNMI_PathElem_AppendKey(elem, kText.data(), 40, kText.data(), 40);
  return 1;
}
int64_t AppendEncoding(void* ctx) {
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx, 2);
  return 1;
}
// 1, or 0 when the serializer failed and left its out-arguments alone.
template <testsupport::Serializer kSerialize>
int64_t SerializeBlock(void* message) {
  const auto serialized = testsupport::SerializeWith(kSerialize, 1, message);
  return serialized.result == 1 ? 1 : (serialized.outUntouched ? 0 : -1);
}

enum class Outcome {
  kBadAlloc,  // std::bad_alloc leaves the call
  kZero,      // the call returns 0
};

struct FaultCase {
  const char* name;
  const Owner& owner;
  void* (*reach)(void* owner);
  int64_t (*call)(void* handle);
  Outcome outcome;
  bool unchanged;  // the owner's messages are as before a failed call
};

const FaultCase kFaultCases[] = {
    {"GNMI_GetResponse_AppendNotification", kGet, Itself,
     Build<GNMI_GetResponse_AppendNotification>, Outcome::kBadAlloc, true},
    {"GNMI_SetResponse_AddPrefix", kSet, Itself, Build<GNMI_SetResponse_AddPrefix>,
     Outcome::kBadAlloc, true},
    {"GNMI_SetResponse_AppendUpdateResult", kSet, Itself,
     Build<GNMI_SetResponse_AppendUpdateResult>, Outcome::kBadAlloc, true},
    {"GNMI_SetResponse_AppendExtension", kSet, Itself, Build<GNMI_SetResponse_AppendExtension>,
     Outcome::kBadAlloc, true},
    {"GNMI_CapabilityResponse_AppendSupportedModels", kCapability, Itself,
     Build<GNMI_CapabilityResponse_AppendSupportedModels>, Outcome::kBadAlloc, true},
    {"GNMI_CapabilityResponse_AppendSupportedEncodings", kCapability, Itself, AppendEncoding,
     Outcome::kBadAlloc, true},
    {"GNMI_CapabilityResponse_AppendExtension", kCapability, Itself,
     Build<GNMI_CapabilityResponse_AppendExtension>, Outcome::kBadAlloc, true},
    {"GNMI_CapabilityResponse_SetGnmiVersion", kCapability, Itself,
     SetText<GNMI_CapabilityResponse_SetGnmiVersion>, Outcome::kBadAlloc, true},
    {"GNMI_SubscribeRequest_SetAliases", kSubscribe, Itself,
     Build<GNMI_SubscribeRequest_SetAliases>, Outcome::kBadAlloc, false},
    {"GNMI_SubscribeResponse_GetNotification", kSubscribe, Itself,
     Build<GNMI_SubscribeResponse_GetNotification>, Outcome::kBadAlloc, true},
    {"GNMI_Notification_AddPrefix", kGet, Notification, Build<GNMI_Notification_AddPrefix>,
     Outcome::kBadAlloc, true},
    {"GNMI_Notification_SetAlias", kGet, Notification, SetText<GNMI_Notification_SetAlias>,
     Outcome::kBadAlloc, true},
    {"GNMI_Notification_AppendUpdate", kGet, Notification, Build<GNMI_Notification_AppendUpdate>,
     Outcome::kBadAlloc, true},
    {"GNMI_Notification_AppendDelete", kGet, Notification, Build<GNMI_Notification_AppendDelete>,
     Outcome::kBadAlloc, true},
    {"GNMI_Update_SetPath", kGet, Update, Build<GNMI_Update_SetPath>, Outcome::kBadAlloc, true},
    {"GNMI_Update_SetVal", kGet, Update, Build<GNMI_Update_SetVal>, Outcome::kBadAlloc, true},
    {"GNMI_UpdateResult_AddPath", kSet, Result, Build<GNMI_UpdateResult_AddPath>,
     Outcome::kBadAlloc, true},
    {"GNMI_ModelData_SetName", kCapability, Model, SetText<GNMI_ModelData_SetName>,
     Outcome::kBadAlloc, true},
    {"GNMI_ModelData_SetOrganization", kCapability, Model, SetText<GNMI_ModelData_SetOrganization>,
     Outcome::kBadAlloc, true},
    {"GNMI_ModelData_SetVersion", kCapability, Model, SetText<GNMI_ModelData_SetVersion>,
     Outcome::kBadAlloc, true},
    // A typed value's setter has cleared the old member before it allocates.
    {"GNMI_TypedValue_SetStringVal", kGet, Value, SetText<GNMI_TypedValue_SetStringVal>,
     Outcome::kBadAlloc, false},
    {"GNMI_TypedValue_SetJsonVal", kGet, Value, SetText<GNMI_TypedValue_SetJsonVal>,
     Outcome::kBadAlloc, false},
    {"GNMI_TypedValue_SetJsonIetfVal", kGet, Value, SetText<GNMI_TypedValue_SetJsonIetfVal>,
     Outcome::kBadAlloc, false},
    {"GNMI_TypedValue_SetJsonietf_Val", kGet, Value, SetText<GNMI_TypedValue_SetJsonietf_Val>,
     Outcome::kBadAlloc, false},
    {"GNMI_TypedValue_SetProtoBytes", kGet, Value, SetText<GNMI_TypedValue_SetProtoBytes>,
     Outcome::kBadAlloc, false},
    {"GNMI_TypedValue_LeaflistVal", kGet, Value, Build<GNMI_TypedValue_LeaflistVal>,
     Outcome::kBadAlloc, false},
    {"GNMI_TypedValue_AddElement", kGet, Leaflist, Build<GNMI_TypedValue_AddElement>,
     Outcome::kBadAlloc, true},
    {"GNMI_Path_SetOrigin", kGet, Path, SetText<GNMI_Path_SetOrigin>, Outcome::kBadAlloc, true},
    {"GNMI_Path_SetTarget", kGet, Path, SetText<GNMI_Path_SetTarget>, Outcome::kBadAlloc, true},
    {"GNMI_Path_AppendPathElem", kGet, Path, Build<GNMI_Path_AppendPathElem>, Outcome::kBadAlloc,
     true},
    {"GNMI_PathElem_SetName", kGet, Elem, SetText<GNMI_PathElem_SetName>, Outcome::kBadAlloc, true},
    {"GNMI_PathElem_AppendKey", kGet, KeyedElem, AppendKey, Outcome::kBadAlloc, true},
    {"GRPCI_SouthMsgSetLogin", kSouth, Itself, Build<GRPCI_SouthMsgSetLogin>, Outcome::kBadAlloc,
     true},
    {"GRPCI_SouthMsgSetClientRpc", kSouth, Itself, Build<GRPCI_SouthMsgSetClientRpc>,
     Outcome::kBadAlloc, true},
    {"GRPCI_SouthMsgSetServerRpc", kSouth, Itself, Build<GRPCI_SouthMsgSetServerRpc>,
     Outcome::kBadAlloc, true},
    {"GRPCI_SouthMsgSetRpcData", kSouth, Itself, Build<GRPCI_SouthMsgSetRpcData>,
     Outcome::kBadAlloc, true},
    {"GRPCI_SouthMsgSetResultDesc", kSouth, Itself, SetText<GRPCI_SouthMsgSetResultDesc>,
     Outcome::kBadAlloc, true},
    {"GRPCI_ClientRpcSetRpcName", kSouth, Client, SetText<GRPCI_ClientRpcSetRpcName>,
     Outcome::kBadAlloc, true},
    {"GRPCI_ServerRpcSetRpcParament", kSouth, Server, SetText<GRPCI_ServerRpcSetRpcParament>,
     Outcome::kBadAlloc, true},
    {"GRPCI_RpcDataSetData", kRpcData, Itself, SetText<GRPCI_RpcDataSetData>, Outcome::kBadAlloc,
     true},
    {"GRPCI_SubsReplySetResponseCode", kSubsReply, Itself, SetText<GRPCI_SubsReplySetResponseCode>,
     Outcome::kBadAlloc, true},
    // Choosing `message` in the reply's oneof comes before its allocation.
    {"GRPCI_SubsReplySetMessage", kSubsReply, Itself, SetText<GRPCI_SubsReplySetMessage>,
     Outcome::kBadAlloc, false},
    {"GRPCI_CancelReplySetMessage", kCancelReply, Itself, SetText<GRPCI_CancelReplySetMessage>,
     Outcome::kBadAlloc, true},
    {"GRPCI_SouthMsgSerialize", kSouth, Client, SerializeBlock<GRPCI_SouthMsgSerialize>,
     Outcome::kZero, true},
    {"GRPCI_SubsReplySerialize", kSubsReply, Itself, SerializeBlock<GRPCI_SubsReplySerialize>,
     Outcome::kZero, true},
    {"GRPCI_CancelReplySerialize", kCancelReply, Itself, SerializeBlock<GRPCI_CancelReplySerialize>,
     Outcome::kZero, true},
};

// A kind of allocation failure: armed to hit the k-th allocation of one call.
struct Fault {
  const char* name;
  void (*arm)(int64_t k);
  void (*disarm)();
  bool (*fired)();
};

// The device allocator's calls: the serializers make one, which is failed.
uint32_t platformCallsWhenArmed = 0;
bool platformArmed = false;

const Fault kFaults[] = {
    {"global allocation", allocfault::FailAfter, allocfault::Disarm, allocfault::Fired},
    {"OXA_Malloc_F",
     [](int64_t k) {
       platformArmed = k == 0;
       OxaHost_FailNextMallocs(platformArmed ? 1 : 0);
       platformCallsWhenArmed = OxaHost_Stats().mallocCalls;
     },
     [] { OxaHost_FailNextMallocs(0); },
     [] { return platformArmed && OxaHost_Stats().mallocCalls > platformCallsWhenArmed; }},
};

// Makes a fresh owner, calls the case with `fault` armed for allocation k,
// judges the outcome and frees the owner. True when the failure hit.
bool CallOnce(const FaultCase& faultCase, const Fault& fault, int64_t k) {
  void* owner = faultCase.owner.init();
  void* handle = faultCase.reach(owner);
  const std::string before = faultCase.owner.bytes(owner);
  int64_t result = -1;
  bool threw = false;
  fault.arm(k);
  try {
    result = faultCase.call(handle);
  } catch (const std::bad_alloc&) {
    threw = true;
  }
  fault.disarm();
  const bool fired = fault.fired();
  if (!fired) {
    EXPECT_FALSE(threw);
    EXPECT_EQ(result, 1);
  } else if (faultCase.outcome == Outcome::kBadAlloc) {
    EXPECT_TRUE(threw) << "allocation " << k;
  } else {
    EXPECT_FALSE(threw) << "allocation " << k;
    EXPECT_EQ(result, 0) << "allocation " << k;
  }
  if (fired && faultCase.unchanged) {
    EXPECT_EQ(faultCase.owner.bytes(owner), before) << "allocation " << k;
  }
  faultCase.owner.deinit(owner);
  return fired;
}

// CallOnce, then nothing may be left allocated.
bool Attempt(const FaultCase& faultCase, const Fault& fault, int64_t k) {
  const int64_t live = allocfault::Live();
  const uint32_t blocks = OxaHost_Stats().liveBlocks;
  const bool fired = CallOnce(faultCase, fault, k);
  EXPECT_EQ(allocfault::Live(), live) << "leak after allocation " << k << " failed";
  EXPECT_EQ(OxaHost_Stats().liveBlocks, blocks) << "block left after allocation " << k;
  return fired;
}

TEST(AllocFaultCalls, EveryAllocationFailsInTurnWithTheDocumentedOutcomeAndNoLeak) {
  for (const FaultCase& faultCase : kFaultCases) {
    SCOPED_TRACE(faultCase.name);
    int64_t failures = 0;
    for (const Fault& fault : kFaults) {
      SCOPED_TRACE(fault.name);
      int64_t k = 0;
      while (k < kAllocationLimit && Attempt(faultCase, fault, k)) ++k;
      EXPECT_LT(k, kAllocationLimit) << "still failing";
      failures += k;
    }
    EXPECT_GT(failures, 0) << "no allocation to fail";
  }
}

}  // namespace
