#include "registry.h"

#include <array>
#include <memory>

#include "checks.h"
#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_rpc.h"
#include "gnmi/gnmi_stream.h"
#include "grpci/grpci_ex.h"

namespace bench {
namespace {

constexpr uint32_t kSmallFrame = 64 * 1024;
constexpr uint32_t kLargeFrame = 1024 * 1024;

// A message built by `build`, freed by `free` when the program ends.
using Owned = std::unique_ptr<void, void (*)(void*)>;

// W4's two sides for one payload size: our frame of a message kept for the
// program's lifetime, and the copy of as many bytes between two buffers.
void AddFrame(std::vector<Workload>& workloads, const std::string& label, uint32_t payloadBytes) {
  auto msg = std::make_shared<Owned>(OursW4Build(payloadBytes), GRPCI_SouthMsgDeInit);
  const size_t frameBytes = SouthFrameBytes(payloadBytes);
  auto from = std::make_shared<std::vector<char>>(frameBytes, 'x');
  auto to = std::make_shared<std::vector<char>>(frameBytes);
  workloads.push_back(
      {label + "/ours", "frame", 1, 10, [msg] { return OursW4(msg->get(), nullptr); }});
  workloads.push_back({label + "/memcpy", "frame", 1, 10, [from, to, frameBytes] {
                         return DirectW4Copy(to->data(), from->data(), frameBytes);
                       }});
}

// Paths as text: read against built element by element, and written against
// the example's former printer from paths kept for the program's lifetime.
void AddPaths(std::vector<Workload>& workloads) {
  struct Kept {
    Owned ctx{nullptr, GNMI_Get_DeInit};
    std::array<void*, kGetUpdates> paths{};
  };
  auto kept = std::make_shared<Kept>();
  kept->ctx.reset(OursPathsBuild(kept->paths.data()));
  workloads.push_back(
      {"Paths_FromText/ours", "path", kGetUpdates, 10, [] { return OursPathsFromText(nullptr); }});
  workloads.push_back({"Paths_FromText/elements", "path", kGetUpdates, 10,
                       [] { return OursPathsByElement(nullptr); }});
  workloads.push_back({"Paths_ToText/ours", "path", kGetUpdates, 10,
                       [kept] { return OursPathsToText(kept->paths.data(), nullptr); }});
  workloads.push_back({"Paths_ToText/printer", "path", kGetUpdates, 10,
                       [kept] { return PrinterPathsToText(kept->paths.data(), nullptr); }});
}

// The notification writer's sides of W1 and W3, protobuf-c's, and a memcpy
// of the bytes they produce (W1's response; W3's first message, once per
// message of the stream).
void AddWriter(std::vector<Workload>& workloads) {
  auto paths = std::make_shared<Owned>(WriterPathsNew(), WriterPathsFree);
  auto getCtx = std::make_shared<Owned>(GNMI_Get_Init(), GNMI_Get_DeInit);
  const auto w1 = std::make_shared<std::string>(
      Record([&](BenchSink* sink) { WriterW1(getCtx->get(), paths->get(), sink); }));
  const auto w3 = std::make_shared<std::string>(Record([&](BenchSink* sink) {
    Owned ctx(GNMI_Subscribe_Init(), GNMI_Subscribe_DeInit);
    WriterW3Message(ctx.get(), paths->get(), 0, sink);
  }));
  auto to = std::make_shared<std::vector<char>>(w1->size());
  workloads.push_back({"W1/writer", "response", 1, 10,
                       [paths, getCtx] { return WriterW1(getCtx->get(), paths->get(), nullptr); }});
  workloads.push_back({"W1/protobuf_c", "response", 1, 10, [] { return PbcW1(nullptr); }});
  workloads.push_back({"W1/memcpy", "response", 1, 10,
                       [w1, to] { return DirectW4Copy(to->data(), w1->data(), w1->size()); }});
  workloads.push_back({"W3/writer", "message", kStreamMessages, 1,
                       [paths] { return WriterW3(paths->get(), nullptr); }});
  workloads.push_back(
      {"W3/protobuf_c", "message", kStreamMessages, 1, [] { return PbcW3(nullptr); }});
  workloads.push_back({"W3/memcpy", "message", kStreamMessages, 1, [w3, to] {
                         size_t copied = 0;
                         for (int m = 0; m < kStreamMessages; m++) {
                           copied += DirectW4Copy(to->data(), w3->data(), w3->size());
                         }
                         return copied;
                       }});
}

std::vector<Workload> MakeWorkloads() {
  const BenchText setRequest = DirectW2Request();
  auto oursReply = std::make_shared<Owned>(OursW5Build(), GRPCI_SubsReplyDeInit);
  auto directReply = std::make_shared<Owned>(DirectW5Build(), DirectW5Free);
  auto getCtx = std::make_shared<Owned>(GNMI_Get_Init(), GNMI_Get_DeInit);
  auto directReplies = std::make_shared<Owned>(DirectRepliesNew(), DirectRepliesFree);
  std::vector<Workload> workloads = {
      {"W1/ours", "response", 1, 10, [] { return OursW1(nullptr); }},
      {"W1/ours_reset", "response", 1, 10,
       [getCtx] { return OursW1Reset(getCtx->get(), nullptr); }},
      {"W1/direct", "response", 1, 10, [] { return DirectW1(nullptr); }},
      {"W1/direct_arena", "response", 1, 10,
       [directReplies] { return DirectW1Arena(directReplies->get(), nullptr); }},
      {"W2/ours", "request", 1, 50, [setRequest] { return OursW2(setRequest, nullptr); }},
      {"W2/direct", "request", 1, 50, [setRequest] { return DirectW2(setRequest, nullptr); }},
      {"W3/ours", "message", kStreamMessages, 1,
       [] { return OursW3(GNMI_SubscribeResponse_Reset, nullptr); }},
      {"W3/ours_cleared", "message", kStreamMessages, 1,
       [] { return OursW3(ClearUpdateNotification, nullptr); }},
      {"W3/direct", "message", kStreamMessages, 1, [] { return DirectW3(nullptr); }},
      {"W3/direct_arena", "message", kStreamMessages, 1, [] { return DirectW3Arena(nullptr); }},
  };
  AddFrame(workloads, "W4_64KiB", kSmallFrame);
  AddFrame(workloads, "W4_1MiB", kLargeFrame);
  workloads.push_back({"W5/ours", "serialization", kReplyRuns, 1,
                       [oursReply] { return OursW5(oursReply->get(), kReplyRuns, nullptr); }});
  workloads.push_back({"W5/direct", "serialization", kReplyRuns, 1, [directReply] {
                         return DirectW5(directReply->get(), kReplyRuns, nullptr);
                       }});
  AddPaths(workloads);
  AddWriter(workloads);
  return workloads;
}

}  // namespace

const std::vector<Workload>& Workloads() {
  static const std::vector<Workload> workloads = MakeWorkloads();
  return workloads;
}

int ClearUpdateNotification(void* subscribeCtx) {
  static_cast<GnmiRpcSubscribe*>(subscribeCtx)->GetResponse_()->mutable_update()->Clear();
  return 1;
}

size_t SouthFrameBytes(uint32_t payloadBytes) { return DirectW4Frame(payloadBytes, nullptr); }

}  // namespace bench
