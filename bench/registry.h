// The workloads as the harness runs them: each side of each workload, ready
// to run, with what one run stands for.
#ifndef MGMTMSG_BENCH_REGISTRY_H
#define MGMTMSG_BENCH_REGISTRY_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "workloads.h"

namespace bench {

struct Workload {
  std::string name;  // "<workload>/<side>", e.g. "W1/ours"
  const char* unit;  // what the allocation counts are given per
  int unitsPerRun;
  int collectedRuns;  // runs measured under callgrind (after one warm-up run)
  std::function<size_t()> run;
};

// Every workload, both sides; the messages they reuse are built on first use
// and kept until the program ends.
const std::vector<Workload>& Workloads();

// Empties the update notification of a Subscribe context on the heap,
// through the library's exported context class: the W3 of before the reset
// entry points, kept as the reference of W3/ours. Returns 1.
int ClearUpdateNotification(void* subscribeCtx);

// The size of W4's frame for a payload of `payloadBytes`.
size_t SouthFrameBytes(uint32_t payloadBytes);

}  // namespace bench

#endif
