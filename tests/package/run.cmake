# Builds and runs programs against each form in which the library can be had.
#
#   cmake -D SOURCE=... -D BUILD=... -D WORK=... -P run.cmake    the sources, the build tree BUILD, installed and moved
#   cmake -D PREFIX=... -D WORK=... -P run.cmake                 the installation PREFIX
#
# CXX and LAUNCHER name a compiler and its launcher; TOOLCHAIN and EMULATOR are those for Windows.
set(here ${CMAKE_CURRENT_LIST_DIR})
set(HXCommon_program ${here}/../../examples/minimal/main.cpp)
set(Communication_program ${here}/Communication.cpp)
set(options -G Ninja)
if(CXX)
  list(APPEND options -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
endif()
if(TOOLCHAIN)
  list(APPEND options -D CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -D CMAKE_FIND_ROOT_PATH=${PREFIX})
  set(suffix .exe)
endif()
set(ENV{APPDATA} ${WORK}/appdata)

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

# consume(<component> <way> <option>...)
function(consume component way)
  message(STATUS "${component}: ${way}")
  set(build ${WORK}/${component}-${way})
  run(${CMAKE_COMMAND} -S ${here} -B ${build} ${options}
    -D COMPONENT=${component} -D PROGRAM=${${component}_program} ${ARGN})
  run(${CMAKE_COMMAND} --build ${build})
  run(${EMULATOR} ${build}/consumer${suffix} --version)
  run(${EMULATOR} ${build}/consumer${suffix} --null --confpath ${WORK} --service here)
endfunction()

# build_example(<name> <prefix>): an example in a folder of its own, as a stranger builds it; the folder is in example.
macro(build_example name prefix)
  message(STATUS "examples/${name}: ${prefix}")
  set(example ${WORK}/strangers/${name})
  file(COPY ${here}/../../examples/${name} DESTINATION ${WORK}/strangers)
  run(${CMAKE_COMMAND} -S ${example} -B ${example}/build ${options} -D CMAKE_PREFIX_PATH=${prefix}
    -D CMAKE_CXX_FLAGS=-Wall\ -Wextra\ -Wpedantic\ -Werror)
  run(${CMAKE_COMMAND} --build ${example}/build)
endmacro()

function(try_examples prefix)
  build_example(minimal-test ${prefix})
  run(${EMULATOR} ${example}/build/tst_service${suffix})
  build_example(minimal ${prefix})
  run(${EMULATOR} ${example}/build/minimal${suffix} --confpath ${WORK} --service here)
  execute_process(COMMAND ${EMULATOR} ${example}/build/minimal${suffix} --confpath ${WORK} RESULT_VARIABLE result ERROR_VARIABLE log)
  if(NOT result EQUAL 1 OR NOT log MATCHES "start number ([2-9]|[1-9][0-9]).*\"http://127.0.0.1:1/\" ConnectivityChecker::FAILED")
    message(FATAL_ERROR "examples/minimal ends with ${result}:\n${log}")
  endif()
  build_example(minimal-qml ${prefix})
  set(ENV{QT_QPA_PLATFORM} offscreen)
  set(ENV{QT_QUICK_BACKEND} software)
  run(${here}/until-logged.sh "http://127.0.0.1:1/ 2" ${example}/log
    ${EMULATOR} ${example}/build/minimal-qml${suffix} --confpath ${WORK})
endfunction()

# consume_installation(<name> <prefix>): in all ways, and with all of its headers at once.
function(consume_installation name prefix)
  file(GLOB_RECURSE headers ${prefix}/include/HXCommon/*.h)
  list(TRANSFORM headers REPLACE ".+" "#include \"\\0\"\n")
  string(CONCAT headers ${headers})
  file(WRITE ${WORK}/${name}-headers.cpp ${headers})
  set(prefix -D CMAKE_PREFIX_PATH=${prefix})
  consume(HXCommon ${name}-cmake ${prefix} -D HEADERS=${WORK}/${name}-headers.cpp)
  consume(Communication ${name}-cmake ${prefix})
  if(NOT TOOLCHAIN)
    consume(HXCommon ${name}-pkg-config ${prefix} -D MODULE=hxcommon)
    consume(Communication ${name}-pkg-config ${prefix} -D MODULE=hxcommon-communication)
  endif()
endfunction()

# consume_build(<kind> <build>): a build tree, and an installation from it that is then moved.
function(consume_build kind build)
  consume(HXCommon ${kind}-build-tree -D HXCommon_DIR=${build})
  run(${CMAKE_COMMAND} --install ${build} --prefix ${WORK}/installed)
  file(RENAME ${WORK}/installed ${WORK}/${kind})
  file(GLOB tools ${WORK}/${kind}/bin/olvex-*)
  foreach(tool IN LISTS tools)
    run(${tool} --version)
  endforeach()
  consume_installation(${kind} ${WORK}/${kind})
endfunction()

file(REMOVE_RECURSE ${WORK})
file(WRITE ${WORK}/OlvexUrls.json "{\"environment\": {\"production\": {
  \"account\": {\"baseUrl\": \"http://127.0.0.1:1/\"},
  \"here\": {\"baseUrl\": \"file://${CMAKE_CURRENT_LIST_FILE}\"}}}}")
if(PREFIX)
  consume_installation(installation ${PREFIX})
  try_examples(${PREFIX})
else()
  consume(Communication subdirectory -D SOURCE=${SOURCE}/libs/libHXCommon/communication -D BUILD_TESTING=ON)
  consume(HXCommon shared-subdirectory -D SOURCE=${SOURCE} -D BUILD_TESTING=ON)
  consume(HXCommon static-subdirectory -D SOURCE=${SOURCE} -D BUILD_SHARED_LIBS=OFF -D HXCOMMON_INSTALL=ON)
  consume_build(shared ${BUILD})
  try_examples(${WORK}/shared)
  consume_build(static ${WORK}/HXCommon-static-subdirectory/hxcommon)
endif()
