# The pictures committed in examples/ are what the picture generator makes:
# runs it into a scratch folder and compares the files byte for byte, both
# ways (no committed picture left that it no longer makes).
#   cmake -DGENERATOR=... -DEXAMPLES=... -DWORK_DIR=... -P same_pictures.cmake
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${GENERATOR} ${WORK_DIR} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "${GENERATOR} ${WORK_DIR} failed: ${rc}")
endif()
file(GLOB made RELATIVE ${WORK_DIR} ${WORK_DIR}/*.png)
file(GLOB committed RELATIVE ${EXAMPLES} ${EXAMPLES}/*.png)
if(NOT made)
  message(FATAL_ERROR "the generator made no pictures")
endif()
if(NOT made STREQUAL committed)
  message(FATAL_ERROR "pictures made: ${made}\ncommitted in ${EXAMPLES}: ${committed}")
endif()
foreach(name IN LISTS made)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${WORK_DIR}/${name} ${EXAMPLES}/${name}
                  RESULT_VARIABLE differ)
  if(NOT differ EQUAL 0)
    message(FATAL_ERROR "${name}: the generator's bytes differ from examples/${name}; "
                        "run qvmovie-demo-assets examples if the change is meant")
  endif()
endforeach()
list(LENGTH made count)
message(STATUS "${count} pictures identical to examples/")
