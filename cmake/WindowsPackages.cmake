# The zips for Windows, by CPack; scripts/package --windows builds and tries them. One is for developers: the library as
# an installation has it. The other is for field engineers: the programs in one folder with all that they load.
set(CPACK_GENERATOR ZIP)
set(CPACK_STRIP_FILES ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development programs)
set(CPACK_ARCHIVE_LIBRARY_FILE_NAME hxcommon-${PROJECT_VERSION}-windows-x86_64-mingw)
set(CPACK_ARCHIVE_PROGRAMS_FILE_NAME olvex-tools-${PROJECT_VERSION}-windows-x86_64)

install(TARGETS HXCommon olvex-doctor olvex-sync olvex-console
  RUNTIME DESTINATION . COMPONENT programs
  PUBLIC_HEADER DESTINATION . COMPONENT nowhere)

# Qt looks for its plug-ins and QML modules where this file says: below the folder of the program.
file(WRITE ${PROJECT_BINARY_DIR}/qt.conf "[Paths]\nPrefix = .\n")
set(qt ${Qt5Core_DIR}/../../..)
list(TRANSFORM HXCOMMON_QT_MODULES REPLACE ".+" "${qt}/bin/Qt5\\0.dll" OUTPUT_VARIABLE libraries)
foreach(module Gui QmlModels QmlWorkerScript Quick QuickControls2 QuickTemplates2)
  list(APPEND libraries ${qt}/bin/Qt5${module}.dll)
endforeach()
foreach(library libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_STRIP} -o ${PROJECT_BINARY_DIR}/${library} ${file} COMMAND_ERROR_IS_FATAL ANY)
  list(APPEND libraries ${PROJECT_BINARY_DIR}/${library})
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/windows/README.txt.in ${PROJECT_BINARY_DIR}/README.txt @ONLY NEWLINE_STYLE CRLF)
install(FILES ${libraries} ${PROJECT_BINARY_DIR}/qt.conf ${PROJECT_BINARY_DIR}/README.txt
  DESTINATION . COMPONENT programs)
install(FILES /usr/share/common-licenses/GPL-3 /usr/share/common-licenses/LGPL-3
  DESTINATION licenses COMPONENT programs)
install(FILES ${qt}/plugins/platforms/qwindows.dll DESTINATION plugins/platforms COMPONENT programs)
install(FILES ${qt}/plugins/bearer/qgenericbearer.dll DESTINATION plugins/bearer COMPONENT programs)
install(DIRECTORY ${qt}/qml DESTINATION . COMPONENT programs REGEX "/(QtTest|test)$" EXCLUDE)

include(CPack)
cpack_add_component(runtime GROUP library)
cpack_add_component(development GROUP library)
cpack_add_component(programs GROUP programs)
