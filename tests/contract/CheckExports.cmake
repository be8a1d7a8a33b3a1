# Fails unless a library exports exactly the four functions, undecorated:
# cmake -DLIBRARY=<file> -DTOOL=<nm or llvm-readobj> -P CheckExports.cmake
set(expected
  CreateBackgroundCorrection
  CreateBackgroundCorrectionOffline
  DeleteBackgroundCorrection
  GetLastBackgroundCorrectionDLLError)

if(LIBRARY MATCHES "\\.dll$")
  execute_process(COMMAND "${TOOL}" --coff-exports "${LIBRARY}"
    OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "Name: [^\n]+" exported "${listing}")
  list(TRANSFORM exported REPLACE "^Name: +" "")
else()
  execute_process(COMMAND "${TOOL}" --dynamic --defined-only --format=posix "${LIBRARY}"
    OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n]+" exported "${listing}")
  list(TRANSFORM exported REPLACE " .*" "")
endif()
list(SORT exported)
if(NOT exported STREQUAL expected)
  string(REPLACE ";" "\n  " exported "${exported}")
  message(FATAL_ERROR "${LIBRARY} exports\n  ${exported}")
endif()
list(LENGTH exported count)
message(STATUS "${LIBRARY} exports the ${count} functions and nothing else")
