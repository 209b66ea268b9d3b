# What `cmake --install` puts in place, in three components that are also the three Debian
# packages `cpack -G DEB` makes:
#   runtime      libzanfe.so.1, the front-end library an engine loads
#   development  the C headers of the interface (what the front end exports and imports), the
#                C++ headers of the reference platform, loader and engine, the development
#                links, the static engine, the CMake package and the pkg-config files
#   tools        zanfe with its man page and bash completion, the RESTCONF server zanfe-restconf, and the libraries it runs on:
#                the reference platform and the configuration loader
include(CMakePackageConfigHelpers)

set(ZAN_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zanfe)
set(ZAN_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/zan)

# The C interface on its own, for an engine or a platform written against it.
add_library(zanfe_headers INTERFACE)
target_include_directories(zanfe_headers INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/frame> $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}> $<INSTALL_INTERFACE:${ZAN_INCLUDE_DIR}>)
set_target_properties(zanfe_headers PROPERTIES EXPORT_NAME headers)

# An installed zanfe finds its libraries relative to itself, wherever the tree was installed.
file(RELATIVE_PATH ZAN_BIN_TO_LIB /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(zanfe_tool zanfe_restconf PROPERTIES INSTALL_RPATH "$ORIGIN/${ZAN_BIN_TO_LIB}")
set_target_properties(zanconfig PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS zan_fe EXPORT zanfeTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS zanplatform zanconfig EXPORT zanfeTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT tools NAMELINK_COMPONENT development)
install(TARGETS zanengine zanfe_headers EXPORT zanfeTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(TARGETS zanfe_tool zanfe_restconf RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)

install(FILES
    ${PROJECT_SOURCE_DIR}/frame/zan_fe.h ${PROJECT_SOURCE_DIR}/frame/data_objects.h
    ${PROJECT_SOURCE_DIR}/frame/traversal.h ${PROJECT_SOURCE_DIR}/frame/leaf_conversions.h
    ${PROJECT_SOURCE_DIR}/platform/include/zan/leaf.h
    ${PROJECT_SOURCE_DIR}/platform/include/zan/platform.hpp ${PROJECT_SOURCE_DIR}/platform/include/zan/database.hpp
    ${PROJECT_SOURCE_DIR}/platform/include/zan/db_kinds.hpp
    ${PROJECT_SOURCE_DIR}/platform/config/include/zan/config.hpp
    ${PROJECT_SOURCE_DIR}/engine/include/zan/engine.hpp ${PROJECT_SOURCE_DIR}/engine/include/zan/rfc7951.hpp
  DESTINATION ${ZAN_INCLUDE_DIR} COMPONENT development)

# The YANG module of the configuration and the module it imports, where YANG tools look for
# installed modules.
install(FILES ${ZAN_YANG_MODULE} ${PROJECT_SOURCE_DIR}/gen/yang/ietf-netconf-acm@2012-02-22.yang DESTINATION ${CMAKE_INSTALL_DATADIR}/yang/modules/zanfe COMPONENT tools)

install(EXPORT zanfeTargets NAMESPACE zanfe:: DESTINATION ${ZAN_CMAKE_DIR} COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zanfeConfig.cmake.in
  ${PROJECT_BINARY_DIR}/zanfeConfig.cmake INSTALL_DESTINATION ${ZAN_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zanfeConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zanfeConfig.cmake ${PROJECT_BINARY_DIR}/zanfeConfigVersion.cmake
  DESTINATION ${ZAN_CMAKE_DIR} COMPONENT development)

# pkg-config files that find the installation from where they stand (${pcfiledir}), so
# that a tree installed with `cmake --install --prefix` anywhere works as it is.
file(RELATIVE_PATH ZAN_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" ZAN_PC_TO_PREFIX "${ZAN_PC_TO_PREFIX}")
set(ZAN_FE_SONAME libzanfe.so.${PROJECT_VERSION_MAJOR})
set(ZAN_DL_LIBS_FLAG "")
foreach(lib IN LISTS CMAKE_DL_LIBS)
  string(APPEND ZAN_DL_LIBS_FLAG " -l${lib}")
endforeach()
foreach(pc zanfe zanplatform zanconfig zanengine)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${pc}.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${pc}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${pc}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# The man page, written by help2man from `zanfe --help` and `zanfe --version`.
# Not in the sanitizer and fuzzing builds, which install nothing.
find_program(HELP2MAN help2man)
if(HELP2MAN AND NOT (ZAN_SANITIZE OR ZAN_TSAN OR ZAN_FUZZ))
  add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/zanfe.1.gz
    COMMAND ${HELP2MAN} --no-info --no-discard-stderr --section=1
            "--name=ask the configuration database front end what it registered"
            --output=${PROJECT_BINARY_DIR}/zanfe.1 $<TARGET_FILE:zanfe_tool>
    COMMAND gzip -9nf ${PROJECT_BINARY_DIR}/zanfe.1
    DEPENDS zanfe_tool
    COMMENT "Writing the man page of zanfe"
    VERBATIM)
  add_custom_target(zanfe_man ALL DEPENDS ${PROJECT_BINARY_DIR}/zanfe.1.gz)
  install(FILES ${PROJECT_BINARY_DIR}/zanfe.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
elseif(NOT HELP2MAN)
  message(STATUS "help2man not found: zanfe is installed without its man page")
endif()
install(FILES ${PROJECT_SOURCE_DIR}/tools/completion/zanfe.bash RENAME zanfe
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)

include(${PROJECT_SOURCE_DIR}/cmake/package.cmake)
