// The memory a long W3 stream holds: what the program's allocator has in use
// and its resident set, after the first messages and at the stream's end.
#ifndef MGMTMSG_BENCH_STREAM_MEMORY_H
#define MGMTMSG_BENCH_STREAM_MEMORY_H

#include <cstddef>

namespace bench {

struct MemoryUse {
  size_t inUseBytes;  // bytes the C allocator has handed out and not had back
  size_t residentKiB;
};

struct StreamMemoryResult {
  int earlyMessages;
  int messages;
  MemoryUse early;  // after earlyMessages
  MemoryUse late;   // after messages
};

// Which thread builds each message of a stream whose resets and serializes
// are on the calling thread.
enum class StreamBuilder { kCaller, kWorkerThread };

// Runs `messages` W3 messages (GNMI_SubscribeResponse_Reset, build,
// serialize) on one Subscribe context, measuring after `earlyMessages` and
// at the end.
StreamMemoryResult MeasureStreamMemory(int earlyMessages, int messages,
                                       StreamBuilder builder = StreamBuilder::kCaller);

}  // namespace bench

#endif
