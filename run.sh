#!/usr/bin/env bash
# Builds and runs mgmtmsg on a Debian bookworm machine, installing any missing
# Debian package first.
#   ./run.sh example          build the library and run the example program
#   ./run.sh test [STAGE...]  build and run every test stage (or the ones named)
set -euo pipefail
cd "$(dirname "$0")"
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
  libbenchmark-dev)

# build DIR [CMAKE OPTION...]: configures and builds into DIR.
build() {
  local dir=$1
  shift
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "$@" >/dev/null
  cmake --build "$dir" -j"$jobs"
}

stage_native() {
  need_packages "${base_packages[@]}"
  build build
  ctest --test-dir build --output-on-failure -j"$jobs"
}

# ASan and UBSan over the whole suite, built with clang. The same build holds
# the fuzz harnesses (stage fuzz), whose seeds and regressions run here.
stage_sanitize() {
  need_packages "${base_packages[@]}" clang libclang-rt-14-dev
  build build-asan -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DMGMTMSG_SANITIZE=address,undefined -DMGMTMSG_FUZZ=ON
  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest --test-dir build-asan --output-on-failure -j"$jobs"
}

# The 32-bit big-endian PowerPC target, tests under qemu.
stage_target() {
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
  own_sources '*.c' '*.cc' '*.h' | xargs clang-format --dry-run --Werror
}

# clang-tidy (.clang-tidy) over the sources of the native build, through its
# compile database.
stage_tidy() {
  need_packages "${base_packages[@]}" clang-tidy
  build build
  own_sources '*.c' '*.cc' | while read -r file; do
    if grep -qF "\"file\": \"$PWD/$file\"" build/compile_commands.json; then
      echo "$file"
    fi
  done | xargs -P"$jobs" -n1 clang-tidy -p build --quiet 2>&1 |
    { grep -v 'warnings\? generated\.$' || true; }
}

# The HTML reference of the public headers and the guides (build/docs/html);
# any Doxygen warning, an undocumented entry point among them, fails it.
stage_docs() {
  need_packages "${base_packages[@]}" doxygen
  cmake -S . -B build >/dev/null
  cmake --build build --target docs
}

# Every fuzz harness for FUZZ_SECONDS (60) under ASan and UBSan in the build
# of stage sanitize, two at a time, from the committed seeds; a crash, leak,
# timeout or out-of-memory report fails it. Corpora, logs and crash inputs
# stay in build-asan/fuzz-run.
fuzz_harnesses=(capability_request get_request set_request subscribe_request south_msg subs_args
  cancel_args path_text)
fuzz_one() {
  local name=$1 dir=build-asan/fuzz-run/$1
  mkdir -p "$dir/corpus" "$dir/artifacts"
  if "build-asan/fuzz/fuzz_$name" -max_total_time="${FUZZ_SECONDS:-60}" -timeout=10 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$dir/artifacts/" \
    "$dir/corpus" "fuzz/corpus/fuzz_$name" >"$dir/log" 2>&1; then
    echo "fuzz_$name: $(grep -o 'DONE .*cov: [0-9]* ft: [0-9]* corp: [^ ]*' "$dir/log")," \
      "$(grep -o 'number_of_executed_units: [0-9]*' "$dir/log")"
  else
    echo "fuzz_$name FAILED (inputs in $dir/artifacts):"
    tail -n 40 "$dir/log"
    return 1
  fi
}
stage_fuzz() {
  need_packages "${base_packages[@]}" clang libclang-rt-14-dev
  build build-asan -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DMGMTMSG_SANITIZE=address,undefined -DMGMTMSG_FUZZ=ON || return 1
  rm -rf build-asan/fuzz-run
  export -f fuzz_one
  printf '%s\n' "${fuzz_harnesses[@]}" | xargs -P2 -I{} bash -c 'fuzz_one {}'
}

# The native suite's programs under valgrind's memcheck (children too): any
# error, or any block definitely or indirectly lost, fails it. The tests that
# are CMake scripts (symbol list, install, example files) are left out.
# memcheck keeps its own allocator out of the programs' code (somalloc), so
# that the fault-injection test's operator new stays in place, over memcheck's
# malloc and free.
stage_valgrind() {
  need_packages "${base_packages[@]}" valgrind jq
  build build || return 1
  ctest --test-dir build --show-only=json-v1 |
    jq -r '.tests[] | select(.command[0] | test("/cmake$") | not) |
      [.name, (.properties[] | select(.name == "WORKING_DIRECTORY") | .value),
       (.command | @sh)] | @tsv' |
    while IFS=$'\t' read -r name dir command; do
      echo "$name"
      if ! (cd "$dir" && eval valgrind --tool=memcheck --quiet --trace-children=yes \
        --soname-synonyms=somalloc=nouserintercepts --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite,indirect \
        --show-leak-kinds=definite,indirect "$command") >"build/$name.memcheck" 2>&1; then
        tail -n 60 "build/$name.memcheck"
        exit 1
      fi
    done
}

# The concurrency test, built alone with clang's ThreadSanitizer; any report
# fails it.
stage_tsan() {
  need_packages "${base_packages[@]}" clang libclang-rt-14-dev
  cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
    -DCMAKE_CXX_COMPILER=clang++ -DMGMTMSG_SANITIZE=thread -DMGMTMSG_EXAMPLES=OFF >/dev/null &&
    cmake --build build-tsan -j"$jobs" --target concurrency_test &&
    TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/concurrency_test
}

# The benchmarks, built and each run once as a smoke test: the binary first
# compares the bytes of both sides of every workload and fails only when they
# differ. Timings and instruction counts are bench/run.sh's (not part of CI).
stage_bench() {
  need_packages "${base_packages[@]}"
  build build && build/bench/mgmtmsg_bench --benchmark_min_time=0
}

all_stages=(native format tidy docs sanitize fuzz tsan valgrind target bench)

run_tests() {
  local stages=("$@") passed=0 failed=0 stage
  ((${#stages[@]})) || stages=("${all_stages[@]}")
  for stage in "${stages[@]}"; do
    echo "== stage $stage"
    local started=$SECONDS
    if ("stage_$stage"); then
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
    need_packages "${base_packages[@]}"
    build build -DMGMTMSG_TESTS=OFF >/dev/null
    ./build/examples/mgmtmsg_example
    ;;
  test)
    shift
    run_tests "$@"
    ;;
  *)
    sed -n '2,6p' "$0"
    exit 2
    ;;
esac
