# Installs the built project into a staging prefix and makes, from the
# installed schemas alone, what docs/peers.md tells a peer to make: the Python
# message and gRPC modules (imported afterwards), and a C++ program whose gNMI
# service code is generated with protoc --grpc_out over the library's message
# classes, built and run.
#   cmake -DBUILD_DIR=... -DLIBDIR=lib -DCONSUMER_DIR=... -DWORK_DIR=... -DPYTHON=...
#         -DCXX_COMPILER=...
#         [-DGENERATOR=...] [-DEXTRA_FLAGS=flag|flag...] [-DRUNTIME_DIRS=dir|dir...]
#         -P peers_test.cmake
foreach(var IN ITEMS BUILD_DIR LIBDIR CONSUMER_DIR WORK_DIR PYTHON CXX_COMPILER)
  if(NOT ${var})
    message(FATAL_ERROR "${var} is not set")
  endif()
endforeach()
foreach(var IN ITEMS EXTRA_FLAGS RUNTIME_DIRS)
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
set(schemas ${stage}/include/mgmtmsg/proto)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${stage})

# Python: every schema, then the gRPC modules of the gNMI pair moved where
# their imports look for them (github/com/..., as the message modules are).
set(py ${WORK_DIR}/python)
file(MAKE_DIRECTORY ${py})
file(GLOB_RECURSE protos ${schemas}/*.proto)
run(${PYTHON} -m grpc_tools.protoc -I${schemas} --python_out=${py} --grpc_python_out=${py}
    ${protos})
run(${CMAKE_COMMAND} -E copy_directory ${py}/github.com ${py}/github/com)
run(${CMAKE_COMMAND} -E rm -r ${py}/github.com)
run(${CMAKE_COMMAND} -E env PYTHONPATH=${py} ${PYTHON} -c
    "from github.com.openconfig.gnmi.proto.gnmi import gnmi_pb2, gnmi_pb2_grpc\n\
import quorix_grpc_ipc_pb2, quorix_grpc_dialin_pb2_grpc\n\
assert gnmi_pb2_grpc.gNMIStub and quorix_grpc_dialin_pb2_grpc.gRPCConfigOperStub\n\
assert quorix_grpc_ipc_pb2.SouthMsg(msg_type=quorix_grpc_ipc_pb2.MSGTYPE_RPC_DATA).msg_type == 3")

# C++ with gRPC, through the CMake package.
set(build ${WORK_DIR}/grpc_consumer)
set(args -DCMAKE_PREFIX_PATH=${stage})
if(GENERATOR)
  list(APPEND args -G ${GENERATOR})
endif()
set(link_flags ${EXTRA_FLAGS})
foreach(dir IN LISTS RUNTIME_DIRS)
  list(APPEND link_flags -Wl,-rpath-link,${dir})
endforeach()
list(JOIN EXTRA_FLAGS " " cxx_flags)
list(JOIN link_flags " " exe_flags)
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${build} ${args} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    "-DCMAKE_CXX_FLAGS=${cxx_flags}"
    "-DCMAKE_EXE_LINKER_FLAGS=${exe_flags}")
run(${CMAKE_COMMAND} --build ${build})
set(library_path ${stage}/${LIBDIR} ${RUNTIME_DIRS})
list(JOIN library_path ":" library_path)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${library_path} ${build}/grpc_consumer)
