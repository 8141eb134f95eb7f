# Installs the built project into a staging prefix, then builds the consumer
# program out of tree against it twice, through the CMake package and through
# pkg-config, each with the host kit's memory manager, and runs both.
#   cmake -DBUILD_DIR=... -DLIBDIR=lib -DCONSUMER_DIR=... -DWORK_DIR=... -DC_COMPILER=...
#         -DPKG_CONFIG=... [-DGENERATOR=...] [-DTOOLCHAIN_ARGS=-D...|-D...]
#         [-DEMULATOR=cmd|arg...] [-DEXTRA_FLAGS=flag|flag...]
#         [-DEXTRA_LINK_FLAGS=flag|flag...]
#         [-DRUNTIME_DIRS=dir|dir...] -P consumer_test.cmake
# Lists are separated by '|'. RUNTIME_DIRS hold libraries that the installed
# library needs (the protobuf runtime): used to link (-rpath-link) and to run.
foreach(var IN ITEMS BUILD_DIR LIBDIR CONSUMER_DIR WORK_DIR C_COMPILER PKG_CONFIG)
  if(NOT ${var})
    message(FATAL_ERROR "${var} is not set")
  endif()
endforeach()
foreach(var IN ITEMS TOOLCHAIN_ARGS EMULATOR EXTRA_FLAGS EXTRA_LINK_FLAGS RUNTIME_DIRS)
  string(REPLACE "|" ";" ${var} "${${var}}")
endforeach()

# Runs a command, failing the test with its output when it fails.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "failed (${status}): ${command}\n${output}")
  endif()
  message(STATUS "${output}")
endfunction()

set(stage ${WORK_DIR}/stage)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${stage})

set(link_flags ${EXTRA_LINK_FLAGS})
foreach(dir IN LISTS RUNTIME_DIRS)
  list(APPEND link_flags -Wl,-rpath-link,${dir})
endforeach()
set(library_path ${stage}/${LIBDIR} ${RUNTIME_DIRS})
list(JOIN library_path ":" library_path)

# Runs a consumer program as the device would.
function(run_consumer program)
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${library_path} ${EMULATOR} ${program})
endfunction()

# Through the CMake package. A cross toolchain re-roots the package search
# under the target's root, so the package directory is then named directly.
set(package_build ${WORK_DIR}/package)
if(TOOLCHAIN_ARGS)
  set(find_args ${TOOLCHAIN_ARGS} -Dmgmtmsg_DIR=${stage}/${LIBDIR}/cmake/mgmtmsg)
else()
  set(find_args -DCMAKE_PREFIX_PATH=${stage})
endif()
if(GENERATOR)
  list(APPEND find_args -G ${GENERATOR})
endif()
list(JOIN EXTRA_FLAGS " " c_flags)
list(JOIN link_flags " " exe_flags)
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${package_build} ${find_args}
    -DCMAKE_C_COMPILER=${C_COMPILER} "-DCMAKE_C_FLAGS=${c_flags}"
    "-DCMAKE_EXE_LINKER_FLAGS=${exe_flags}")
run(${CMAKE_COMMAND} --build ${package_build})
run_consumer(${package_build}/consumer)

# Through pkg-config, with nothing but the staged prefix on its search path.
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH= PKG_CONFIG_LIBDIR=${stage}/${LIBDIR}/pkgconfig
          ${PKG_CONFIG} --cflags --libs mgmtmsg mgmtmsg-oxa-host
  RESULT_VARIABLE status OUTPUT_VARIABLE pc_flags ERROR_VARIABLE errors
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know mgmtmsg or mgmtmsg-oxa-host: ${errors}")
endif()
separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
set(pc_program ${WORK_DIR}/pkgconfig/consumer)
file(MAKE_DIRECTORY ${WORK_DIR}/pkgconfig)
run(${C_COMPILER} -std=c99 -Wall -Wextra -pedantic -Werror ${EXTRA_FLAGS}
    ${CONSUMER_DIR}/consumer.c ${pc_flags} ${link_flags}
    -o ${pc_program})
run_consumer(${pc_program})
