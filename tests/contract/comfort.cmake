# Hosts with the comfort header: natively, in the Microsoft ABI, and with MinGW for the same DLL.
add_library(contract_three_exports MODULE ThreeExports.cpp)
target_link_libraries(contract_three_exports PRIVATE qxbc_options)
add_executable(contract_comfort_host ComfortHost.cpp ComfortImages.cpp ComfortStore.cpp)
target_include_directories(contract_comfort_host PRIVATE "${PROJECT_SOURCE_DIR}/include")
target_link_libraries(contract_comfort_host PRIVATE qxbc_options ${CMAKE_DL_LIBS})
add_dependencies(contract_comfort_host QX_BACKGROUNDCORRECTION contract_three_exports)

function(add_comfort_test name)
  file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/${name}") # they write files of the same names
  add_test(NAME contract.${name}
    COMMAND ${ARGN} "$<TARGET_FILE:QX_BACKGROUNDCORRECTION>" "$<TARGET_FILE:contract_three_exports>"
    WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/${name}")
  set_tests_properties(contract.${name} PROPERTIES TIMEOUT 300)
endfunction()
add_comfort_test(comfort_host contract_comfort_host)

if(QXBC_MSVC_ABI_DIRECTORY)
  set(host "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/contract_comfort_mingw_host.exe")
  set(sources ComfortHost.cpp ComfortImages.cpp ComfortStore.cpp)
  list(TRANSFORM sources PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/include/*.h*")
  add_custom_command(OUTPUT "${host}"
    COMMAND "${QXBC_MINGW_CXX}" -std=c++17 -O1 -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Werror -static
      "-I${PROJECT_SOURCE_DIR}/include" ${sources} -o "${host}"
    DEPENDS ${sources} ${headers} "${CMAKE_CURRENT_SOURCE_DIR}/ComfortChecks.h" "${CMAKE_CURRENT_SOURCE_DIR}/Checks.h"
    COMMENT "Building a host with the comfort header with MinGW"
    VERBATIM)
  add_custom_target(contract_comfort_mingw_host ALL DEPENDS "${host}")
  add_comfort_test(comfort_mingw_host "${CMAKE_CROSSCOMPILING_EMULATOR}" "${host}")
endif()

# The compilers that hosts may have, from the oldest standard to the newest. Once is enough: none of it depends on what
# this build is made with.
if(NOT CMAKE_CROSSCOMPILING AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize|--coverage")
  set(warnings -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wcast-align -Wformat=2
    -Wnon-virtual-dtor -Werror)
  foreach(compiler g++ clang++-19 x86_64-w64-mingw32-g++-posix)
    find_program(QXBC_COMFORT_TEST_${compiler} ${compiler})
    if(QXBC_COMFORT_TEST_${compiler})
      set(more ${warnings})
      if(compiler MATCHES "^g")
        list(PREPEND more -Weffc++)
      endif()
      foreach(standard 17 23)
        add_test(NAME contract.comfort_header.${compiler}.c++${standard}
          COMMAND "${QXBC_COMFORT_TEST_${compiler}}" -std=c++${standard} ${more} -fsyntax-only
            "-I${PROJECT_SOURCE_DIR}/include" "${CMAKE_CURRENT_SOURCE_DIR}/ComfortImages.cpp")
      endforeach()
    endif()
  endforeach()
endif()
