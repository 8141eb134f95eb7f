// mgmtmsg_bench: every workload through our C entry points and with the
// generated classes directly, in one binary.
//   mgmtmsg_bench [--benchmark_...]  check the bytes, then time every workload
//   mgmtmsg_bench --check            check the bytes and the allocations of
//                                    repeated serializations, print them as JSON
//   mgmtmsg_bench --once=NAME        one warm-up run of workload NAME, then its
//                                    measured runs inside BenchCollected (for
//                                    callgrind --toggle-collect=BenchCollected)
//   mgmtmsg_bench --stream-memory    1,000,000 W3 messages on one context; the
//                                    memory in use after 1,000 and at the end,
//                                    then 100,000 built on a worker thread, as
//                                    JSON (some seconds: not a CI check)
// Exit status 1 when the two sides of a workload produce different bytes.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "alloc_count.h"
#include "checks.h"
#include "oxa_mem_host.h"
#include "registry.h"
#include "stream_memory.h"
#include "workloads.h"

// The measured runs of --once; its name is what callgrind collects.
extern "C" __attribute__((noinline)) size_t BenchCollected(const bench::Workload& workload) {
  size_t produced = 0;
  for (int run = 0; run < workload.collectedRuns; run++) {
    produced += workload.run();
  }
  return produced;
}

namespace {

// Times `workload`, with its allocations per unit as counters.
void Time(benchmark::State& state, const bench::Workload& workload) {
  const uint64_t heapBefore = bench::HeapAllocations();
  const uint64_t platformBefore = OxaHost_Stats().mallocCalls;
  for (auto _ : state) {
    benchmark::DoNotOptimize(workload.run());
  }
  const double heap = static_cast<double>(bench::HeapAllocations() - heapBefore);
  const double platform = static_cast<double>(OxaHost_Stats().mallocCalls - platformBefore);
  const double units = static_cast<double>(state.iterations()) * workload.unitsPerRun;
  state.counters["heap_allocs_per_unit"] = (heap - platform) / units;
  state.counters["platform_allocs_per_unit"] = platform / units;
  state.SetLabel(std::string("unit: ") + workload.unit);
}

// Prints the byte check; false when a workload's sides differ.
bool ReportIdentity(const std::vector<bench::IdentityResult>& results, FILE* out) {
  bool identical = true;
  for (const auto& result : results) {
    if (!result.identical) {
      std::fprintf(stderr,
                   "BYTE CHECK FAILED: %s: ours %zu bytes, direct %zu bytes, first difference at "
                   "byte %zu\n",
                   result.workload.c_str(), result.oursBytes, result.directBytes,
                   result.firstDifference);
      identical = false;
    } else if (out != nullptr) {
      std::fprintf(out, "byte check %s: identical, %zu bytes\n", result.workload.c_str(),
                   result.oursBytes);
    }
  }
  return identical;
}

int Check() {
  const auto identity = bench::CheckIdentity();
  const bool identical = ReportIdentity(identity, nullptr);
  std::printf("{\n  \"identity\": [\n");
  for (size_t i = 0; i < identity.size(); i++) {
    std::printf("    {\"workload\": \"%s\", \"identical\": %s, \"bytes\": %zu}%s\n",
                identity[i].workload.c_str(), identity[i].identical ? "true" : "false",
                identity[i].oursBytes, i + 1 < identity.size() ? "," : "");
  }
  std::printf("  ],\n  \"serialize_again\": [\n");
  const auto again = bench::SerializeAgainAllocations();
  for (size_t i = 0; i < again.size(); i++) {
    std::printf("    {\"call\": \"%s\", \"heap\": %llu, \"platform\": %llu, \"units\": %d}%s\n",
                again[i].call.c_str(), static_cast<unsigned long long>(again[i].heap),
                static_cast<unsigned long long>(again[i].platform), again[i].units,
                i + 1 < again.size() ? "," : "");
  }
  std::printf("  ]\n}\n");
  return identical ? 0 : 1;
}

int Once(const char* name) {
  for (const auto& workload : bench::Workloads()) {
    if (workload.name == name) {
      benchmark::DoNotOptimize(workload.run());
      benchmark::DoNotOptimize(BenchCollected(workload));
      std::printf("{\"workload\": \"%s\", \"runs\": %d, \"units_per_run\": %d}\n", name,
                  workload.collectedRuns, workload.unitsPerRun);
      return 0;
    }
  }
  std::fprintf(stderr, "mgmtmsg_bench: no workload named %s\n", name);
  return 2;
}

void PrintStreamMemory(const bench::StreamMemoryResult& result) {
  std::printf(
      "{\"early_messages\": %d, \"messages\": %d,\n"
      " \"in_use_bytes_early\": %zu, \"in_use_bytes_late\": %zu,\n"
      " \"resident_kib_early\": %zu, \"resident_kib_late\": %zu",
      result.earlyMessages, result.messages, result.early.inUseBytes, result.late.inUseBytes,
      result.early.residentKiB, result.late.residentKiB);
}

// The stream on one thread, then (as "worker_thread") built on a worker
// thread while the calling thread resets and serializes.
int StreamMemory() {
  PrintStreamMemory(bench::MeasureStreamMemory(1000, 1000000));
  std::printf(",\n \"worker_thread\": ");
  PrintStreamMemory(bench::MeasureStreamMemory(1000, 100000, bench::StreamBuilder::kWorkerThread));
  std::printf("}}\n");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  BenchDataInit();
  if (argc == 2 && std::strcmp(argv[1], "--check") == 0) {
    return Check();
  }
  if (argc == 2 && std::strcmp(argv[1], "--stream-memory") == 0) {
    return StreamMemory();
  }
  if (argc == 2 && std::strncmp(argv[1], "--once=", 7) == 0) {
    return Once(argv[1] + 7);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 2;
  }
  if (!ReportIdentity(bench::CheckIdentity(), stderr)) {
    return 1;
  }
  for (const auto& workload : bench::Workloads()) {
    benchmark::RegisterBenchmark(workload.name.c_str(), Time, workload)
        ->Unit(benchmark::kMicrosecond);
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
