# Builds and runs the consumer against the build tree BUILD and against an installation of it that was moved.
# cmake -D BUILD=... -D WORK=... -P run.cmake

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

function(consume name prefix)
  run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/${name} -G Ninja -D CMAKE_PREFIX_PATH=${prefix})
  run(${CMAKE_COMMAND} --build ${WORK}/${name})
  run(${WORK}/${name}/consumer --version)
  run(${WORK}/${name}/consumer --null)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/installed)
file(RENAME ${WORK}/installed ${WORK}/moved)
consume(moved-installation ${WORK}/moved)
consume(build-tree ${BUILD})
