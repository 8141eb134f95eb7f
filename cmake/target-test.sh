#!/usr/bin/env bash
# Builds the project for the device (powerpc-linux-gnu) in build-ppc/ and runs
# its whole test suite under qemu-ppc. Installs what it needs (Debian packages,
# the target's protobuf runtime and GoogleTest: see target-deps.sh) and exits
# non-zero on any failure.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
readonly ROOT=${HERE%/*}
readonly BUILD=$ROOT/build-ppc
readonly JOBS=2

prefix=$(bash "$HERE/target-deps.sh" | tail -n 1)
cmake -S "$ROOT" -B "$BUILD" -DCMAKE_TOOLCHAIN_FILE="$HERE/powerpc-linux-gnu.cmake" \
  -DMGMTMSG_TARGET_PREFIX="$prefix" -DCMAKE_BUILD_TYPE=Release
cmake --build "$BUILD" -j "$JOBS"
cd "$BUILD"
ctest --no-tests=error --output-on-failure -j "$JOBS"
