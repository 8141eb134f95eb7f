# Toolchain for the device: Linux on 32-bit big-endian PowerPC, built with
# Debian's g++-powerpc-linux-gnu and run on the build host under qemu-ppc.
#
# Usage:
#   cmake -S . -B build-ppc \
#         -DCMAKE_TOOLCHAIN_FILE=cmake/powerpc-linux-gnu.cmake \
#         [-DMGMTMSG_TARGET_PREFIX=/path/to/prefix]
#
# MGMTMSG_TARGET_PREFIX (cache variable) is the install prefix holding the
# target's protobuf runtime (libprotobuf + headers) and GoogleTest, as built by
# cmake/target-deps.sh. It defaults to $MGMTMSG_TARGET_CACHE, else to
# $HOME/.cache/mgmtmsg/powerpc-linux-gnu, the same default as that script.
#
# Libraries, headers and CMake packages are looked up only in that prefix and
# in the cross toolchain's own tree (/usr/powerpc-linux-gnu); programs, above
# all protoc, are looked up on the build host only (Debian's /usr/bin/protoc,
# whose version matches the target runtime). Tests added with
# add_test(NAME x COMMAND x) run through CMAKE_CROSSCOMPILING_EMULATOR.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR powerpc)

set(MGMTMSG_TARGET_TRIPLE powerpc-linux-gnu)
set(MGMTMSG_TARGET_TOOLCHAIN_ROOT /usr/${MGMTMSG_TARGET_TRIPLE})

if(DEFINED ENV{MGMTMSG_TARGET_CACHE} AND NOT "$ENV{MGMTMSG_TARGET_CACHE}" STREQUAL "")
  set(_mgmtmsg_default_prefix "$ENV{MGMTMSG_TARGET_CACHE}")
else()
  set(_mgmtmsg_default_prefix "$ENV{HOME}/.cache/mgmtmsg/${MGMTMSG_TARGET_TRIPLE}")
endif()
set(MGMTMSG_TARGET_PREFIX "${_mgmtmsg_default_prefix}" CACHE PATH
    "Prefix with the target's protobuf runtime and GoogleTest (cmake/target-deps.sh)")

# try_compile() projects re-read this file; hand them the chosen prefix.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MGMTMSG_TARGET_PREFIX)

set(CMAKE_C_COMPILER ${MGMTMSG_TARGET_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${MGMTMSG_TARGET_TRIPLE}-g++)

# 32-bit PowerPC has no 8-byte atomic instructions: GCC calls libatomic for
# them, which every program or library that uses them must link itself.
set(CMAKE_C_STANDARD_LIBRARIES "-Wl,--as-needed -latomic -Wl,--no-as-needed")
set(CMAKE_CXX_STANDARD_LIBRARIES "-Wl,--as-needed -latomic -Wl,--no-as-needed")

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-ppc;-L;${MGMTMSG_TARGET_TOOLCHAIN_ROOT})

set(CMAKE_FIND_ROOT_PATH ${MGMTMSG_TARGET_PREFIX} ${MGMTMSG_TARGET_TOOLCHAIN_ROOT})
list(APPEND CMAKE_PREFIX_PATH ${MGMTMSG_TARGET_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
