# Builds the library of preset windows when it is not up to date, and copies it.
if(NOT EXISTS "${BUILD}/build.ninja")
  execute_process(COMMAND "${CMAKE_COMMAND}" --preset windows WORKING_DIRECTORY "${SOURCE}" OUTPUT_QUIET
    COMMAND_ERROR_IS_FATAL ANY)
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${BUILD}" --target QX_BACKGROUNDCORRECTION -- --quiet
  COMMAND_ERROR_IS_FATAL ANY)
file(COPY "${BUILD}/bin/${NAME}" DESTINATION "${TO}")
