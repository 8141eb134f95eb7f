# Installation: the shared library, its public C headers under
# include/mgmtmsg/, a CMake package (find_package(mgmtmsg) gives the imported
# target mgmtmsg::mgmtmsg) and a pkg-config file; and the host kit, the host
# substitute of the device memory manager (mgmtmsg::oxa_host in the same
# package, pkg-config module mgmtmsg-oxa-host). The package files locate the
# prefix relative to themselves, so an installed tree can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(MGMTMSG_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/mgmtmsg)
set(MGMTMSG_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/mgmtmsg)
set(MGMTMSG_INSTALL_PKGCONFIGDIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(MGMTMSG_INSTALL_PROTODIR ${MGMTMSG_INSTALL_INCLUDEDIR}/proto)

install(TARGETS mgmtmsg oxa_mem_host LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(header IN ITEMS gnmi/gnmi_ex.h gnmi/gnmi_stream.h gnmi/gnmi_path.h gnmi/gnmi_wire.h grpci/grpci_ex.h
                        gnmi/gnmi_value.h grpci/grpci_bytes.h common/mgmtmsg_codes.h
                        platform/oxa_mem.h platform/oxa_mem_host.h)
  get_filename_component(subdir ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header}
          DESTINATION ${MGMTMSG_INSTALL_INCLUDEDIR}/${subdir})
endforeach()

# The installed libraries' file names and sonames, for the imported targets.
foreach(library IN ITEMS mgmtmsg mgmtmsg-oxa-host)
  string(TOUPPER ${library} var)
  string(REPLACE "-" "_" var ${var})
  set(${var}_LIBRARY_SONAME
      ${CMAKE_SHARED_LIBRARY_PREFIX}${library}${CMAKE_SHARED_LIBRARY_SUFFIX}.${PROJECT_VERSION_MAJOR})
  set(${var}_LIBRARY_FILE
      ${CMAKE_SHARED_LIBRARY_PREFIX}${library}${CMAKE_SHARED_LIBRARY_SUFFIX}.${PROJECT_VERSION})
endforeach()

set(_mgmtmsg_package_dir ${PROJECT_BINARY_DIR}/package)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/mgmtmsgConfig.cmake.in ${_mgmtmsg_package_dir}/mgmtmsgConfig.cmake
  INSTALL_DESTINATION ${MGMTMSG_INSTALL_CMAKEDIR}
  PATH_VARS CMAKE_INSTALL_LIBDIR MGMTMSG_INSTALL_INCLUDEDIR MGMTMSG_INSTALL_PROTODIR)
write_basic_package_version_file(${_mgmtmsg_package_dir}/mgmtmsgConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${_mgmtmsg_package_dir}/mgmtmsgConfig.cmake
              ${_mgmtmsg_package_dir}/mgmtmsgConfigVersion.cmake
        DESTINATION ${MGMTMSG_INSTALL_CMAKEDIR})

file(RELATIVE_PATH MGMTMSG_PKGCONFIG_TO_PREFIX /prefix/${MGMTMSG_INSTALL_PKGCONFIGDIR} /prefix)
string(REGEX REPLACE "/$" "" MGMTMSG_PKGCONFIG_TO_PREFIX ${MGMTMSG_PKGCONFIG_TO_PREFIX})
foreach(module IN ITEMS mgmtmsg mgmtmsg-oxa-host)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${module}.pc.in ${_mgmtmsg_package_dir}/${module}.pc
                 @ONLY)
  install(FILES ${_mgmtmsg_package_dir}/${module}.pc DESTINATION ${MGMTMSG_INSTALL_PKGCONFIGDIR})
endforeach()

# The schemas for the peers, and the headers of the message classes that the
# library exports, under include/mgmtmsg/proto/ in the layout protoc reads
# them with: the gNMI pair at its published import paths, the device's own
# schemas by their file names. A generated .pb.h stands next to its .proto.
set(_mgmtmsg_gnmi_import github.com/openconfig/gnmi/proto)
foreach(schema IN ITEMS gnmi gnmi_ext)
  install(FILES ${PROJECT_SOURCE_DIR}/proto/${schema}.proto
                ${PROJECT_BINARY_DIR}/proto/${_mgmtmsg_gnmi_import}/${schema}/${schema}.pb.h
          DESTINATION ${MGMTMSG_INSTALL_PROTODIR}/${_mgmtmsg_gnmi_import}/${schema})
endforeach()
foreach(schema IN ITEMS dialout quorix-grpc-dialin quorix-grpc-dialout quorix-grpc-ipc)
  install(FILES ${PROJECT_SOURCE_DIR}/proto/${schema}.proto
                ${PROJECT_BINARY_DIR}/proto/${schema}.pb.h
          DESTINATION ${MGMTMSG_INSTALL_PROTODIR})
endforeach()
