// Allocation failure injected into the entry points that allocate: each
// allocation a call makes is failed in turn, and the call must then give its
// documented failure result and leave nothing allocated. Further entry points
// join by adding a row to one of the tables below.
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
    int64_t k = 0;
    for (bool failed = true; failed && k < kAllocationLimit; ++k) {
      const int64_t live = allocfault::Live();
      allocfault::FailAfter(k);
      void* handle = init.init();
      allocfault::Disarm();
      failed = allocfault::Fired();
      EXPECT_EQ(handle == nullptr, failed) << "allocation " << k;
      if (handle != nullptr) init.deinit(handle);
      EXPECT_EQ(allocfault::Live(), live) << "leak after allocation " << k << " failed";
    }
    EXPECT_LT(k, kAllocationLimit) << "still failing";
    EXPECT_GE(k, init.messages + 2);  // each message failed, then one success
  }
}

// What a case works on: an object made by an Init entry point, and the bytes
// of the messages in it that the case may change.
struct Owner {
  void* (*init)();
  void (*deinit)(void*);
  std::string (*bytes)(void*);
};

template <class Context>
auto* ResponseOf(void* ctx) {
  return static_cast<Context*>(ctx)->response_;
}
GnmiRpcSubscribe* Subscribe(void* ctx) { return static_cast<GnmiRpcSubscribe*>(ctx); }

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

// A gNMI context whose response serializes to more bytes with each grow; its
// output buffer failing gives status 2 and result 0, or (Capabilities) the
// standard allocation exception.
struct BufferCase {
  const char* name;
  const Owner& owner;
  void (*grow)(void* ctx);
  int (*serialize)(void* ctx, void** out, int* outLen);
  bool throws = false;
};

const BufferCase kBuffers[] = {
    {"Get", kGet, [](void* ctx) { ResponseOf<GnmiRpcGet>(ctx)->add_notification(); },
     GNMI_GetResponse_Serialize},
    {"Set", kSet, [](void* ctx) { ResponseOf<GnmiRpcSet>(ctx)->add_response(); },
     GNMI_SetResponse_Serialize},
    {"Subscribe", kSubscribe,
     [](void* ctx) { Subscribe(ctx)->GetResponse_()->mutable_update()->add_update(); },
     GNMI_SubscribeResponse_Serialize},
    {"SubscribeSync", kSubscribe,
     [](void* ctx) { Subscribe(ctx)->GetSyncResponse_()->add_extension(); },
     GNMI_SubscribeSyncResponse_Serialize},
    {"Capability", kCapability,
     [](void* ctx) { ResponseOf<GnmiRpcCapability>(ctx)->add_supported_models(); },
     GNMI_CapabilityResponse_Serialize, true},
};

TEST(AllocFaultSerialize, BufferFailureGivesTheDocumentedOutcomeAndLeavesTheOutputsAlone) {
  for (const BufferCase& bufferCase : kBuffers) {
    SCOPED_TRACE(bufferCase.name);
    // A context that holds a buffer, its response grown beyond it.
    void* ctx = bufferCase.owner.init();
    bufferCase.grow(ctx);
    void* out = nullptr;
    int outLen = 0;
    EXPECT_EQ(bufferCase.serialize(ctx, &out, &outLen), 1);
    bufferCase.grow(ctx);

    const int64_t live = allocfault::Live();
    int untouched = 0;
    out = &untouched;
    outLen = -1;
    int result = -1;
    bool threw = false;
    allocfault::FailAfter(0);
    try {
      result = bufferCase.serialize(ctx, &out, &outLen);
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    allocfault::Disarm();
    EXPECT_TRUE(allocfault::Fired());
    EXPECT_EQ(threw, bufferCase.throws);
    EXPECT_EQ(result, bufferCase.throws ? -1 : 0);
    EXPECT_EQ(out, &untouched);
    EXPECT_EQ(outLen, -1);
    const auto* rpc = static_cast<GnmiRpcBase*>(ctx);
    EXPECT_EQ(rpc->GetSerializeStatus_(),
              bufferCase.throws ? GnmiRpcBase::kStatusOk : GnmiRpcBase::kStatusBufferAllocFailed);
    EXPECT_EQ(rpc->GetBufferCapacity_(), 0);
    EXPECT_EQ(allocfault::Live(), live - 1);  // the old buffer is gone

    // With memory back, the same context serializes again.
    EXPECT_EQ(bufferCase.serialize(ctx, &out, &outLen), 1);
    EXPECT_GT(outLen, 0);
    EXPECT_EQ(rpc->GetBufferCapacity_(), outLen);
    bufferCase.owner.deinit(ctx);
  }
}

// ---- Builders, setters and serializers, each allocation failing in turn ----

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
  const Owner& owner;
  void* (*reach)(void* owner);
  const char* name;
  int64_t (*call)(void* handle);
  bool unchanged = true;  // the owner's messages are as before a failed call
  Outcome outcome = Outcome::kBadAlloc;
};

// The entry point's name and the call of it through `kind`.
// clang-format off
#define CALL(kind, entry) #entry, kind<entry>  // NOLINT(bugprone-macro-parentheses)
// clang-format on

const FaultCase kFaultCases[] = {
    {kGet, Itself, CALL(Build, GNMI_GetResponse_AppendNotification)},
    {kSet, Itself, CALL(Build, GNMI_SetResponse_AddPrefix)},
    {kSet, Itself, CALL(Build, GNMI_SetResponse_AppendUpdateResult)},
    {kSet, Itself, CALL(Build, GNMI_SetResponse_AppendExtension)},
    {kCapability, Itself, CALL(Build, GNMI_CapabilityResponse_AppendSupportedModels)},
    {kCapability, Itself, "GNMI_CapabilityResponse_AppendSupportedEncodings", AppendEncoding},
    {kCapability, Itself, CALL(Build, GNMI_CapabilityResponse_AppendExtension)},
    {kCapability, Itself, CALL(SetText, GNMI_CapabilityResponse_SetGnmiVersion)},
    {kSubscribe, Itself, CALL(Build, GNMI_SubscribeRequest_SetAliases), false},
    {kSubscribe, Itself, CALL(Build, GNMI_SubscribeResponse_GetNotification)},
    {kGet, Notification, CALL(Build, GNMI_Notification_AddPrefix)},
    {kGet, Notification, CALL(SetText, GNMI_Notification_SetAlias)},
    {kGet, Notification, CALL(Build, GNMI_Notification_AppendUpdate)},
    {kGet, Notification, CALL(Build, GNMI_Notification_AppendDelete)},
    {kGet, Update, CALL(Build, GNMI_Update_SetPath)},
    {kGet, Update, CALL(Build, GNMI_Update_SetVal)},
    {kSet, Result, CALL(Build, GNMI_UpdateResult_AddPath)},
    {kCapability, Model, CALL(SetText, GNMI_ModelData_SetName)},
    {kCapability, Model, CALL(SetText, GNMI_ModelData_SetOrganization)},
    {kCapability, Model, CALL(SetText, GNMI_ModelData_SetVersion)},
    // A typed value's setter has cleared the old member before it allocates.
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetStringVal), false},
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetJsonVal), false},
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetJsonIetfVal), false},
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetJsonietf_Val), false},
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetProtoBytes), false},
    {kGet, Value, CALL(Build, GNMI_TypedValue_LeaflistVal), false},
    {kGet, Leaflist, CALL(Build, GNMI_TypedValue_AddElement)},
    {kGet, Path, CALL(SetText, GNMI_Path_SetOrigin)},
    {kGet, Path, CALL(SetText, GNMI_Path_SetTarget)},
    {kGet, Path, CALL(Build, GNMI_Path_AppendPathElem)},
    {kGet, Elem, CALL(SetText, GNMI_PathElem_SetName)},
    {kGet, KeyedElem, "GNMI_PathElem_AppendKey", AppendKey},
    {kSouth, Itself, CALL(Build, GRPCI_SouthMsgSetLogin)},
    {kSouth, Itself, CALL(Build, GRPCI_SouthMsgSetClientRpc)},
    {kSouth, Itself, CALL(Build, GRPCI_SouthMsgSetServerRpc)},
    {kSouth, Itself, CALL(Build, GRPCI_SouthMsgSetRpcData)},
    {kSouth, Itself, CALL(SetText, GRPCI_SouthMsgSetResultDesc)},
    {kSouth, Client, CALL(SetText, GRPCI_ClientRpcSetRpcName)},
    {kSouth, Server, CALL(SetText, GRPCI_ServerRpcSetRpcParament)},
    {kRpcData, Itself, CALL(SetText, GRPCI_RpcDataSetData)},
    {kSubsReply, Itself, CALL(SetText, GRPCI_SubsReplySetResponseCode)},
    // Choosing `message` in the reply's oneof comes before its allocation.
    {kSubsReply, Itself, CALL(SetText, GRPCI_SubsReplySetMessage), false},
    {kCancelReply, Itself, CALL(SetText, GRPCI_CancelReplySetMessage)},
    {kSouth, Client, CALL(SerializeBlock, GRPCI_SouthMsgSerialize), true, Outcome::kZero},
    {kSubsReply, Itself, CALL(SerializeBlock, GRPCI_SubsReplySerialize), true, Outcome::kZero},
    {kCancelReply, Itself, CALL(SerializeBlock, GRPCI_CancelReplySerialize), true, Outcome::kZero},
};

#undef CALL

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

// Calls the case on a fresh owner with `fault` armed for allocation k, judges
// the outcome and frees the owner. True when the failure hit.
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
  EXPECT_EQ(threw, fired && faultCase.outcome == Outcome::kBadAlloc) << "allocation " << k;
  if (!threw) {
    EXPECT_EQ(result, fired ? 0 : 1) << "allocation " << k;
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

// ---- Paths read, copied and joined: built aside, then swapped in ----

#include "gnmi/gnmi_path.h"

namespace {

// Two short keys: the same allocations whichever the map's order.
const std::string kPathText = "oc:/interfaces/interface[name=eth0][unit=0]/" + kText;

void ReadPathText(void* to, void* /*from*/) {
  GNMI_Path_FromString(to, kPathText.data(), kPathText.size(), nullptr);
}

const std::pair<const char*, void (*)(void*, void*)> kPathCalls[] = {
    {"GNMI_Path_FromString", ReadPathText},
    {"GNMI_Path_CopyFrom", GNMI_Path_CopyFrom},
    {"GNMI_Path_AppendElems", GNMI_Path_AppendElems},
};

// A new element whose key table fails to be made is kept for good with its
// name and table (gnmi/gnmi_path.h, convention 6): the call cannot tell that
// failure from its first key's, so at most two such per keyed element.
TEST(AllocFaultPaths, EveryAllocationFailsInTurnLeavingThePathAsItWas) {
  for (const auto& [name, call] : kPathCalls) {
    SCOPED_TRACE(name);
    int64_t k = 0;
    int64_t keptElements = 0;
    for (bool failed = true; failed && k < kAllocationLimit; ++k) {
      const int64_t live = allocfault::Live();
      bool threw = false;
      {
        gnmi::Path from;
        gnmi::Path to;
        ReadPathText(&from, nullptr);
        GNMI_Path_FromString(&to, "/x[k=v]/y", 9, nullptr);
        to.set_target("r1");
        const std::string before = to.SerializeAsString();
        allocfault::FailAfter(k);
        try {
          call(&to, &from);
        } catch (const std::bad_alloc&) {
          threw = true;
        }
        allocfault::Disarm();
        failed = allocfault::Fired();
        EXPECT_EQ(threw, failed) << "allocation " << k;
        EXPECT_EQ(to.SerializeAsString() == before, failed) << "allocation " << k;
      }
      const int64_t left = allocfault::Live() - live;
      EXPECT_LE(left, threw ? 3 : 0) << "leak after allocation " << k << " failed";
      keptElements += left > 0 ? 1 : 0;
    }
    EXPECT_LT(k, kAllocationLimit) << "still failing";
    EXPECT_LE(keptElements, 2);
  }
}

}  // namespace
