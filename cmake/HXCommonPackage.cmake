# The installed package: libraries, headers and the files by which CMake, pkg-config and log viewers find them. It can
# be moved after the installation; CMake finds the build tree, too.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/HXCommon)
set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}/HXCommon)

install(TARGETS HXCommon EXPORT HXCommonTargets
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  PUBLIC_HEADER DESTINATION ${include_dir} COMPONENT development
  INCLUDES DESTINATION ${include_dir})
install(TARGETS HXCommonCommunication EXPORT HXCommonCommunicationTargets
  ARCHIVE COMPONENT development
  PUBLIC_HEADER DESTINATION ${include_dir}/communication COMPONENT development
  INCLUDES DESTINATION ${include_dir})

list(JOIN HXCOMMON_QT_MODULES " " qt_modules)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/HXCommonConfig.cmake.in
  ${PROJECT_BINARY_DIR}/HXCommonConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/HXCommonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/HXCommonConfig.cmake ${PROJECT_BINARY_DIR}/HXCommonConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT development)
foreach(targets HXCommonTargets HXCommonCommunicationTargets)
  install(EXPORT ${targets} NAMESPACE HXCommon:: DESTINATION ${package_dir} COMPONENT development)
  export(EXPORT ${targets} NAMESPACE HXCommon:: FILE ${PROJECT_BINARY_DIR}/${targets}.cmake)
endforeach()

# hxcommon_install_pkgconfig(<target> <module> NAME <name> DESCRIPTION <text> [REQUIRES <modules>] [CFLAGS <flags>])
function(hxcommon_install_pkgconfig target module)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "NAME;DESCRIPTION;REQUIRES;CFLAGS" "")
  file(RELATIVE_PATH prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  string(REGEX REPLACE "/$" "" prefix ${prefix})
  file(RELATIVE_PATH libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
  file(RELATIVE_PATH includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
  get_target_property(definitions ${target} INTERFACE_COMPILE_DEFINITIONS)
  list(TRANSFORM definitions PREPEND -D)
  list(JOIN definitions " " definitions)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/HXCommon.pc.in ${PROJECT_BINARY_DIR}/${module}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

list(TRANSFORM HXCOMMON_QT_MODULES REPLACE ".+" "Qt5\\0 >= ${HXCOMMON_QT_VERSION}" OUTPUT_VARIABLE qt_requirements)
list(JOIN qt_requirements ", " qt_requirements)
# Qt's headers insist on an option that only its CMake package names.
get_target_property(qt_options Qt5::Core INTERFACE_COMPILE_OPTIONS)
if(NOT qt_options)
  set(qt_options "")
endif()
hxcommon_install_pkgconfig(HXCommon hxcommon
  NAME HXCommon DESCRIPTION "${PROJECT_DESCRIPTION}"
  REQUIRES "${qt_requirements}" CFLAGS "${qt_options}")
hxcommon_install_pkgconfig(HXCommonCommunication hxcommon-communication
  NAME "HXCommon communication" DESCRIPTION "Framing of messages on a manikin's byte stream, without Qt")

install(FILES ${PROJECT_SOURCE_DIR}/libs/libHXCommon/hxcommon.categories
        DESTINATION ${CMAKE_INSTALL_DATADIR}/qlogging-categories5 COMPONENT development)
