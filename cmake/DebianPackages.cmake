# The Debian packages, by CPack; scripts/package builds and checks them.
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Olvex engineers <engineers@olvex.example>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0olvex1)
set(CPACK_DEBIAN_PACKAGE_SOURCE hxcommon)

# What the library needs is read from its symbols, and what it offers from its soname.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# Each package has a synopsis of its own, so there is none for all.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(about "HXCommon is the library under every Olvex executable: command line,
directories, settings and log file, online services, framing of the device
byte stream, ECG rhythms and manikin states.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libhxcommon${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "common library of the Olvex manikin remote control
${about}

This package holds the shared library.")

# Programs are built with Qt's CMake packages, too: the packages that these came from, which no other tool looks up.
foreach(module IN LISTS HXCOMMON_QT_MODULES)
  file(REAL_PATH ${Qt5${module}_CONFIG} config)
  execute_process(COMMAND dpkg-query --search ${config} OUTPUT_VARIABLE owner COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE ":.*" "" owner ${owner})
  list(APPEND qt_packages "${owner} (>= ${HXCOMMON_QT_VERSION})")
endforeach()
list(REMOVE_DUPLICATES qt_packages)
list(JOIN qt_packages ", " CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libhxcommon-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "common library of the Olvex manikin remote control - development files
${about}

This package holds the headers, the files for CMake and pkg-config, and the
framing as a static library for programs without Qt.")

set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/libs/libHXCommon)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME hxcommon-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
# What the console loads when it starts.
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "qml-module-qtquick2, qml-module-qtquick-controls2, qml-module-qtquick-layouts, \
qml-module-qtquick-window2")
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "fonts-dejavu-core, openssh-client")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS rsync)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "tools for the Olvex manikin remote control
${about}

This package holds olvex-doctor, which tells what is wrong with a tablet,
olvex-sync, which runs synchronisation jobs, and the instructor console.")

# What each package must also hold, and nothing else installs: its documents, and why lintian is contradicted.
set(documents ${PROJECT_BINARY_DIR}/debian)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
string(TIMESTAMP year "%Y" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/copyright.in ${documents}/copyright @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${documents}/changelog.Debian @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${documents}/changelog COPYONLY)
foreach(document changelog changelog.Debian)
  execute_process(COMMAND gzip -9nkf ${documents}/${document} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  set(package ${CPACK_DEBIAN_${name}_PACKAGE_NAME})
  install(FILES ${documents}/copyright ${documents}/changelog.gz ${documents}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
  if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/debian/${component}.lintian-overrides)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian/${component}.lintian-overrides RENAME ${package}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component} EXCLUDE_FROM_ALL)
  endif()
endforeach()

include(CPack)
