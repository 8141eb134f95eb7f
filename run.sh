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

base_packages=(cmake make g++ pkg-config libprotobuf-dev protobuf-compiler libgtest-dev)

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

all_stages=(native sanitize tidy docs)

run_tests() {
  local stages=("$@") passed=0 failed=0 stage
  ((${#stages[@]})) || stages=("${all_stages[@]}")
  for stage in "${stages[@]}"; do
    echo "== stage $stage"
    if ("stage_$stage"); then
      passed=$((passed + 1))
    else
      echo "== stage $stage FAILED"
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
