# Installs the built library into a private prefix, then configures, builds
# and runs a small separate project that finds it with find_package and, as
# a second consumer, with pkg-config.
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
foreach(f include/qvmovie/QvMovie.h include/qvmovie/cast/QvMCast.h
          include/qvmovie/toolbox/QvPlatform.h lib/pkgconfig/qvmovie.pc
          lib/cmake/QvMovie/QvMovieConfig.cmake)
  if(NOT EXISTS ${prefix}/${f})
    message(FATAL_ERROR "not installed: ${f}")
  endif()
endforeach()

run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/install/consumer -B ${WORK_DIR}/build
    -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer)

# pkg-config consumer, compiled directly.
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs qvmovie OUTPUT_VARIABLE flags
                RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know qvmovie")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(c++ -std=c++17 ${SOURCE_DIR}/tests/install/consumer/main.cpp ${flags}
    -Wl,-rpath,${prefix}/lib -o ${WORK_DIR}/consumer-pc)
run(${WORK_DIR}/consumer-pc)

# The tools with their manual pages, examples and documentation; the
# installed tree moved elsewhere, the render tool run from a third folder on
# every installed example with no library path set: it finds the library
# through its relative runtime path.
if(WITH_TOOLS)
  foreach(f bin/qvmovie-render share/man/man1/qvmovie-render.1 share/doc/qvmovie/SCENE.md
            share/doc/qvmovie/README.md share/qvmovie/examples/demo.json
            share/qvmovie/examples/falls.json share/qvmovie/examples/falls.png)
    if(NOT EXISTS ${prefix}/${f})
      message(FATAL_ERROR "not installed: ${f}")
    endif()
  endforeach()
  # Every relative link of the installed documents leads to an installed file.
  foreach(doc README.md SCENE.md guide.md)
    file(READ ${prefix}/share/doc/qvmovie/${doc} text)
    # (brackets would upset CMake's lists: each "](" is marked first)
    string(REPLACE "](" "<link>" text "${text}")
    string(REGEX MATCHALL "<link>[A-Za-z0-9_./-]+\\)" links "${text}")
    foreach(link IN LISTS links)
      string(REGEX REPLACE "^<link>(.*).$" "\\1" target "${link}")
      if(NOT target MATCHES "^[a-z]+:" AND NOT EXISTS ${prefix}/share/doc/qvmovie/${target})
        message(FATAL_ERROR "installed ${doc}: link to ${target} leads nowhere")
      endif()
    endforeach()
  endforeach()
  set(moved ${WORK_DIR}/moved/elsewhere)
  file(MAKE_DIRECTORY ${WORK_DIR}/moved ${WORK_DIR}/cwd)
  file(RENAME ${prefix} ${moved})
  file(GLOB scenes ${moved}/share/qvmovie/examples/*.json)
  foreach(scene IN LISTS scenes)
    get_filename_component(name ${scene} NAME_WE)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH
                            ${moved}/bin/qvmovie-render ${scene} -q -o ${name}.gif
                    WORKING_DIRECTORY ${WORK_DIR}/cwd RESULT_VARIABLE rc ERROR_VARIABLE err)
    if(NOT rc EQUAL 0 OR NOT EXISTS ${WORK_DIR}/cwd/${name}.gif)
      message(FATAL_ERROR "moved install: qvmovie-render ${scene} failed (${rc}): ${err}")
    endif()
  endforeach()
  # The engine for --html, when it was built, is found in the moved prefix
  # (a mark added to its page shows it was not the build tree's).
  set(web ${moved}/share/qvmovie/web)
  if(EXISTS ${web}/qvmovie-engine.wasm)
    file(APPEND ${web}/page.html "<!-- moved -->")
    execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH
                            --unset=QVMOVIE_WEB_DIR ${moved}/bin/qvmovie-render
                            ${moved}/share/qvmovie/examples/falls.json --html falls.html
                    WORKING_DIRECTORY ${WORK_DIR}/cwd RESULT_VARIABLE rc ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
      message(FATAL_ERROR "moved install: qvmovie-render --html failed (${rc}): ${err}")
    endif()
    file(READ ${WORK_DIR}/cwd/falls.html page)
    if(NOT page MATCHES "<!-- moved -->")
      message(FATAL_ERROR "moved install: --html did not use the moved prefix's engine")
    endif()
  endif()
  # The runtime path is relative: the build tree's library is not what it found.
  find_program(readelf readelf)
  if(readelf)
    execute_process(COMMAND ${readelf} -d ${moved}/bin/qvmovie-render OUTPUT_VARIABLE dynamic)
    string(REGEX MATCH "R(UN)?PATH[^\n]*" path_line "${dynamic}")
    if(NOT path_line MATCHES "\\[\\$ORIGIN/../lib\\]")
      message(FATAL_ERROR "installed qvmovie-render: '${path_line}', expected [$ORIGIN/../lib]")
    endif()
  endif()
endif()
