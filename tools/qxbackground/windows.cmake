# The workbench for Windows: MinGW's program, which loads the library that the preset windows builds by Microsoft's rules.
# One file, with nothing to be installed beside it but the library.
target_link_options(qxbackground PRIVATE -static -s -Wl,--no-insert-timestamp) # the same sources give the same bytes

foreach(target qxbackground_commands qxbackground)
  target_compile_options(${target} PRIVATE
    "SHELL:-include \"${CMAKE_CURRENT_SOURCE_DIR}/base/windows/Utf8Paths.h\"")
endforeach()

# What has to be told to whoever gets the program.
file(COPY "${QXBC_WINDOWS_LIBRARIES}/third-party-notices.txt" DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")

# The library goes beside the program, to be run and tested.
set(library_build "${PROJECT_SOURCE_DIR}/build/windows" CACHE PATH "Where the library is built that the workbench loads")
set(library "QX_BACKGROUNDCORRECTION.dll")
add_custom_target(qxbc_library_beside_workbench ALL
  COMMAND "${CMAKE_COMMAND}" -D "BUILD=${library_build}" -D "SOURCE=${PROJECT_SOURCE_DIR}" -D "NAME=${library}"
    -D "TO=$<TARGET_FILE_DIR:qxbackground>" -P "${CMAKE_CURRENT_SOURCE_DIR}/BringLibrary.cmake"
  COMMENT "Bringing ${library}"
  VERBATIM)
