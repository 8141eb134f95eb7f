#!/usr/bin/env bash
# Builds the project for the device (powerpc-linux-gnu) in build-ppc/ and runs
# its whole test suite under qemu-ppc; then the device form, the protobuf
# runtime linked into the library (MGMTMSG_STATIC_PROTOBUF), in
# build-ppc-static/ with the tests that form can run, and prints the stripped
# sizes of what the device carries in each form. Installs what it needs (Debian packages,
# the target's protobuf runtime and GoogleTest: see target-deps.sh) and exits
# non-zero on any failure.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
readonly ROOT=${HERE%/*}
readonly BUILD=$ROOT/build-ppc
readonly JOBS=2

prefix=$(bash "$HERE/target-deps.sh" | tail -n 1)

# build_and_test DIR [CMAKE OPTION...]
build_and_test() {
  local dir=$1
  shift
  cmake -S "$ROOT" -B "$dir" -DCMAKE_TOOLCHAIN_FILE="$HERE/powerpc-linux-gnu.cmake" \
    -DMGMTMSG_TARGET_PREFIX="$prefix" -DCMAKE_BUILD_TYPE=Release "$@"
  cmake --build "$dir" -j "$JOBS"
  (cd "$dir" && ctest --no-tests=error --output-on-failure -j "$JOBS")
}

# The size in bytes of FILE once stripped.
stripped_size() {
  powerpc-linux-gnu-strip -o "$BUILD/stripped.tmp" "$1"
  stat -c %s "$BUILD/stripped.tmp"
  rm -f "$BUILD/stripped.tmp"
}

build_and_test "$BUILD" -DMGMTMSG_STATIC_PROTOBUF=OFF
build_and_test "$BUILD-static" -DMGMTMSG_STATIC_PROTOBUF=ON
runtime=$(readlink -f "$prefix/lib/libprotobuf.so")
shared=$(stripped_size "$BUILD/libmgmtmsg.so")
protobuf=$(stripped_size "$runtime")
static=$(stripped_size "$BUILD-static/libmgmtmsg.so")
echo "stripped sizes (bytes): shared form libmgmtmsg.so $shared + ${runtime##*/} $protobuf" \
  "= $((shared + protobuf)); device form libmgmtmsg.so $static"
