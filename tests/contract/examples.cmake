# The examples in C++, as the checkout has them: natively, in the Microsoft ABI, and with MinGW for the same DLL. The
# tests of packages build them by the commands of examples/README.md.
include(example-outputs.cmake)

function(add_example_test name example)
  file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/${name}") # one of them writes files
  add_test(NAME contract.example.${name} COMMAND ${ARGN} WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/${name}")
  set_tests_properties(contract.example.${name} PROPERTIES TIMEOUT 300 PASS_REGULAR_EXPRESSION "${${example}_SAYS}")
endfunction()

file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/include/*.h*")
set(library "$<TARGET_FILE:QX_BACKGROUNDCORRECTION>")
foreach(example minimal_host host_by_slot host_with_delegate offline_store_host)
  set(source "${PROJECT_SOURCE_DIR}/examples/${example}.cpp")
  add_executable(contract_example_${example} "${source}")
  target_include_directories(contract_example_${example} PRIVATE "${PROJECT_SOURCE_DIR}/include")
  target_link_libraries(contract_example_${example} PRIVATE qxbc_options ${CMAKE_DL_LIBS})
  add_dependencies(contract_example_${example} QX_BACKGROUNDCORRECTION)
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize" AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # A host that calls by slot has no types for what it calls.
    target_compile_options(contract_example_${example} PRIVATE -fno-sanitize=function)
  endif()
  add_example_test(${example} ${example} contract_example_${example} "${library}")

  if(QXBC_MSVC_ABI_DIRECTORY)
    set(program "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${example}_mingw.exe")
    add_custom_command(OUTPUT "${program}"
      COMMAND "${QXBC_MINGW_CXX}" -std=c++17 -O1 -Wall -Wextra -Wpedantic -Werror -static
        "-I${PROJECT_SOURCE_DIR}/include" "${source}" -o "${program}"
      DEPENDS "${source}" ${headers}
      COMMENT "Building ${example} with MinGW"
      VERBATIM)
    add_custom_target(contract_example_${example}_mingw ALL DEPENDS "${program}")
    add_example_test(${example}_mingw ${example} "${CMAKE_CROSSCOMPILING_EMULATOR}" "${program}" "${library}")
  endif()
endforeach()

# On OpenCL's own loader, and a device that is the processor itself (Debian's pocl). A sanitizer would test that.
if(NOT WIN32 AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  find_path(QXBC_OPENCL_INCLUDE CL/opencl.hpp)
  find_library(QXBC_OPENCL OpenCL)
  if(QXBC_OPENCL_INCLUDE AND QXBC_OPENCL)
    add_executable(contract_example_opencl_host "${PROJECT_SOURCE_DIR}/examples/opencl_host.cpp")
    target_include_directories(contract_example_opencl_host PRIVATE "${PROJECT_SOURCE_DIR}/include")
    target_include_directories(contract_example_opencl_host SYSTEM PRIVATE "${QXBC_OPENCL_INCLUDE}")
    target_link_libraries(contract_example_opencl_host PRIVATE qxbc_options "${QXBC_OPENCL}" ${CMAKE_DL_LIBS})
    add_dependencies(contract_example_opencl_host QX_BACKGROUNDCORRECTION)
    add_example_test(opencl_host opencl_host contract_example_opencl_host "${library}" cpu)
    set_tests_properties(contract.example.opencl_host PROPERTIES
      ENVIRONMENT "POCL_CACHE_DIR=${CMAKE_CURRENT_BINARY_DIR}/opencl_host/kernels")
  else() # seen among what was skipped
    add_test(NAME contract.example.opencl_host
      COMMAND sh -c "echo 'skipped: no OpenCL (opencl-clhpp-headers, ocl-icd-opencl-dev, pocl-opencl-icd)'; exit 77")
    set_tests_properties(contract.example.opencl_host PROPERTIES SKIP_RETURN_CODE 77)
  endif()
endif()
