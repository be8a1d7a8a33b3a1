# Tests of a GoogleTest executable for CTest: one for each suite. A process for each single test would be much of the
# time, above all with sanitizers; the output of a suite that fails names the test, also the one it died in.
#
# qxbc_discover_suites(<target> [ENVIRONMENT <name=value>...] [EACH_TEST <suite>...] [FIRST <suite>...])
#   EACH_TEST  suites of long tests: each test is one for CTest, and they are started first
#   FIRST      suites that take long and are started first
# The executable is asked for its suites when the tests are run.
set(QXBC_DISCOVER_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/add-suites.cmake")

function(qxbc_discover_suites target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "ENVIRONMENT;EACH_TEST;FIRST")
  set(included "${CMAKE_CURRENT_BINARY_DIR}/${target}_suites.cmake")
  file(GENERATE OUTPUT "${included}" CONTENT
"set(executable \"$<TARGET_FILE:${target}>\")
set(emulator \"${CMAKE_CROSSCOMPILING_EMULATOR}\")
set(target \"${target}\")
set(environment \"${arg_ENVIRONMENT}\")
set(each_test \"${arg_EACH_TEST}\")
set(first \"${arg_FIRST}\")
set(folder \"${CMAKE_CURRENT_BINARY_DIR}\")
include(\"${QXBC_DISCOVER_SCRIPT}\")
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${included}")
endfunction()
