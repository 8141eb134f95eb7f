#!/usr/bin/env bash
# Builds the benchmarks in build-bench, runs them and regenerates
# docs/performance.md: byte checks and allocations of repeated serializations
# (--check), the memory of a long stream (--stream-memory), median times over
# repeated runs (Google Benchmark), instruction counts of each side run alone
# under callgrind, and the machine it ran on.
#   bench/run.sh                 everything (a few minutes)
# Environment: JOBS (build jobs, default 2), REPETITIONS (default 40),
# MIN_TIME (seconds per repetition, default 0.1), OUT (results directory,
# default build-bench/bench-results).
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=${JOBS:-2}
repetitions=${REPETITIONS:-40}
min_time=${MIN_TIME:-0.1}
out=${OUT:-build-bench/bench-results}
bin=build-bench/bench/mgmtmsg_bench
for tool in valgrind callgrind_annotate python3 pkg-config; do
  command -v "$tool" >/dev/null || { echo "bench/run.sh needs $tool (Debian: valgrind, python3, pkg-config)" >&2; exit 2; }
done

cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMGMTMSG_BENCH=ON \
  -DMGMTMSG_TESTS=OFF -DMGMTMSG_EXAMPLES=OFF >/dev/null
cmake --build build-bench -j"$jobs" --target mgmtmsg_bench
rm -rf "$out"
mkdir -p "$out/callgrind"

echo "== byte checks and allocations"
"$bin" --check >"$out/check.json"

echo "== memory of a stream of 1,000,000 W3 messages, then 100,000 built on a worker thread"
"$bin" --stream-memory >"$out/memory.json"

echo "== timing: $repetitions repetitions of ${min_time}s, interleaved"
uptime >"$out/load-before"
"$bin" --benchmark_repetitions="$repetitions" --benchmark_min_time="$min_time" \
  --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
  --benchmark_out="$out/timing.json" --benchmark_out_format=json
uptime >"$out/load-after"

echo "== instructions under callgrind, one side at a time"
"$bin" --benchmark_list_tests=true 2>/dev/null | while read -r workload; do
  file=$out/callgrind/${workload//\//.}
  valgrind --tool=callgrind --collect-atstart=no --toggle-collect=BenchCollected \
    --callgrind-out-file="$file.out" "$bin" --once="$workload" </dev/null >"$file.json" 2>"$file.log"
  echo "$workload: $(grep '^totals:' "$file.out")"
done

{
  echo "cpu=$(lscpu | sed -n 's/^Model name: *//p' | head -1)"
  echo "cores=$(nproc)"
  echo "compiler=$("$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build-bench/CMakeCache.txt)" \
    --version | head -1)"
  echo "protobuf=$(pkg-config --modversion protobuf)"
  echo "benchmark=$(dpkg-query -W -f='${Version}' libbenchmark-dev 2>/dev/null || echo unknown)"
  echo "kernel=$(uname -sr)"
  echo "date=$(date -u '+%Y-%m-%d %H:%M UTC')"
} >"$out/machine.txt"

python3 bench/report.py "$out" >"$out/performance.md"
mv "$out/performance.md" docs/performance.md
echo "== docs/performance.md regenerated"
