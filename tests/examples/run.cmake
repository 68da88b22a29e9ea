# Installs the built library into a private prefix, builds every host
# example against the installed package, runs it into a scratch folder and
# checks its pictures with a separate libpng reader: they decode as palette
# PNGs, and the colours change between moments where an animation runs.
#   cmake -DSOURCE_DIR=... -DBUILD_DIR=... -DWORK_DIR=... -P run.cmake
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGV}\n${out}\n${err}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/examples/check -B ${WORK_DIR}/check)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/check)
set(check ${WORK_DIR}/check/check-png)

# The examples as installed when the package carries them, else as in the
# source tree.
set(examples ${prefix}/share/qvmovie/examples/hosts)
if(NOT EXISTS ${examples})
  set(examples ${SOURCE_DIR}/examples/hosts)
endif()

# Builds and runs one example; its pictures go to ${WORK_DIR}/out/<name>.
function(example name)
  run(${CMAKE_COMMAND} -S ${examples}/${name} -B ${WORK_DIR}/${name}
      -DCMAKE_PREFIX_PATH=${prefix})
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/${name})
  file(MAKE_DIRECTORY ${WORK_DIR}/out/${name})
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/lib
      ${WORK_DIR}/${name}/${name} ${WORK_DIR}/out/${name})
endfunction()

# Every named file exists and decodes as a palette PNG.
function(decodes name)
  list(TRANSFORM ARGN PREPEND ${WORK_DIR}/out/${name}/)
  run(${check} decode ${ARGN})
endfunction()

# The colours of two pictures differ.
function(differ name a b)
  run(${check} differ ${WORK_DIR}/out/${name}/${a} ${WORK_DIR}/out/${name}/${b})
endfunction()

example(waterfall)
set(files)
foreach(k RANGE 0 8)
  list(APPEND files waterfall-0${k}.png)
endforeach()
decodes(waterfall ${files})
differ(waterfall waterfall-00.png waterfall-01.png)  # the cycle runs
differ(waterfall waterfall-07.png waterfall-08.png)  # and the fade goes on

example(walk)
set(files)
foreach(k RANGE 0 11)
  if(k LESS 10)
    set(k 0${k})
  endif()
  list(APPEND files walk-${k}.png)
endforeach()
decodes(walk ${files})
differ(walk walk-00.png walk-01.png)  # the walker moves
differ(walk walk-06.png walk-07.png)  # and so does the giant after him

example(hits)
decodes(hits scene-0.png scene-1.png scene-2.png hits.png icons.png)
differ(hits scene-0.png scene-1.png)  # the flash: red, then green
differ(hits scene-1.png scene-2.png)  # then blue
