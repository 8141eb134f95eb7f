# Pins the exported symbols of the mgmtmsg library with a linker version
# script generated from abi/mgmtmsg.symbols, the list of its C entry points.
set(MGMTMSG_SYMBOLS_FILE ${PROJECT_SOURCE_DIR}/abi/mgmtmsg.symbols)
set(MGMTMSG_VERSION_SCRIPT ${PROJECT_BINARY_DIR}/mgmtmsg.map)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${MGMTMSG_SYMBOLS_FILE})

file(STRINGS ${MGMTMSG_SYMBOLS_FILE} _mgmtmsg_entry_points REGEX "^[A-Za-z_]")
set(MGMTMSG_C_ENTRY_POINTS "")
foreach(name IN LISTS _mgmtmsg_entry_points)
  string(APPEND MGMTMSG_C_ENTRY_POINTS "    ${name};\n")
endforeach()

# The namespaces of the generated message classes.
set(MGMTMSG_MESSAGE_PATTERNS "")
foreach(ns IN ITEMS gnmi gnmi_ext quorix_dialin quorix_dialout quorix_grpc_ipc dialout)
  foreach(prefix IN ITEMS "" "vtable?for?" "typeinfo?for?" "typeinfo?name?for?")
    string(APPEND MGMTMSG_MESSAGE_PATTERNS "      ${prefix}${ns}::*;\n")
  endforeach()
  string(APPEND MGMTMSG_MESSAGE_PATTERNS
         "      *google::protobuf::Arena::CreateMaybeMessage?${ns}::*;\n")
endforeach()

# The device form (MGMTMSG_STATIC_PROTOBUF) exports the C entry points alone.
if(MGMTMSG_STATIC_PROTOBUF)
  configure_file(${PROJECT_SOURCE_DIR}/abi/mgmtmsg-c.map.in ${MGMTMSG_VERSION_SCRIPT} @ONLY)
else()
  configure_file(${PROJECT_SOURCE_DIR}/abi/mgmtmsg.map.in ${MGMTMSG_VERSION_SCRIPT} @ONLY)
endif()
target_link_options(mgmtmsg PRIVATE "LINKER:--version-script=${MGMTMSG_VERSION_SCRIPT}")
set_property(TARGET mgmtmsg APPEND PROPERTY LINK_DEPENDS ${MGMTMSG_VERSION_SCRIPT})
