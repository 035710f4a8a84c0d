# The shapes that targets of this project share.

# Whether the project is no part of another one. If so, a build that names no type is an optimised one, with what a
# debugger needs.
string(COMPARE EQUAL "${PROJECT_SOURCE_DIR}" "${CMAKE_SOURCE_DIR}" HXCOMMON_IS_TOP_LEVEL)
get_property(multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(HXCOMMON_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT multi_config)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Type of the build" FORCE)
endif()

# hxcommon_strict(<target>): the language level, the warnings and the strict Qt macros of every own target.
function(hxcommon_strict target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4)
  else()
    # Qt's logging macros are used as Qt documents them, with nothing for their "...".
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
      $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>)
  endif()
  target_compile_definitions(${target} PRIVATE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS QT_STRICT_ITERATORS)
endfunction()

# hxcommon_add_program(<name> SOURCES <file>... [LIBRARIES <target>...]): an executable on top of the library.
function(hxcommon_add_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  hxcommon_strict(${name})
  if(TARGET Qt5::Core)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
  endif()
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
endfunction()

# hxcommon_add_test(<name> SOURCES <file>... [LIBRARIES <target>...] [PROGRAMS <target>...] [LABELS <label>...]
#                   [ARGUMENTS <argument>...])
#
# A test program and its ctest entry. It runs in a directory of its own, which is also its home, its temporary
# directory and its APPDATA, without any QT_* variable of the caller. A program P named under PROGRAMS is built
# first, and its path reaches the sources as the string literal P_PATH, in upper case.
function(hxcommon_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;PROGRAMS;LABELS;ARGUMENTS")
  hxcommon_add_program(${name} SOURCES ${arg_SOURCES} LIBRARIES ${arg_LIBRARIES})
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../tests/support)
  foreach(program IN LISTS arg_PROGRAMS)
    string(TOUPPER ${program} macro)
    string(REPLACE "-" "_" macro ${macro})
    target_compile_definitions(${name} PRIVATE ${macro}_PATH="$<TARGET_FILE:${program}>")
    add_dependencies(${name} ${program})
  endforeach()

  set(sandbox ${PROJECT_BINARY_DIR}/tests/sandbox/${name})
  file(MAKE_DIRECTORY ${sandbox}/tmp)
  add_test(NAME ${name} COMMAND ${name} ${arg_ARGUMENTS} WORKING_DIRECTORY ${sandbox})
  set_tests_properties(${name} PROPERTIES
    LABELS "${arg_LABELS}"
    TIMEOUT 300
    FIXTURES_REQUIRED emulator
    ENVIRONMENT "HOME=${sandbox};TMPDIR=${sandbox}/tmp;APPDATA=${sandbox}/appdata;QT_QPA_PLATFORM=offscreen"
    ENVIRONMENT_MODIFICATION "QT_LOGGING_RULES=unset:;QT_MESSAGE_PATTERN=unset:;QT_FATAL_WARNINGS=unset:;QML_LOCAL_PATH=unset:")
endfunction()
