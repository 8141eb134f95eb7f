#!/usr/bin/env bash
# Builds and runs mgmtmsg on a Debian bookworm machine, installing any missing
# Debian package first.
#   ./run.sh example          start the reference device and run a gNMI session
#   ./run.sh device           run the reference device in the foreground
#   ./run.sh test [STAGE...]  build and run every test stage (or the ones named)
set -euo pipefail
cd "$(dirname "$0")"
self=$PWD/$(basename "$0")
jobs=${JOBS:-$(nproc)}

# Installs the Debian packages named that are not installed yet.
need_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
      missing+=("$package")
  done
  if ((${#missing[@]})); then
    echo "== installing ${missing[*]}"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null
  fi
}

base_packages=(cmake make g++ pkg-config libprotobuf-dev protobuf-compiler libgtest-dev
  libbenchmark-dev python3-protobuf python3-grpc-tools libgrpc++-dev protobuf-compiler-grpc)
# The benchmarks' protobuf-c side; the benchmarks are built wherever Google
# Benchmark is found.
base_packages+=(libprotobuf-c-dev protobuf-c-compiler)

# configure DIR [CMAKE OPTION...]: configures DIR with the tests on, whatever
# an earlier configuration of it said.
configure() {
  local dir=$1
  shift
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
    -DMGMTMSG_TESTS=ON "$@" >/dev/null
}

# build DIR [CMAKE OPTION...]: configures and builds everything in DIR.
build() {
  configure "$@"
  cmake --build "$1" -j"$jobs"
}

# ctest over DIR; finding no test is a failure.
run_ctest() {
  local dir=$1
  shift
  ctest --test-dir "$dir" --no-tests=error --output-on-failure -j"$jobs" "$@"
}

stage_native() {
  need_packages "${base_packages[@]}"
  build build
  run_ctest build
}

# ASan and UBSan over the whole suite, built with clang. The same build holds
# the fuzz harnesses (stage fuzz), whose seeds and regressions run here.
stage_sanitize() {
  need_packages "${base_packages[@]}" clang libclang-rt-14-dev
  build build-asan -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DMGMTMSG_SANITIZE=address,undefined -DMGMTMSG_FUZZ=ON
  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
    run_ctest build-asan
}

# The 32-bit big-endian PowerPC target, tests under qemu.
stage_target() {
  need_packages python3-protobuf # the SetRequest of the value tests is made on the build host
  bash cmake/target-test.sh
}

# The project's own C and C++ sources, tracked or new (build trees and
# generated code are ignored by git).
own_sources() {
  git ls-files --cached --others --exclude-standard -- "$@" | sort -u
}

# Checks that the sources follow .clang-format; changes nothing.
stage_format() {
  need_packages clang-format
  local files
  mapfile -t files < <(own_sources '*.c' '*.cc' '*.h')
  ((${#files[@]})) || { echo "no source found"; return 1; }
  clang-format --dry-run --Werror "${files[@]}"
  echo "format: ${#files[@]} files checked"
}

# clang-tidy (.clang-tidy) over the sources of the native build and of the
# reference device (build/device), each through its compile database.
stage_tidy() {
  need_packages "${base_packages[@]}" clang-tidy
  build build
  build_device
  local files=() file db
  while read -r file; do
    for db in build build/device; do
      if grep -qF "\"file\": \"$PWD/$file\"" "$db/compile_commands.json"; then
        files+=("$db" "$file")
        break
      fi
    done
  done < <(own_sources '*.c' '*.cc')
  ((${#files[@]})) || { echo "no source in the compile databases"; return 1; }
  printf '%s\n' "${files[@]}" | xargs -P"$jobs" -n2 sh -c 'clang-tidy -p "$0" --quiet "$1"' 2>&1 |
    { grep -v 'warnings\? generated\.$' || true; }
  echo "tidy: $((${#files[@]} / 2)) files checked"
}

# The HTML reference of the public headers and the guides (build/docs/html);
# any Doxygen warning, an undocumented entry point among them, fails it.
stage_docs() {
  need_packages "${base_packages[@]}" doxygen
  configure build
  cmake --build build --target docs
  test -s build/docs/html/index.html
}

# Every fuzz harness of the sanitize stage's build (build-asan/fuzz/fuzz_*) and
# the service module's (build-asan/device/fuzz)
# for FUZZ_SECONDS (60) under ASan and UBSan, two at a time, from the committed
# seeds; a crash, leak, timeout or out-of-memory report fails it, and so does a
# harness that ran no input. Corpora, logs and crash inputs stay in
# build-asan/fuzz-run.
fuzz_one() {
  local harness=$1 name=${1##*/} dir=build-asan/fuzz-run/${1##*/}
  mkdir -p "$dir/corpus" "$dir/artifacts"
  if ! "$harness" -max_total_time="${FUZZ_SECONDS:-60}" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$dir/artifacts/" "$dir/corpus" "fuzz/corpus/$name" \
    >"$dir/log" 2>&1; then
    echo "$name FAILED (inputs in $dir/artifacts):"
    tail -n 40 "$dir/log"
    return 1
  fi
  local units
  units=$(sed -n 's/^stat::number_of_executed_units: *//p' "$dir/log")
  if ((${units:-0} == 0)); then
    echo "$name FAILED: it ran no input"
    return 1
  fi
  echo "$name: $(grep -o 'DONE .*cov: [0-9]* ft: [0-9]* corp: [^ ]*' "$dir/log"), $units inputs"
}
stage_fuzz() {
  need_packages "${base_packages[@]}" clang libclang-rt-14-dev
  build build-asan -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DMGMTMSG_SANITIZE=address,undefined -DMGMTMSG_FUZZ=ON
  # The service module's frame dispatch, against the sanitized library.
  need_packages "${device_packages[@]}"
  cmake --install build-asan --prefix "$PWD/build-asan/stage" >/dev/null
  cmake -S device -B build-asan/device -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_C_FLAGS="-fsanitize=address,undefined" -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DMGMTMSG_DEVICE_FUZZ=ON -DCMAKE_PREFIX_PATH="$PWD/build-asan/stage" >/dev/null
  cmake --build build-asan/device -j"$jobs" --target fuzz_service_frames >/dev/null
  rm -rf build-asan/fuzz-run
  local harnesses
  mapfile -t harnesses < <(find build-asan/fuzz build-asan/device/fuzz -maxdepth 1 -name 'fuzz_*' \
    -type f -perm -u+x | sort)
  ((${#harnesses[@]})) || { echo "no fuzz harness built"; return 1; }
  export -f fuzz_one
  printf '%s\n' "${harnesses[@]}" | xargs -P2 -I{} bash -c 'fuzz_one {}'
  echo "fuzz: ${#harnesses[@]} harnesses"
}

# The native suite's programs under valgrind's memcheck (children too): any
# error, or any block definitely or indirectly lost, fails it. The tests that
# are CMake scripts (symbol list, install, example files) are left out.
# memcheck keeps its own allocator out of the programs' code (somalloc), so
# that the fault-injection test's operator new stays in place, over memcheck's
# malloc and free.
stage_valgrind() {
  need_packages "${base_packages[@]}" valgrind jq
  build build
  local programs ran=0 name dir command
  programs=$(ctest --test-dir build --show-only=json-v1 |
    jq -r '.tests[] | select(.command[0] | test("/cmake$") | not) |
      [.name, (.properties[] | select(.name == "WORKING_DIRECTORY") | .value),
       (.command | @sh)] | @tsv')
  while IFS=$'\t' read -r name dir command; do
    [ -n "$name" ] || continue
    echo "$name"
    if ! (cd "$dir" && eval valgrind --tool=memcheck --quiet --trace-children=yes \
      --soname-synonyms=somalloc=nouserintercepts --error-exitcode=99 --leak-check=full \
      --errors-for-leak-kinds=definite,indirect --show-leak-kinds=definite,indirect \
      "$command") >"build/$name.memcheck" 2>&1; then
      tail -n 60 "build/$name.memcheck"
      return 1
    fi
    ran=$((ran + 1))
  done <<<"$programs"
  # Every test program of the native build, and at least one of them.
  local built
  built=$(find build/tests -maxdepth 1 -name '*_test' -type f -perm -u+x | wc -l)
  echo "valgrind: $ran programs clean, $built test programs built"
  ((ran > 0 && ran >= built))
}

# The concurrency test, built alone with clang's ThreadSanitizer; any report
# fails it.
stage_tsan() {
  need_packages "${base_packages[@]}" clang libclang-rt-14-dev
  configure build-tsan -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DMGMTMSG_SANITIZE=thread -DMGMTMSG_EXAMPLES=OFF
  cmake --build build-tsan -j"$jobs" --target concurrency_test
  TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/concurrency_test | tee build-tsan/concurrency.log
  grep -Eq '^\[  PASSED  \] [1-9][0-9]* tests?' build-tsan/concurrency.log
}

# The benchmarks, built and each run once as a smoke test: the binary first
# compares the bytes of both sides of every workload and fails when they
# differ; a workload that did not run fails it too. Timings and instruction
# counts are bench/run.sh's (not part of CI).
stage_bench() {
  need_packages "${base_packages[@]}" jq
  build build -DMGMTMSG_BENCH=ON
  local listed ran
  listed=$(build/bench/mgmtmsg_bench --benchmark_list_tests=true | wc -l)
  build/bench/mgmtmsg_bench --benchmark_min_time=0 --benchmark_out=build/bench/smoke.json \
    --benchmark_out_format=json
  ran=$(jq '[.benchmarks[] | select(.iterations > 0 and (.error_occurred | not))] | length' \
    build/bench/smoke.json)
  echo "bench: $ran of $listed workloads ran"
  ((listed > 0 && ran == listed))
}

# ---- Reference device (device/): a consumer of the installed library ----
device_packages=(libgrpc++-dev protobuf-compiler-grpc python3-grpcio python3-grpc-tools
  python3-protobuf openssl)

# Builds the library, installs it to build/stage and builds device/ against
# that install in build/device.
build_device() {
  need_packages "${base_packages[@]}" "${device_packages[@]}"
  configure build
  cmake --build build -j"$jobs" --target mgmtmsg oxa_mem_host mgmtmsg-dump >/dev/null
  cmake --install build --prefix "$PWD/build/stage" >/dev/null
  cmake -S device -B build/device -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
    -DCMAKE_PREFIX_PATH="$PWD/build/stage" >/dev/null
  cmake --build build/device -j"$jobs" >/dev/null
}

# Python stubs of the schemas, generated into build/device/py for the clients.
# gnmi.proto imports gnmi_ext.proto by its published path, which is no Python
# package name: the copy imports it by file name.
device_stubs() {
  local out=build/device/py
  mkdir -p "$out/proto"
  cp proto/gnmi_ext.proto proto/quorix-grpc-dialin.proto proto/quorix-grpc-ipc.proto \
    proto/quorix-grpc-dialout.proto proto/dialout.proto "$out/proto/"
  sed 's|^import "github.com/.*/gnmi_ext.proto";|import "gnmi_ext.proto";|' proto/gnmi.proto \
    >"$out/proto/gnmi.proto"
  (cd "$out/proto" && /usr/bin/python3 -m grpc_tools.protoc -I. --python_out=.. \
    --grpc_python_out=.. gnmi.proto gnmi_ext.proto quorix-grpc-dialin.proto quorix-grpc-ipc.proto \
    quorix-grpc-dialout.proto dialout.proto)
}

# Debian's python3 with the stubs of build/device/py on the pure-Python
# protobuf, as the device's clients and collector run (a command, so that $!
# of one started in the background is the program itself).
device_python=(env PYTHONPATH=build/device/py PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION=python
  PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3)

# Starts both programs in the background (GNMI_PORT, DEVICE_SOUTH, and the
# dial-out settings GNMI_DIAL_OUT, GNMI_DIAL_OUT_SERVICE,
# GNMI_DIAL_OUT_INTERVAL_MS, GNMI_DIAL_OUT_PATHS, GNMI_DIAL_OUT_CA: collectors
# over TLS checked against this CA file); their pids in device_pids.
device_pids=()
start_device() {
  local south=${DEVICE_SOUTH:-$PWD/build/device/south.sock} frontend=() service=()
  if [[ -n ${GNMI_DIAL_OUT:-} ]]; then
    service=(--dial-out "$GNMI_DIAL_OUT" --dial-out-service "${GNMI_DIAL_OUT_SERVICE:-dataPublish}"
      --dial-out-interval-ms "${GNMI_DIAL_OUT_INTERVAL_MS:-1000}")
    if [[ -n ${GNMI_DIAL_OUT_PATHS:-} ]]; then service+=(--dial-out-paths "$GNMI_DIAL_OUT_PATHS"); fi
    if [[ -n ${GNMI_DIAL_OUT_CA:-} ]]; then
      frontend=(--dial-out-ca "$GNMI_DIAL_OUT_CA")
      service+=(--dial-out-tls 1)
    fi
  fi
  build/device/frontend/mgmtmsg-frontend --south "$south" "${frontend[@]}" &
  device_pids+=($!)
  build/device/service/mgmtmsg-service --south "$south" "${service[@]}" &
  device_pids+=($!)
}
stop_device() {
  local pid status=0
  for pid in "${device_pids[@]}"; do kill -TERM "$pid" 2>/dev/null || true; done
  for pid in "${device_pids[@]}"; do wait "$pid" || status=$?; done
  device_pids=()
  return $status
}

# The reference device's tests (device/tests): the front end against a Python
# stand-in service module, then both programs through a real gNMI client, the
# service module under memcheck (DEVICE_VALGRIND: an error or a leak makes its
# exit status, checked at each test's end, 99).
stage_device() {
  need_packages valgrind
  build_device
  device_stubs
  DEVICE_BUILD=build/device DEVICE_VALGRIND=1 "${device_python[@]}" device/tests/run_tests.py
}

all_stages=(native device format tidy docs sanitize fuzz tsan valgrind target bench)

run_tests() {
  local stages=("$@") passed=0 failed=0 stage
  ((${#stages[@]})) || stages=("${all_stages[@]}")
  for stage in "${stages[@]}"; do
    echo "== stage $stage"
    local started=$SECONDS
    # Each stage is a process of its own, so that any command failing inside
    # it fails the stage (errexit does not apply inside an if condition).
    if bash "$self" stage "$stage"; then
      echo "== stage $stage passed in $((SECONDS - started)) s"
      passed=$((passed + 1))
    else
      echo "== stage $stage FAILED after $((SECONDS - started)) s"
      failed=$((failed + 1))
    fi
  done
  echo "stages: $passed passed, $failed failed"
  ((failed == 0))
}

case "${1:-}" in
  example)
    build_device
    device_stubs
    trap stop_device EXIT
    trap 'exit 130' INT TERM
    # A collector for the device's dial-out: what it received is shown last.
    collected=build/device/collector.log
    "${device_python[@]}" device/collector/collector.py --listen 127.0.0.1:57500 >"$collected" &
    device_pids+=($!)
    GNMI_DIAL_OUT=127.0.0.1:57500 GNMI_DIAL_OUT_INTERVAL_MS=500 start_device
    "${device_python[@]}" device/client/session.py
    echo "== dial-out: what the collector on 127.0.0.1:57500 received (every 500 ms)"
    head -n 15 "$collected"
    echo "   ... $(grep -c ReqId "$collected") messages in all"
    ;;
  device)
    build_device
    trap stop_device EXIT
    trap 'exit 130' INT TERM
    start_device
    wait -n "${device_pids[@]}"
    ;;
  test)
    shift
    run_tests "$@"
    ;;
  stage)
    declare -F "stage_$2" >/dev/null || { echo "no stage $2: ${all_stages[*]}"; exit 2; }
    "stage_$2"
    ;;
  *)
    sed -n '2,7p' "$0"
    exit 2
    ;;
esac
