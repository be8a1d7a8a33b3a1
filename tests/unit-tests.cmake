# The unit tests: one executable over everything behind the interface, the exports included. Every folder names its own
# sources.
find_package(GTest REQUIRED) # for cross-builds from Debian's source package, see cmake/googletest/
include(discover-suites.cmake)

# There are many test sources, each small: what all of them include is compiled once, and the tests themselves are not
# optimised, which would take longer than it saves: the library and the models that they call are.
function(qxbc_compile_quickly target)
  target_compile_options(${target} PRIVATE -O0)
  # Most of a source's time is what it includes, so that some are compiled together: names in their unnamed namespaces
  # must differ.
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
  # Clang's precompiled headers hold the checkout's path, so that what is compiled with them is never found in a compiler
  # cache by another checkout: that costs more than they save.
  if(NOT target STREQUAL "qxbc_test_headers" AND NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_precompile_headers(${target} REUSE_FROM qxbc_test_headers)
  endif()
endfunction()

# Has no more than these, for whoever uses them waits for all of it.
file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/Headers.cpp" CONTENT "int main() { return 0; }\n")
add_executable(qxbc_test_headers EXCLUDE_FROM_ALL "${CMAKE_CURRENT_BINARY_DIR}/Headers.cpp")
qxbc_compile_quickly(qxbc_test_headers)
target_link_libraries(qxbc_test_headers PRIVATE qxbc_core GTest::gtest GTest::gmock)
target_precompile_headers(qxbc_test_headers PRIVATE
  <gmock/gmock.h> <gtest/gtest.h> <algorithm> <functional> <map> <memory> <random> <string> <vector>)

# A room's sources of the unit tests, which are compiled together.
function(qxbc_add_unit_tests room)
  target_sources(qxbc_unit_tests PRIVATE ${ARGN})
  set_source_files_properties(${ARGN} TARGET_DIRECTORY qxbc_unit_tests PROPERTIES UNITY_GROUP ${room})
endfunction()

# For the sources of a target that work hard themselves.
function(qxbc_compile_for_speed target)
  foreach(source ${ARGN})
    set_property(SOURCE "${source}" TARGET_DIRECTORY ${target} APPEND PROPERTY COMPILE_OPTIONS -O2)
    set_property(SOURCE "${source}" TARGET_DIRECTORY ${target} PROPERTY SKIP_PRECOMPILE_HEADERS ON)
  endforeach()
endfunction()

add_executable(qxbc_unit_tests support/AllocationFaultsTest.cpp support/GuardedPixels.cpp
  model/LiteralArithmeticTest.cpp)
qxbc_compile_quickly(qxbc_unit_tests)
set_target_properties(qxbc_unit_tests PROPERTIES UNITY_BUILD_MODE GROUP)
target_link_libraries(qxbc_unit_tests PRIVATE
  qxbc_allocation_faults qxbc_store_support qxbc_test_support qxbc_model qxbc_exports qxbc_core
  GTest::gtest GTest::gtest_main GTest::gmock)
target_include_directories(qxbc_unit_tests PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")

foreach(folder platform boundary kernels data file processor offline faults surroundings threads)
  add_subdirectory(${folder})
endforeach()

if(CMAKE_CROSSCOMPILING AND WIN32)
  # Starting Wine takes longer than most tests: one start for what takes long, one for all the others.
  add_test(NAME unit_tests COMMAND qxbc_unit_tests --gtest_filter=-*Exhaustive*) # through CMAKE_CROSSCOMPILING_EMULATOR
  add_test(NAME unit_tests.exhaustive COMMAND qxbc_unit_tests --gtest_filter=*Exhaustive*)
  set_tests_properties(unit_tests unit_tests.exhaustive PROPERTIES TIMEOUT 900)
  if(IS_DIRECTORY /dev/shm) # as for the fault tests
    set_tests_properties(unit_tests PROPERTIES ENVIRONMENT "QXBC_TEST_FOLDER=Z:/dev/shm")
  endif()
else()
  # Locales in which the library must not fall for a decimal comma or for letters beyond ASCII: made for the tests, since
  # few systems have them installed. Where that is not possible the tests concerned skip.
  find_program(QXBC_LOCALEDEF localedef)
  set(locales "${CMAKE_CURRENT_BINARY_DIR}/locale")
  include("${CMAKE_CURRENT_SOURCE_DIR}/make-locales.cmake")
  qxbc_make_locales("${QXBC_LOCALEDEF}" "${locales}")

  qxbc_discover_suites(qxbc_unit_tests
    ENVIRONMENT "LOCPATH=${locales}"
    EACH_TEST Forced/ExhaustiveKernels InEveryRoundingMode/ExhaustiveScaling
    FIRST StoreModelTest)
endif()
