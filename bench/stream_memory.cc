#include "stream_memory.h"

#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <memory>
#include <thread>

#include "gnmi/gnmi_ex.h"
#include "gnmi/gnmi_stream.h"
#include "workloads.h"

namespace bench {
namespace {

MemoryUse MemoryNow() {
  size_t pages = 0;
  size_t residentPages = 0;
  std::ifstream("/proc/self/statm") >> pages >> residentPages;
  const auto pageKiB = static_cast<size_t>(sysconf(_SC_PAGESIZE)) / 1024;
  return {mallinfo2().uordblks, residentPages * pageKiB};
}

}  // namespace

StreamMemoryResult MeasureStreamMemory(int earlyMessages, int messages, StreamBuilder builder) {
  const std::unique_ptr<void, void (*)(void*)> ctx(GNMI_Subscribe_Init(), GNMI_Subscribe_DeInit);
  StreamMemoryResult result{earlyMessages, messages, {}, {}};
  // The worker builds message `next` when it is not negative, then sets it to
  // -1; kDone ends it.
  constexpr int kDone = -2;
  std::atomic<int> next{-1};
  std::thread worker([&] {
    for (int m; builder == StreamBuilder::kWorkerThread && (m = next.load()) != kDone;) {
      if (m >= 0) {
        OursW3Build(ctx.get(), m);
        next = -1;
      }
      std::this_thread::yield();
    }
  });
  for (int m = 0; m < messages; m++) {
    GNMI_SubscribeResponse_Reset(ctx.get());
    if (builder == StreamBuilder::kWorkerThread) {
      for (next = m; next != -1;) std::this_thread::yield();
    } else {
      OursW3Build(ctx.get(), m);
    }
    OursW3Serialize(ctx.get(), nullptr);
    if (m + 1 == earlyMessages) {
      result.early = MemoryNow();
    }
  }
  result.late = MemoryNow();
  next = kDone;
  worker.join();
  return result;
}

}  // namespace bench
