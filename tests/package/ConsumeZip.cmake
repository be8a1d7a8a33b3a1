cmake_minimum_required(VERSION 3.25)
# Unpacks the ZIP for Windows and reads whether all is there that the docs name; then builds hosts with what is in it, and
# runs them under Wine: with MinGW by find_package, by pkg-config and by a plain command line, in C on the flat interface,
# and for Microsoft's ABI by find_package.
#   -D BUILD=...     the build that is packed, or
#   -D PACKAGES=...  the folder with the ZIP
#   -D SOURCE=... SCRATCH=... WINE=...
include("${CMAKE_CURRENT_LIST_DIR}/Unpacking.cmake")
file(REMOVE_RECURSE "${SCRATCH}")
file(MAKE_DIRECTORY "${SCRATCH}")
unpack(ZIP .zip 1)

# For each library the same files; the headers; the ways in; and something to read.
set(expected SHA256SUMS include/QX_BackgroundCorrection.h include/QX_BackgroundCorrection.hpp
  include/QX_BackgroundCorrection_C.h)
foreach(library QX_BACKGROUNDCORRECTION QX_BACKGROUNDCORRECTION_C)
  string(TOLOWER "${library}" lower)
  list(APPEND expected bin/${library}.dll bin/${library}.pdb lib/${library}.lib lib/lib${library}.dll.a
    lib/pkgconfig/${lower}.pc)
endforeach()
set(cmake lib/cmake/QX_BACKGROUNDCORRECTION/QX_BACKGROUNDCORRECTION)
list(APPEND expected ${cmake}Config.cmake ${cmake}ConfigVersion.cmake ${cmake}Targets.cmake)
set(docs share/doc/qx-backgroundcorrection)
foreach(document README.md CHANGELOG.md copyright docs/packages.md examples/minimal_host.cpp examples/c_host.c
    examples/CSharpHost.cs)
  list(APPEND expected ${docs}/${document})
endforeach()
foreach(file IN LISTS expected)
  if(NOT EXISTS "${prefix}/${file}")
    message(FATAL_ERROR "the ZIP lacks ${file}")
  endif()
endforeach()
# The checksums are those of all files but their own.
file(GLOB_RECURSE files RELATIVE "${prefix}" "${prefix}/*")
list(REMOVE_ITEM files SHA256SUMS)
file(STRINGS "${prefix}/SHA256SUMS" sums)
list(LENGTH files count)
expect_one("${sums}" "checksums" ${count})
run("${CMAKE_COMMAND}" -E chdir "${prefix}" sha256sum --check --quiet SHA256SUMS)

# Runs a host that finds the DLLs beside itself, or where WINEPATH says.
function(expect_host program)
  run("${WINE}" "${program}" ${ARGN})
  expect_corrected("${output}")
endfunction()

set(compiler x86_64-w64-mingw32)
foreach(way mingw msvc-abi)
  set(build "${SCRATCH}/${way}")
  if(way STREQUAL "mingw")
    set(options "-DCMAKE_TOOLCHAIN_FILE=${CMAKE_CURRENT_LIST_DIR}/consumer/mingw.cmake" "-DCMAKE_PREFIX_PATH=${prefix}")
  else() # this toolchain looks for packages below its own root only
    set(options "-DCMAKE_TOOLCHAIN_FILE=${SOURCE}/cmake/toolchain-windows-msvc-abi.cmake"
      "-DQX_BACKGROUNDCORRECTION_DIR=${prefix}/lib/cmake/QX_BACKGROUNDCORRECTION")
  endif()
  run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/consumer" -B "${build}" -G Ninja -DCMAKE_BUILD_TYPE=Release
    "-DPACKAGE_FOLDER=${prefix}" ${options})
  run("${CMAKE_COMMAND}" --build "${build}")
  expect_host("${build}/consumer.exe")
  expect_host("${build}/c_consumer.exe")
endforeach()

# From here on the DLLs stay in the ZIP's folder.
execute_process(COMMAND "${WINE}" winepath -w "${prefix}/bin" OUTPUT_VARIABLE windows_path
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(ENV{WINEPATH} "${windows_path}")
file(GLOB descriptions "${prefix}/lib/pkgconfig/*.pc")
foreach(host "qx_backgroundcorrection;${compiler}-g++-posix;${CMAKE_CURRENT_LIST_DIR}/consumer/Consumer.cpp"
    "qx_backgroundcorrection_c;${compiler}-gcc-posix;${prefix}/${docs}/examples/c_host.c")
  list(POP_FRONT host name)
  ask_pkg_config(${name} "${descriptions}")
  run(${host} "-DPACKAGE_VERSION=\"${modversion}\"" -static -o "${SCRATCH}/${name}.exe" ${cflags} ${libs})
  expect_host("${SCRATCH}/${name}.exe")
endforeach()
run(${compiler}-g++-posix -std=c++98 -static "-I${prefix}/include" "${CMAKE_CURRENT_LIST_DIR}/consumer/Consumer.cpp"
  "-L${prefix}/lib" -lQX_BACKGROUNDCORRECTION -o "${SCRATCH}/plain.exe")
expect_host("${SCRATCH}/plain.exe")
run(${compiler}-gcc-posix -std=c89 -static "-I${prefix}/include" "${prefix}/${docs}/examples/c_host.c"
  "-L${prefix}/lib" -lQX_BACKGROUNDCORRECTION_C -o "${SCRATCH}/plain_c.exe")
expect_host("${SCRATCH}/plain_c.exe")
# Loaded at run time, as most hosts do; the comfort header has no other folders searched than the host's own.
run(${compiler}-g++-posix -std=c++17 -static "-I${prefix}/include" "${prefix}/${docs}/examples/minimal_host.cpp"
  -o "${SCRATCH}/minimal_host.exe")
expect_host("${SCRATCH}/minimal_host.exe" "${windows_path}\\QX_BACKGROUNDCORRECTION.dll")
