# Builds and runs the consumer in one of the two ways.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE "${SCRATCH}")
if(WAY STREQUAL "installed")
  run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${SCRATCH}/prefix")
endif()
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/consumer" -B "${SCRATCH}/build" -G Ninja
  "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DWAY=${WAY}" "-DLIBRARY_SOURCE=${SOURCE}"
  "-DCMAKE_PREFIX_PATH=${SCRATCH}/prefix")
run("${CMAKE_COMMAND}" --build "${SCRATCH}/build")
run("${SCRATCH}/build/consumer")
