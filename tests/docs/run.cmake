# Installs the library into a private prefix and runs Doxygen over the
# installed public headers and the pages under docs/, with every warning an
# error: an undocumented public or protected member, parameter or constant
# fails the test, which then lists the warnings.
if(NOT DOXYGEN)
  message(FATAL_ERROR "doxygen was not found (scripts/setup.sh installs it)")
endif()
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
                RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "install failed\n${err}")
endif()

file(GLOB pages ${SOURCE_DIR}/docs/*.md)
set(inputs ${prefix}/include/qvmovie ${pages})
list(JOIN inputs "\" \"" QV_DOXY_INPUT)
set(QV_DOXY_INPUT "\"${QV_DOXY_INPUT}\"")
set(QV_DOXY_OUTPUT "\"${WORK_DIR}/out\"")
set(QV_DOXY_IMAGES "\"${SOURCE_DIR}/docs\"")
set(QV_DOXY_STRIP "\"${prefix}/include\"")
set(QV_DOXY_WARN_AS_ERROR FAIL_ON_WARNINGS)
set(QV_DOXY_WARN_LOG "\"${WORK_DIR}/warnings.log\"")
set(PROJECT_VERSION ${VERSION})
configure_file(${SOURCE_DIR}/docs/Doxyfile.in ${WORK_DIR}/Doxyfile @ONLY)

execute_process(COMMAND ${DOXYGEN} ${WORK_DIR}/Doxyfile WORKING_DIRECTORY ${WORK_DIR}
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
set(warnings "")
if(EXISTS ${WORK_DIR}/warnings.log)
  file(READ ${WORK_DIR}/warnings.log warnings)
endif()
if(NOT rc EQUAL 0 OR NOT warnings STREQUAL "")
  string(REGEX MATCHALL "(warning|error): " found "${warnings}")
  list(LENGTH found count)
  message(FATAL_ERROR "Doxygen: ${count} warnings over the installed headers\n"
                      "${warnings}${err}")
endif()
foreach(page index.html classQvMPlayer.html classQvMCast.html)
  if(NOT EXISTS ${WORK_DIR}/out/html/${page})
    message(FATAL_ERROR "Doxygen wrote no ${page}\n${out}${err}")
  endif()
endforeach()
