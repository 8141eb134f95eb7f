#include "stream_memory.h"

#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <memory>

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

StreamMemoryResult MeasureStreamMemory(int earlyMessages, int messages) {
  const std::unique_ptr<void, void (*)(void*)> ctx(GNMI_Subscribe_Init(), GNMI_Subscribe_DeInit);
  StreamMemoryResult result{earlyMessages, messages, {}, {}};
  for (int m = 0; m < messages; m++) {
    OursW3Message(GNMI_SubscribeResponse_Reset, ctx.get(), m, nullptr);
    if (m + 1 == earlyMessages) {
      result.early = MemoryNow();
    }
  }
  result.late = MemoryNow();
  return result;
}

}  // namespace bench
