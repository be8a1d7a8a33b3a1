# Where the comfort header has libraries searched on Windows: a host and two small DLLs, built with MinGW.
find_program(QXBC_MINGW_CXX NAMES x86_64-w64-mingw32-g++-posix REQUIRED)
set(folder "${CMAKE_CURRENT_BINARY_DIR}/loading")
file(MAKE_DIRECTORY "${folder}/run")
set(here "${CMAKE_CURRENT_SOURCE_DIR}")
set(compile "${QXBC_MINGW_CXX}" -std=c++17 -O1 -Wall -Wextra -Wpedantic -Werror -static)

add_custom_command(OUTPUT "${folder}/needed.dll" "${folder}/needing.dll"
  COMMAND ${compile} -shared "${here}/LoadingNeeded.cpp" -o "${folder}/needed.dll"
    "-Wl,--out-implib,${folder}/libneeded.dll.a"
  COMMAND ${compile} -shared "${here}/LoadingNeeding.cpp" "${folder}/libneeded.dll.a" -o "${folder}/needing.dll"
  DEPENDS LoadingNeeded.cpp LoadingNeeding.cpp
  COMMENT "Building two DLLs, one of which needs the other"
  VERBATIM)
set(host "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/contract_loading_host.exe")
add_custom_command(OUTPUT "${host}"
  COMMAND ${compile} "-I${PROJECT_SOURCE_DIR}/include" "${here}/LoadingHost.cpp" -o "${host}"
  DEPENDS LoadingHost.cpp Checks.h "${PROJECT_SOURCE_DIR}/include/QX_BackgroundCorrection.h"
    "${PROJECT_SOURCE_DIR}/include/QX_BackgroundCorrection.hpp"
    "${PROJECT_SOURCE_DIR}/include/QX_BackgroundCorrectionModule.hpp"
    "${PROJECT_SOURCE_DIR}/include/QX_BackgroundCorrectionTypes.hpp"
  COMMENT "Building a host with the comfort header"
  VERBATIM)
add_custom_target(contract_loading_host ALL DEPENDS "${host}" "${folder}/needed.dll" "${folder}/needing.dll")
add_test(NAME contract.loading
  COMMAND "${CMAKE_CROSSCOMPILING_EMULATOR}" "${host}" "$<TARGET_FILE:QX_BACKGROUNDCORRECTION>" "..")
set_tests_properties(contract.loading PROPERTIES WORKING_DIRECTORY "${folder}/run" TIMEOUT 300)
