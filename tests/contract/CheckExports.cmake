# Fails unless a library exports exactly its functions, undecorated: the four of the main library, or all that the header
# of the flat interface declares.
# cmake -DLIBRARY=<file> -DTOOL=<nm or llvm-readobj> [-DHEADER=<header in C>] -P CheckExports.cmake
if(HEADER)
  file(STRINGS "${HEADER}" lines REGEX "^[a-z].* [*]?QXBC_[A-Za-z]+[(]")
  set(expected)
  foreach(line IN LISTS lines)
    string(REGEX MATCH "QXBC_[A-Za-z]+[(]" name "${line}")
    string(REPLACE "(" "" name "${name}")
    list(APPEND expected "${name}")
  endforeach()
  list(SORT expected)
else()
  set(expected
    CreateBackgroundCorrection
    CreateBackgroundCorrectionOffline
    DeleteBackgroundCorrection
    GetLastBackgroundCorrectionDLLError)
endif()

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
if(NOT exported STREQUAL expected OR NOT expected)
  string(REPLACE ";" "\n  " exported "${exported}")
  message(FATAL_ERROR "${LIBRARY} exports\n  ${exported}")
endif()
list(LENGTH exported count)
message(STATUS "${LIBRARY} exports the ${count} functions and nothing else")
