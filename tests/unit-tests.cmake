# The unit tests: one executable over everything behind the interface, the exports included. Every folder names its own
# sources; the fault tests and the tests of a room may be missing while that room is being built.
find_package(GTest REQUIRED) # for MinGW built from Debian's source package, see cmake/mingw/FindGTest.cmake

# There are many test sources, each small: what all of them include is compiled once, and none is optimised for long.
function(qxbc_compile_quickly target)
  target_precompile_headers(${target} PRIVATE
    <gtest/gtest.h> <algorithm> <functional> <map> <memory> <random> <string> <vector>)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(${target} PRIVATE -O1)
  endif()
endfunction()

add_executable(qxbc_unit_tests)
qxbc_compile_quickly(qxbc_unit_tests)
target_sources(qxbc_unit_tests PRIVATE model/LiteralArithmeticTest.cpp)
target_link_libraries(qxbc_unit_tests PRIVATE qxbc_model qxbc_core GTest::gtest GTest::gtest_main GTest::gmock)
target_include_directories(qxbc_unit_tests PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")

foreach(folder support platform boundary kernels data file processor offline faults surroundings threads)
  if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt")
    add_subdirectory(${folder})
  endif()
endforeach()

if(CMAKE_CROSSCOMPILING)
  # Starting Wine takes longer than all tests together: one start for all of them.
  add_test(NAME unit_tests COMMAND qxbc_unit_tests) # through CMAKE_CROSSCOMPILING_EMULATOR
  set_tests_properties(unit_tests PROPERTIES TIMEOUT 900)
else()
  # Locales in which the library must not fall for a decimal comma or for letters beyond ASCII: made for the tests, since
  # few systems have them installed. Where that is not possible the tests concerned skip.
  find_program(QXBC_LOCALEDEF localedef)
  set(locales "${CMAKE_CURRENT_BINARY_DIR}/locale")
  foreach(charset UTF-8 ISO-8859-1)
    if(QXBC_LOCALEDEF AND NOT EXISTS "${locales}/de_DE.${charset}")
      file(MAKE_DIRECTORY "${locales}")
      execute_process(COMMAND "${QXBC_LOCALEDEF}" -i de_DE -f ${charset} "${locales}/de_DE.${charset}"
        OUTPUT_QUIET ERROR_QUIET)
    endif()
  endforeach()

  include(GoogleTest)
  gtest_discover_tests(qxbc_unit_tests DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120
    PROPERTIES TIMEOUT 300 ENVIRONMENT "LOCPATH=${locales}")
  add_subdirectory(structure)
endif()
