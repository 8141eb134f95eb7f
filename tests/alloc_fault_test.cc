// Allocation failure injected into the entry points that allocate: each
// allocation a call makes is failed in turn, and the call must then give its
// documented failure result and leave nothing allocated. Further entry points
// join by adding a row to a table below, or a table of their own run through
// FailEachAllocation.
#include <gtest/gtest.h>

#include <new>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "support/alloc_fault.h"

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

struct ContextFamily {
  const char* name;
  void* (*init)();
  void (*deinit)(void*);
  int64_t messages;  // request and response(s), each its own allocation
};

const ContextFamily kContextFamilies[] = {
    {"Capability", GNMI_Capability_Init, GNMI_Capability_DeInit, 2},
    {"Get", GNMI_Get_Init, GNMI_Get_DeInit, 2},
    {"Set", GNMI_Set_Init, GNMI_Set_DeInit, 2},
    {"Subscribe", GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, 3},
};

TEST(AllocFaultInit, EveryAllocationOfEveryInitFailsToNullWithoutLeaking) {
  for (const ContextFamily& family : kContextFamilies) {
    SCOPED_TRACE(family.name);
    const int64_t allocations =
        FailEachAllocation(family.init, [&](void* ctx, bool failed, int64_t live) {
          if (failed) {
            EXPECT_EQ(ctx, nullptr);
          } else {
            EXPECT_NE(ctx, nullptr);
            family.deinit(ctx);
          }
          EXPECT_EQ(allocfault::Live(), live);
        });
    EXPECT_GE(allocations, family.messages + 1);  // the messages and the context
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

}  // namespace
