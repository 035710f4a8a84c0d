# Builds and runs programs against each form in which the library can be had.
#
#   cmake -D SOURCE=... -D BUILD=... -D WORK=... -P run.cmake    the sources, the build tree BUILD, installed and moved
#   cmake -D PREFIX=... -D WORK=... -P run.cmake                 the installation PREFIX
#
# CXX and LAUNCHER name a compiler and its launcher.
set(options -G Ninja)
if(CXX)
  list(APPEND options -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
endif()
set(ENV{APPDATA} ${WORK}/appdata)

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

# consume(<component> <way> <option>...)
function(consume component way)
  message(STATUS "${component}: ${way}")
  set(build ${WORK}/${component}-${way})
  run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_FUNCTION_LIST_DIR} -B ${build} ${options} -D COMPONENT=${component} ${ARGN})
  run(${CMAKE_COMMAND} --build ${build})
  run(${build}/consumer --version)
  run(${build}/consumer --null)
endfunction()

# consume_installation(<name> <prefix>): in all ways, and with all of its headers at once.
function(consume_installation name prefix)
  file(GLOB_RECURSE headers ${prefix}/include/HXCommon/*.h)
  list(TRANSFORM headers REPLACE ".+" "#include \"\\0\"\n")
  string(CONCAT headers ${headers})
  file(WRITE ${WORK}/${name}-headers.cpp ${headers})
  set(prefix -D CMAKE_PREFIX_PATH=${prefix})
  consume(HXCommon ${name}-cmake ${prefix} -D HEADERS=${WORK}/${name}-headers.cpp)
  consume(HXCommon ${name}-pkg-config ${prefix} -D MODULE=hxcommon)
  consume(Communication ${name}-cmake ${prefix})
  consume(Communication ${name}-pkg-config ${prefix} -D MODULE=hxcommon-communication)
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
if(PREFIX)
  consume_installation(installation ${PREFIX})
else()
  consume(Communication subdirectory -D SOURCE=${SOURCE}/libs/libHXCommon/communication -D BUILD_TESTING=ON)
  consume(HXCommon shared-subdirectory -D SOURCE=${SOURCE} -D BUILD_TESTING=ON)
  consume(HXCommon static-subdirectory -D SOURCE=${SOURCE} -D BUILD_SHARED_LIBS=OFF -D HXCOMMON_INSTALL=ON)
  consume_build(shared ${BUILD})
  consume_build(static ${WORK}/HXCommon-static-subdirectory/hxcommon)
endif()
