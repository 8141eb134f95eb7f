// Allocation failure injected into the entry points that allocate: each
// allocation a call makes is failed in turn, and the call must then give its
// documented failure result and leave nothing allocated. The program replaces
// the global allocation functions (and so those of every library it loads):
// the throwing forms then throw std::bad_alloc, the nothrow forms return
// null. Further entry points join by adding a row to one of the tables below.
#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <thread>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_path.h"
#include "gnmi/gnmi_rpc.h"
#include "gnmi/gnmi_stream.h"
#include "gnmi/gnmi_value.h"
#include "gnmi/gnmi_wire.h"
#include "grpci/grpci_ex.h"
#include "oxa_mem_host.h"
#include "quorix-grpc-dialin.pb.h"
#include "quorix-grpc-ipc.pb.h"
#include "support/oxa_blocks.h"
#include "support/reply_families.h"

namespace allocfault {

std::atomic<int64_t> countdown{-1};  // the allocations to let through before one fails
std::atomic<bool> fired{false};      // the armed failure has happened
std::atomic<int64_t> live{0};        // allocations not yet freed
std::atomic<int64_t> liveBytes{0};   // their usable bytes
std::atomic<int64_t> made{0};        // allocations made

void FailAfter(int64_t n) {
  fired = false;
  countdown = n;
}
void Disarm() { countdown = -1; }
bool Fired() { return fired; }
int64_t Live() { return live; }

void* Allocate(std::size_t size) {
  if (countdown.load() >= 0 && countdown-- == 0) {
    fired = true;
    return nullptr;
  }
  void* block = std::malloc(size == 0 ? 1 : size);
  live += block != nullptr ? 1 : 0;
  liveBytes += static_cast<int64_t>(malloc_usable_size(block));
  ++made;
  return block;
}
void* AllocateOrThrow(std::size_t size) {
  void* block = Allocate(size);
  return block != nullptr ? block : throw std::bad_alloc();
}
void Release(void* block) {
  live -= block != nullptr ? 1 : 0;
  liveBytes -= static_cast<int64_t>(malloc_usable_size(block));
  std::free(block);
}

}  // namespace allocfault

void* operator new(std::size_t size) { return allocfault::AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocfault::AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocfault::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocfault::Allocate(size);
}
void operator delete(void* block) noexcept { allocfault::Release(block); }
void operator delete[](void* block) noexcept { allocfault::Release(block); }
void operator delete(void* block, std::size_t) noexcept { allocfault::Release(block); }
void operator delete[](void* block, std::size_t) noexcept { allocfault::Release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { allocfault::Release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { allocfault::Release(block); }

namespace {

using allocfault::Live;

// More allocations than any call under test makes.
constexpr int64_t kAllocationLimit = 256;

// Calls attempt(k) for k = 0, 1, ... (each arms allocation k to fail) until
// an attempt that no failure hit, expecting each to leave nothing allocated
// (or at most `kept` allocations, when the failure hit); returns how many
// failed.
int64_t FailEachInTurn(const std::function<bool(int64_t k)>& attempt, int64_t kept = 0) {
  int64_t k = 0;
  for (; k < kAllocationLimit; ++k) {
    const int64_t live = Live();
    const bool fired = attempt(k);
    EXPECT_LE(Live() - live, fired ? kept : 0) << "leak after allocation " << k << " failed";
    EXPECT_GE(Live(), live);
    if (!fired) break;
  }
  EXPECT_LT(k, kAllocationLimit) << "still failing";
  return k;
}

// Runs `call`; true when std::bad_alloc left it.
template <class Call>
bool Throws(Call call) {
  try {
    call();
  } catch (const std::bad_alloc&) {
    return true;
  }
  return false;
}

TEST(AllocFaultInit, EveryAllocationOfEveryInitFailsToNullWithoutLeaking) {
  // Init and DeInit, and the messages besides the object, each its own allocation.
  const std::tuple<void* (*)(), void (*)(void*), int64_t> inits[] = {
      {GNMI_Capability_Init, GNMI_Capability_DeInit, 2},
      {GNMI_Get_Init, GNMI_Get_DeInit, 2},
      {GNMI_Set_Init, GNMI_Set_DeInit, 2},
      {GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, 3},
      {GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit, 0},
      {GRPCI_RpcDataInit, GRPCI_RpcDataDeInit, 0},
      {GRPCI_SubsArgsInit, GRPCI_SubsArgsDeInit, 0},
      {GRPCI_CancelArgsInit, GRPCI_CancelArgsDeInit, 0},
      {GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit, 0},
      {GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit, 0},
  };
  for (const auto& row : inits) {
    SCOPED_TRACE(&row - inits);
    const auto& [init, deinit, messages] = row;
    deinit(nullptr);  // ignored
    const int64_t failed = FailEachInTurn([&, init = init, deinit = deinit](int64_t k) {
      allocfault::FailAfter(k);
      void* handle = init();
      allocfault::Disarm();
      EXPECT_EQ(handle == nullptr, allocfault::Fired()) << "allocation " << k;
      if (handle != nullptr) deinit(handle);
      return allocfault::Fired();
    });
    EXPECT_GE(failed, messages + 1);  // each message failed
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
template <class Message, void* (*kInit)(), void (*kDeInit)(void*)>
const Owner kMessage{kInit, kDeInit, MessageBytes<Message>};

const Owner kGet{GNMI_Get_Init, GNMI_Get_DeInit, ResponseBytes<GnmiRpcGet>};
// A Get context whose response is on its arena.
const Owner kGetReset{[] {
                        void* ctx = GNMI_Get_Init();
                        return GNMI_GetResponse_Reset(ctx) == 1 ? ctx : nullptr;
                      },
                      GNMI_Get_DeInit, ResponseBytes<GnmiRpcGet>};
const Owner kSet{GNMI_Set_Init, GNMI_Set_DeInit, ResponseBytes<GnmiRpcSet>};
const Owner kCapability{GNMI_Capability_Init, GNMI_Capability_DeInit,
                        ResponseBytes<GnmiRpcCapability>};
const Owner kSubscribe{GNMI_Subscribe_Init, GNMI_Subscribe_DeInit, SubscribeBytes};
const Owner& kSouth = kMessage<quorix_grpc_ipc::SouthMsg, GRPCI_SouthMsgInit, GRPCI_SouthMsgDeInit>;
const Owner& kRpcData = kMessage<quorix_grpc_ipc::RpcData, GRPCI_RpcDataInit, GRPCI_RpcDataDeInit>;
const Owner& kSubsReply =
    kMessage<quorix_dialin::SubsReply, GRPCI_SubsReplyInit, GRPCI_SubsReplyDeInit>;
const Owner& kCancelReply =
    kMessage<quorix_dialin::CancelReply, GRPCI_CancelReplyInit, GRPCI_CancelReplyDeInit>;

TEST(AllocFaultSerialize, BufferFailureGivesTheDocumentedOutcomeAndLeavesTheOutputsAlone) {
  // A gNMI context whose response serializes to more bytes with each grow;
  // its output buffer failing gives status 2 and result 0, or (Capabilities)
  // the standard allocation exception.
  const std::tuple<const Owner&, void (*)(void*), int (*)(void*, void**, int*), bool> cases[] = {
      {kGet, [](void* ctx) { ResponseOf<GnmiRpcGet>(ctx)->add_notification(); },
       GNMI_GetResponse_Serialize, false},
      {kSet, [](void* ctx) { ResponseOf<GnmiRpcSet>(ctx)->add_response(); },
       GNMI_SetResponse_Serialize, false},
      {kSubscribe,
       [](void* ctx) { Subscribe(ctx)->GetResponse_()->mutable_update()->add_update(); },
       GNMI_SubscribeResponse_Serialize, false},
      {kSubscribe, [](void* ctx) { Subscribe(ctx)->GetSyncResponse_()->add_extension(); },
       GNMI_SubscribeSyncResponse_Serialize, false},
      {kCapability, [](void* ctx) { ResponseOf<GnmiRpcCapability>(ctx)->add_supported_models(); },
       GNMI_CapabilityResponse_Serialize, true},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(&row - cases);
    const auto& [owner, grow, serialize, throws] = row;
    const std::unique_ptr<void, void (*)(void*)> ctx(owner.init(), owner.deinit);
    const auto* rpc = static_cast<GnmiRpcBase*>(ctx.get());
    grow(ctx.get());  // a context that holds a buffer, its response grown beyond it
    void* out = nullptr;
    int outLen = 0;
    EXPECT_EQ(serialize(ctx.get(), &out, &outLen), 1);
    grow(ctx.get());
    const int64_t before = Live();
    int untouched = 0;
    out = &untouched;
    outLen = -1;
    int result = -1;
    allocfault::FailAfter(0);
    const bool threw = Throws([&, call = serialize] { result = call(ctx.get(), &out, &outLen); });
    allocfault::Disarm();
    EXPECT_EQ(std::make_tuple(allocfault::Fired(), threw, result, out, outLen),
              std::make_tuple(true, throws, throws ? -1 : 0, &untouched, -1));
    // The status word holds 2 after a buffer failure.
    EXPECT_EQ(std::make_tuple(rpc->GetSerializeStatus_(), rpc->GetBufferCapacity_()),
              std::make_tuple(throws ? 0 : 2, 0));
    EXPECT_EQ(Live(), before - 1);  // the old buffer is gone
    // With memory back, the same context serializes again.
    EXPECT_EQ(serialize(ctx.get(), &out, &outLen), 1);
    EXPECT_GT(outLen, 0);
    EXPECT_EQ(rpc->GetBufferCapacity_(), outLen);
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
// A path holding /x[k=v]/y and a target, in a response whose arena (after a
// reset) is past its first block: the call's allocations there take blocks of
// their own, each of which can fail.
void* FullPath(void* ctx) {
  for (int i = 0; i < 60; ++i) Update(ctx);
  void* path = Path(ctx);
  GNMI_Path_FromString(path, "/x[k=v]/y", 9, nullptr);
  GNMI_Path_SetTarget(path, "r1", 2);
  return path;
}
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
int64_t SetDecimal(void* value) {
  GNMI_TypedValue_SetDecimalVal(value, 5, 1);
  return 1;
}
int64_t SetAny(void* value) {
  GNMI_TypedValue_SetAnyVal(value, kText.data(), 40, kText.data(), 40);
  return 1;
}
int64_t AppendEncoding(void* ctx) {
  GNMI_CapabilityResponse_AppendSupportedEncodings(ctx, 2);
  return 1;
}
// Paths read, copied and joined: built aside, then swapped in. The source's
// keys are short (the same allocations whichever the map's order); one
// element has twelve, its key table grown at the 1st, 6th and 12th; many
// short elements, whose moves into an arena take blocks of their own.
const std::string kPathText = "oc:/interfaces/interface[name=eth0][unit=0]/" + kText +
                              "[a=][b=][c=][d=][e=][f=][g=][h=][i=][j=][k=][l=]" +
                              "/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e/e";
int64_t ReadPath(void* path) {
  return GNMI_Path_FromString(path, kPathText.data(), kPathText.size(), nullptr);
}
gnmi::Path kSource = [] {
  gnmi::Path source;
  ReadPath(&source);
  return source;
}();
template <int (*kCall)(void*, void*)>
int64_t FromSource(void* path) {
  return kCall(path, &kSource);
}
// 1, or 0 when the serializer failed and left its out-arguments alone.
template <testsupport::Serializer kSerialize>
int64_t SerializeBlock(void* message) {
  const auto serialized = testsupport::SerializeWith(kSerialize, 1, message);
  return serialized.result == 1 ? 1 : (serialized.outUntouched ? 0 : -1);
}

struct FaultCase {
  const Owner& owner;
  void* (*reach)(void* owner);
  const char* name;
  int64_t (*call)(void* handle);
  bool unchanged = true;  // the owner's messages are as before a failed call
  bool throws = true;     // a failed call ends in std::bad_alloc, else it returns 0
  int64_t kept = 0;       // allocations a failed call may keep for good
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
    {kGet, Update, CALL(Build, GNMI_Update_SetPath)},
    {kGet, Update, CALL(Build, GNMI_Update_SetVal)},
    {kSet, Result, CALL(Build, GNMI_UpdateResult_AddPath)},
    {kCapability, Model, CALL(SetText, GNMI_ModelData_SetName)},
    // A typed value's setter has cleared the old member before it allocates.
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetStringVal), false},
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetJsonIetfVal), false},
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetProtoBytes), false},
    {kGet, Value, CALL(Build, GNMI_TypedValue_LeaflistVal), false},
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetBytesVal), false},
    {kGet, Value, CALL(SetText, GNMI_TypedValue_SetAsciiVal), false},
    {kGet, Value, "GNMI_TypedValue_SetAnyVal", SetAny, false},
    // The decimal is made before it is switched to.
    {kGet, Value, "GNMI_TypedValue_SetDecimalVal", SetDecimal},
    {kGet, Leaflist, CALL(Build, GNMI_TypedValue_AddElement)},
    {kGet, Path, CALL(SetText, GNMI_Path_SetOrigin)},
    {kGet, Path, CALL(Build, GNMI_Path_AppendPathElem)},
    {kGet, Elem, CALL(SetText, GNMI_PathElem_SetName)},
    {kGet, KeyedElem, "GNMI_PathElem_AppendKey", AppendKey},
    {kSouth, Itself, CALL(Build, GRPCI_SouthMsgSetLogin)},
    {kSouth, Itself, CALL(Build, GRPCI_SouthMsgSetClientRpc)},
    {kSouth, Itself, CALL(SetText, GRPCI_SouthMsgSetResultDesc)},
    {kSouth, Client, CALL(SetText, GRPCI_ClientRpcSetRpcName)},
    {kSouth, Server, CALL(SetText, GRPCI_ServerRpcSetRpcParament)},
    {kRpcData, Itself, CALL(SetText, GRPCI_RpcDataSetData)},
    {kSubsReply, Itself, CALL(SetText, GRPCI_SubsReplySetResponseCode)},
    // Choosing `message` in the reply's oneof comes before its allocation.
    {kSubsReply, Itself, CALL(SetText, GRPCI_SubsReplySetMessage), false},
    {kCancelReply, Itself, CALL(SetText, GRPCI_CancelReplySetMessage)},
    {kSouth, Client, CALL(SerializeBlock, GRPCI_SouthMsgSerialize), true, false},
    {kSubsReply, Itself, CALL(SerializeBlock, GRPCI_SubsReplySerialize), true, false},
    {kCancelReply, Itself, CALL(SerializeBlock, GRPCI_CancelReplySerialize), true, false},
    // Into a reset response first, before anything sets up the runtime's
    // descriptors; on the heap a new element whose key table fails to be made
    // is kept for good with its name and table (gnmi/gnmi_path.h, convention
    // 6), which the call cannot tell from its first key's failure.
    {kGetReset, FullPath, CALL(FromSource, GNMI_Path_CopyFrom)},
    {kGetReset, FullPath, "GNMI_Path_FromString", ReadPath},
    {kGetReset, FullPath, CALL(FromSource, GNMI_Path_AppendElems)},
    {kGet, FullPath, CALL(FromSource, GNMI_Path_CopyFrom), true, true, 15},
    {kGet, FullPath, "GNMI_Path_FromString", ReadPath, true, true, 15},
    {kGet, FullPath, CALL(FromSource, GNMI_Path_AppendElems), true, true, 15},
};

#undef CALL

// Calls the case on a fresh owner with allocation k failing: of the global
// ones, or (`platform`, k 0 only) the device allocator's. Judges the outcome
// and that nothing is left allocated; true when the failure hit.
bool Attempt(const FaultCase& c, bool platform, int64_t k) {
  const uint32_t blocksBefore = OxaHost_Stats().liveBlocks;
  bool fired = false;
  {
    const std::unique_ptr<void, void (*)(void*)> owner(c.owner.init(), c.owner.deinit);
    void* handle = c.reach(owner.get());
    const std::string before = c.owner.bytes(owner.get());
    const uint32_t mallocs = OxaHost_Stats().mallocCalls;
    int64_t result = -1;
    if (platform) OxaHost_FailNextMallocs(k == 0 ? 1 : 0);
    if (!platform) allocfault::FailAfter(k);
    const bool threw = Throws([&] { result = c.call(handle); });
    allocfault::Disarm();
    OxaHost_FailNextMallocs(0);
    fired = platform ? k == 0 && OxaHost_Stats().mallocCalls > mallocs : allocfault::Fired();
    EXPECT_EQ(threw, fired && c.throws) << "allocation " << k;
    EXPECT_TRUE(threw || result == (fired ? 0 : 1)) << "allocation " << k << ": " << result;
    EXPECT_TRUE(!fired || !c.unchanged || c.owner.bytes(owner.get()) == before) << k;
  }
  EXPECT_EQ(OxaHost_Stats().liveBlocks, blocksBefore) << "block left after allocation " << k;
  return fired;
}

TEST(AllocFaultCalls, EveryAllocationFailsInTurnWithTheDocumentedOutcomeAndNoLeak) {
  for (const FaultCase& c : kFaultCases) {
    SCOPED_TRACE(c.name);
    int64_t failures = 0;
    for (bool platform : {false, true}) {
      SCOPED_TRACE(platform ? "OXA_Malloc_F" : "global allocation");
      failures += FailEachInTurn([&](int64_t k) { return Attempt(c, platform, k); }, c.kept);
    }
    EXPECT_GT(failures, 0) << "no allocation to fail";
  }
}

// A reset and the first build after it, each allocation failing in turn.

// The reply on the heap, or (`grown`) on an arena that outgrew its first
// block. Only a first reset returns 0, when its first block cannot be had; a
// grown arena keeps its block when a larger one cannot be had.
TEST(AllocFaultReset, EachAllocationOfAResetAndTheBuildAfterItFailsInTurn) {
  constexpr int kSteps = 200;  // more than an arena's first block holds
  for (const testsupport::ReplyFamily& c : testsupport::kReplyFamilies) {
    for (const bool grown : {false, true}) {
      SCOPED_TRACE(grown ? "grown arena" : "heap");
      FailEachInTurn([&](int64_t k) {
        const std::unique_ptr<void, void (*)(void*)> ctx(c.init(), c.deinit);
        int done = 0;
        EXPECT_EQ(grown ? c.reset(ctx.get()) : 1, 1);  // a fresh context's first reset
        c.Build(ctx.get(), grown ? 3 * kSteps : kSteps, &done);
        const std::string before = testsupport::Serialized(c.serialize, ctx.get());
        int result = -1;
        allocfault::FailAfter(k);
        Throws([&] {
          result = c.reset(ctx.get());
          if (result == 1) c.Build(ctx.get(), kSteps, &done);
        });
        allocfault::Disarm();
        const bool fired = allocfault::Fired();
        EXPECT_EQ(result, fired && k == 0 && !grown ? 0 : 1) << k;  // bad_alloc only from the build
        EXPECT_EQ(k == 0 && grown ? done : kSteps, kSteps);         // the reset had the failure
        EXPECT_EQ(testsupport::Serialized(c.serialize, ctx.get()),
                  result == 0 ? before : c.Fresh(done));
        return fired;
      });
    }
  }
}

// A stream of replies of one shape from a context reset before each takes no
// new memory and no heap allocation after its first messages, whichever
// thread builds them: the one that resets, one worker for all, a new one each.
TEST(StreamMemory, AResetStreamTakesNoNewMemoryAfterItsFirstMessagesOnAnyThread) {
  for (const testsupport::ReplyFamily& c : testsupport::kReplyFamilies) {
    for (const int builder : {0, 1, 2}) {
      SCOPED_TRACE(builder);
      const std::unique_ptr<void, void (*)(void*)> ctx(c.init(), c.deinit);
      std::atomic<int> turn{0};  // 1: the worker builds; -1: it ends
      std::atomic<int64_t> made{0};
      const auto build = [&] {
        const int64_t before = allocfault::made;
        int done = 0;
        c.Build(ctx.get(), 50, &done);  // far past the region's first block
        made += allocfault::made - before;
      };
      std::thread worker;
      if (builder == 1) {
        worker = std::thread([&] {
          for (int t; (t = turn) >= 0; std::this_thread::yield()) {
            if (t == 1) build(), turn = 0;
          }
        });
      }
      int64_t bytes = 0;
      for (int m = 0; m < 40; ++m) {
        if (m == 10) bytes = allocfault::liveBytes, made = 0;
        ASSERT_EQ(c.reset(ctx.get()), 1);
        if (builder != 1) builder == 0 ? build() : std::thread(build).join();
        for (turn = builder == 1 ? 1 : 0; turn != 0;) std::this_thread::yield();
        EXPECT_EQ(testsupport::Serialized(c.serialize, ctx.get()), c.Fresh(50));
      }
      EXPECT_EQ(std::make_tuple(allocfault::liveBytes - bytes, made.load()), std::make_tuple(0, 0));
      turn = -1;
      if (worker.joinable()) worker.join();
    }
  }
}

// The notification writer: a wire path, a first Begin (the writer and its
// buffer) and an update that grows the buffer, each allocation failing in
// turn: 0 (NULL), the message and the output handed out as they were.
TEST(AllocFaultWriter, EveryAllocationFailsInTurnLeavingMessageAndOutput) {
  const std::unique_ptr<void, void (*)(void*)> holder(GNMI_Get_Init(), GNMI_Get_DeInit);
  void* path = GNMI_Update_SetPath(Update(holder.get()));
  GNMI_Path_FromString(path, "/a/b", 4, nullptr);
  FailEachInTurn([&](int64_t k) {
    allocfault::FailAfter(k);
    void* wire = GNMI_WirePath_Make(path);
    allocfault::Disarm();
    EXPECT_EQ(wire == nullptr, allocfault::Fired());
    GNMI_WirePath_Free(wire);
    return allocfault::Fired();
  });
  const std::unique_ptr<void, void (*)(void*)> wire(GNMI_WirePath_Make(path), GNMI_WirePath_Free);
  static const std::string kLongText(1000, 't');     // more than a new buffer holds
  const std::string stamped("\x0a\x02\x08\x02", 4);  // the notification of Begin(ctx, 2, NULL)
  for (const Owner& owner : {kGet, kSubscribe}) {
    // A fresh context, a message written, failing allocation k of `call`:
    // the output of the message written and the message after the call.
    const auto attempt = [&](bool first, int64_t k, int (*call)(void* ctx, void* wire)) {
      const std::unique_ptr<void, void (*)(void*)> ctx(owner.init(), owner.deinit);
      void* out = nullptr;
      int len = 0;
      EXPECT_TRUE(first || (GNMI_Writer_Begin(ctx.get(), 2, nullptr) == 1 &&
                            GNMI_Writer_Finish(ctx.get(), &out, &len) == 1));
      const std::string output = testsupport::Bytes(out, len);
      EXPECT_TRUE(first || GNMI_Writer_Begin(ctx.get(), 2, nullptr) == 1);
      allocfault::FailAfter(k);
      const int result = call(ctx.get(), wire.get());
      allocfault::Disarm();
      const bool fired = allocfault::Fired();
      EXPECT_EQ(result, fired ? 0 : 1);
      EXPECT_EQ(testsupport::Bytes(out, len), output);
      void* again = nullptr;
      int againLen = 0;
      EXPECT_EQ(GNMI_Writer_Finish(ctx.get(), &again, &againLen), 1);
      // After a failure, the message holds what it held before the call.
      EXPECT_EQ(testsupport::Bytes(again, againLen) == (first ? "" : stamped), fired) << k;
      return fired;
    };
    EXPECT_GT(FailEachInTurn([&](int64_t k) {
                return attempt(true, k,
                               [](void* ctx, void*) { return GNMI_Writer_Begin(ctx, 2, nullptr); });
              }),
              1);
    EXPECT_GT(FailEachInTurn([&](int64_t k) {
                return attempt(false, k, [](void* ctx, void* wire) {
                  return GNMI_Writer_AddJson(ctx, wire, kLongText.data(), 1000);
                });
              }),
              0);
    // Finish first on a fresh context makes the writer: failing, 0 with the
    // outputs untouched.
    EXPECT_GT(FailEachInTurn([&](int64_t k) {
                const std::unique_ptr<void, void (*)(void*)> ctx(owner.init(), owner.deinit);
                void* out = ctx.get();
                int len = -1;
                allocfault::FailAfter(k);
                const int result = GNMI_Writer_Finish(ctx.get(), &out, &len);
                allocfault::Disarm();
                EXPECT_EQ(result == 0, allocfault::Fired());
                EXPECT_EQ(out == ctx.get() && len == -1, allocfault::Fired());
                return allocfault::Fired();
              }),
              0);
  }
}

}  // namespace
