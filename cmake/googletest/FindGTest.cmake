# GoogleTest for cross-builds, for which there are no packages: built from the sources that Debian's package
# googletest installs. Gives the same targets as the native package: GTest::gtest, GTest::gtest_main, GTest::gmock,
# GTest::gmock_main.
function(qxbc_build_googletest)
  set(INSTALL_GTEST OFF)
  set(CMAKE_COMPILE_WARNING_AS_ERROR OFF) # not our code
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
  foreach(library gtest gtest_main gmock gmock_main)
    target_compile_options(${library} PRIVATE -O0) # optimising it takes longer than it saves
    if(NOT TARGET GTest::${library})
      add_library(GTest::${library} ALIAS ${library})
    endif()
  endforeach()
endfunction()

if(NOT TARGET GTest::gtest)
  qxbc_build_googletest()
endif()
set(GTest_FOUND TRUE)
