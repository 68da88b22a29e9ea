# Installs the built library into a private prefix, builds every host
# example against the installed package, runs it into a scratch folder and
# checks its pictures with ImageMagick, a reader of its own: they decode as
# palette PNGs, and the colours change between moments where an animation
# runs.
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
find_program(IDENTIFY identify REQUIRED)
find_program(COMPARE compare REQUIRED)

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

# Every named file exists and decodes as a palette PNG (colour type 3).
function(decodes name)
  foreach(file IN LISTS ARGN)
    execute_process(COMMAND ${IDENTIFY} -format "%[png:IHDR.color-type-orig]"
                            ${WORK_DIR}/out/${name}/${file}
                    RESULT_VARIABLE rc OUTPUT_VARIABLE type ERROR_VARIABLE err)
    if(NOT rc EQUAL 0 OR NOT type STREQUAL "3")
      message(FATAL_ERROR "${name}/${file} is not a palette PNG (${type}): ${err}")
    endif()
  endforeach()
endfunction()

# The two pictures have the same size and their colours (RGB, not indices)
# differ at some pixel: compare counts the pixels and exits 1 when any does.
function(differ name a b)
  execute_process(COMMAND ${COMPARE} -metric AE ${WORK_DIR}/out/${name}/${a}
                          ${WORK_DIR}/out/${name}/${b} null:
                  RESULT_VARIABLE rc ERROR_VARIABLE count)
  if(NOT rc EQUAL 1)
    message(FATAL_ERROR "${name}: ${a} and ${b} do not differ in colour (${rc}: ${count})")
  endif()
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
