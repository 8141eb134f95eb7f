#include "checks.h"

#include <algorithm>
#include <functional>
#include <memory>

#include "alloc_count.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_stream.h"
#include "gnmi/gnmi_wire.h"
#include "grpci/grpci_ex.h"
#include "oxa_mem_host.h"
#include "registry.h"
#include "workloads.h"

// A recorder: every byte handed to it, in order.
struct BenchSink {
  std::string bytes;
};

extern "C" void BenchSinkPut(BenchSink* sink, const void* bytes, size_t len) {
  sink->bytes.append(static_cast<const char*>(bytes), len);
}

namespace bench {
namespace {

using Side = std::function<void(BenchSink*)>;

IdentityResult Compare(const std::string& workload, const Side& ours, const Side& direct) {
  const std::string oursBytes = Record(ours);
  const std::string directBytes = Record(direct);
  const auto difference =
      std::mismatch(oursBytes.begin(), oursBytes.end(), directBytes.begin(), directBytes.end());
  return {workload, oursBytes.size(), directBytes.size(),
          static_cast<size_t>(difference.first - oursBytes.begin()), oursBytes == directBytes};
}

// A message made by an Init entry point, freed at the end of the scope.
using Owned = std::unique_ptr<void, void (*)(void*)>;

IdentityResult CompareFrames(const std::string& workload, uint32_t payloadBytes) {
  Owned msg(OursW4Build(payloadBytes), GRPCI_SouthMsgDeInit);
  return Compare(
      workload, [&](BenchSink* sink) { OursW4(msg.get(), sink); },
      [&](BenchSink* sink) { DirectW4Frame(payloadBytes, sink); });
}

AllocationResult Measure(const std::string& call, const std::function<void()>& action) {
  const uint64_t heapBefore = HeapAllocations();
  const uint64_t platformBefore = OxaHost_Stats().mallocCalls;
  action();
  const uint64_t heap = HeapAllocations() - heapBefore;
  const uint64_t platform = OxaHost_Stats().mallocCalls - platformBefore;
  // The host memory manager takes its blocks from malloc: not heap use of ours.
  return {call, heap - platform, platform};
}

// The Subscribe serializer alone, over a W3 stream: its buffer grows when a
// message is longer than every one before.
AllocationResult StreamSerializations() {
  Owned ctx(GNMI_Subscribe_Init(), GNMI_Subscribe_DeInit);
  AllocationResult total{"GNMI_SubscribeResponse_Serialize over a W3 stream (all 10000 calls)", 0,
                         0, kStreamMessages};
  for (int m = 0; m < kStreamMessages; m++) {
    GNMI_SubscribeResponse_Reset(ctx.get());
    OursW3Build(ctx.get(), m);
    const AllocationResult one = Measure("", [&] { OursW3Serialize(ctx.get(), nullptr); });
    total.heap += one.heap;
    total.platform += one.platform;
  }
  return total;
}

// Whole replies on a context kept from reply to reply, after as many
// replies before them: `reply` resets the context, builds and serializes.
AllocationResult SteadyReplies(const std::string& call, Owned ctx, int before, int measured,
                               const std::function<void(void*, int)>& reply) {
  for (int m = 0; m < before; m++) reply(ctx.get(), m);
  AllocationResult result = Measure(call, [&] {
    for (int m = before; m < before + measured; m++) reply(ctx.get(), m);
  });
  result.units = measured;
  return result;
}

// A side run twice, as on an object kept from the first run to the second.
Side Twice(const Side& side) {
  return [side](BenchSink* sink) {
    side(sink);
    side(sink);
  };
}

// A whole reply through the writer, repeated on the same context.
AllocationResult SteadyWriter(const std::string& call, Owned ctx, int before, int measured,
                              size_t (*write)(void* ctx, const void* paths, int m)) {
  Owned paths(WriterPathsNew(), WriterPathsFree);
  return SteadyReplies(call, std::move(ctx), before, measured,
                       [&](void* c, int m) { write(c, paths.get(), m); });
}

}  // namespace

std::string Record(const Side& side) {
  BenchSink sink;
  side(&sink);
  return std::move(sink.bytes);
}

std::vector<IdentityResult> CheckIdentity() {
  const BenchText request = DirectW2Request();
  Owned reply(OursW5Build(), GRPCI_SubsReplyDeInit);
  Owned directReply(DirectW5Build(), DirectW5Free);
  Owned getCtx(GNMI_Get_Init(), GNMI_Get_DeInit);
  Owned replies(DirectRepliesNew(), DirectRepliesFree);
  void* paths[kGetUpdates];
  Owned pathsCtx(OursPathsBuild(paths), GNMI_Get_DeInit);
  Owned wirePaths(WriterPathsNew(), WriterPathsFree);
  Owned writerGet(GNMI_Get_Init(), GNMI_Get_DeInit);
  return {
      Compare("W1 writer",
              Twice([&](BenchSink* sink) { WriterW1(writerGet.get(), wirePaths.get(), sink); }),
              Twice(DirectW1)),
      Compare("W1 protobuf-c", Twice(PbcW1), Twice(DirectW1)),
      Compare(
          "W3 writer", [&](BenchSink* sink) { WriterW3(wirePaths.get(), sink); }, DirectW3Arena),
      Compare("W3 protobuf-c", PbcW3, DirectW3Arena),
      Compare("W1", OursW1, DirectW1),
      Compare("W1 reset, arena", Twice([&](BenchSink* sink) { OursW1Reset(getCtx.get(), sink); }),
              Twice([&](BenchSink* sink) { DirectW1Arena(replies.get(), sink); })),
      Compare(
          "W2", [&](BenchSink* sink) { OursW2(request, sink); },
          [&](BenchSink* sink) { DirectW2(request, sink); }),
      Compare(
          "W3", [](BenchSink* sink) { OursW3(GNMI_SubscribeResponse_Reset, sink); }, DirectW3Arena),
      Compare(
          "W3 cleared", [](BenchSink* sink) { OursW3(ClearUpdateNotification, sink); }, DirectW3),
      CompareFrames("W4_64KiB", 64 * 1024),
      CompareFrames("W4_1MiB", 1024 * 1024),
      Compare(
          "W5", [&](BenchSink* sink) { OursW5(reply.get(), 10, sink); },
          [&](BenchSink* sink) { DirectW5(directReply.get(), 10, sink); }),
      Compare("Paths_FromText", OursPathsFromText, OursPathsByElement),
      Compare(
          "Paths_ToText", [&](BenchSink* sink) { OursPathsToText(paths, sink); },
          [&](BenchSink* sink) { PrinterPathsToText(paths, sink); }),
  };
}

std::vector<AllocationResult> SerializeAgainAllocations() {
  Owned get(OursW1Build(), GNMI_Get_DeInit);
  Owned subscribe(GNMI_Subscribe_Init(), GNMI_Subscribe_DeInit);
  Owned south(OursW4Build(1024 * 1024), GRPCI_SouthMsgDeInit);
  Owned reply(OursW5Build(), GRPCI_SubsReplyDeInit);
  OursW3Build(subscribe.get(), 0);
  OursW1Serialize(get.get(), nullptr);
  OursW3Serialize(subscribe.get(), nullptr);
  OursW4(south.get(), nullptr);
  OursW5(reply.get(), 1, nullptr);
  return {
      Measure("GNMI_GetResponse_Serialize again (W1 context)",
              [&] { OursW1Serialize(get.get(), nullptr); }),
      Measure("GNMI_SubscribeResponse_Serialize again (W3 context)",
              [&] { OursW3Serialize(subscribe.get(), nullptr); }),
      StreamSerializations(),
      SteadyReplies(
          "W3 messages at steady state, 1000 after 1000: reset, build, serialize",
          Owned(GNMI_Subscribe_Init(), GNMI_Subscribe_DeInit), 1000, 1000,
          [](void* ctx, int m) { OursW3Message(GNMI_SubscribeResponse_Reset, ctx, m, nullptr); }),
      SteadyReplies("W3 messages with paths from text at steady state, 1000 after 1000: reset, "
                    "build, serialize",
                    Owned(GNMI_Subscribe_Init(), GNMI_Subscribe_DeInit), 1000, 1000,
                    OursW3MessageFromText),
      SteadyReplies("W1 responses on one Get context, 10 after 10: reset, build, serialize",
                    Owned(GNMI_Get_Init(), GNMI_Get_DeInit), 10, 10,
                    [](void* ctx, int) { OursW1Reset(ctx, nullptr); }),
      SteadyWriter("W3 messages through the writer at steady state, 1000 after 1000",
                   Owned(GNMI_Subscribe_Init(), GNMI_Subscribe_DeInit), 1000, 1000,
                   [](void* ctx, const void* paths, int m) {
                     return WriterW3Message(ctx, paths, m, nullptr);
                   }),
      SteadyWriter("W1 responses through the writer at steady state, 10 after 10",
                   Owned(GNMI_Get_Init(), GNMI_Get_DeInit), 10, 10,
                   [](void* ctx, const void* paths, int) { return WriterW1(ctx, paths, nullptr); }),
      Measure("GRPCI_SouthMsgSerialize again (1 MiB rpc_data) + OXA_Free_F",
              [&] { OursW4(south.get(), nullptr); }),
      Measure("GRPCI_SubsReplySerialize again (4 KiB message) + OXA_Free_F",
              [&] { OursW5(reply.get(), 1, nullptr); }),
  };
}

}  // namespace bench
