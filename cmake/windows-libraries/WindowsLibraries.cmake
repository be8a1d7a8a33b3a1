# Where scripts/windows-libraries.sh has put the libraries for Windows: QXBC_WINDOWS_LIBRARIES. Asked at each
# configuration, for the script knows whether anything has changed.
if(NOT QXBC_WINDOWS_LIBRARIES)
  message(STATUS "Libraries for Windows: building what is not built yet")
  execute_process(COMMAND "${PROJECT_SOURCE_DIR}/scripts/windows-libraries.sh"
    OUTPUT_VARIABLE QXBC_WINDOWS_LIBRARIES OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()

# qxbc_windows_library(TARGET [ARCHIVE] [NEEDS...])
function(qxbc_windows_library target archive)
  if(TARGET ${target})
    return()
  endif()
  if(archive)
    add_library(${target} STATIC IMPORTED)
    set_target_properties(${target} PROPERTIES IMPORTED_LOCATION "${QXBC_WINDOWS_LIBRARIES}/lib/${archive}")
  else()
    add_library(${target} INTERFACE IMPORTED)
  endif()
  target_include_directories(${target} INTERFACE "${QXBC_WINDOWS_LIBRARIES}/include")
  target_link_libraries(${target} INTERFACE ${ARGN})
endfunction()
