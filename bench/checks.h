// What the harness checks before timing: that both sides of every workload
// produce the same bytes, and what a repeated serialization allocates.
#ifndef MGMTMSG_BENCH_CHECKS_H
#define MGMTMSG_BENCH_CHECKS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct BenchSink;

namespace bench {

// The bytes that `side` hands to its sink.
std::string Record(const std::function<void(BenchSink*)>& side);

struct IdentityResult {
  std::string workload;
  size_t oursBytes;
  size_t directBytes;
  size_t firstDifference;  // == the shorter size when one is a prefix of the other
  bool identical;
};

// Runs both sides of every workload once into recorders and compares the
// bytes (for W2, the strings read, in reading order).
std::vector<IdentityResult> CheckIdentity();

struct AllocationResult {
  std::string call;   // what was measured
  uint64_t heap;      // heap allocations, platform blocks not included
  uint64_t platform;  // OXA_Malloc_F calls
  int units = 1;      // calls or replies measured
};

// Allocations of our serializers when they run again on a context or message
// that has been serialized before, of the Subscribe serializer over a whole
// W3 stream, and of whole W3 messages and W1 responses at steady state on a
// context reset before each.
std::vector<AllocationResult> SerializeAgainAllocations();

}  // namespace bench

#endif
