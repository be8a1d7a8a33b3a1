# Cross-builds for 64-bit Windows in the Microsoft C++ ABI with Debian's packages alone: clang-19, lld-19, llvm-19,
# libc++-19-dev (C++ headers), libwine-dev (C and Windows headers), mingw-w64-x86-64-dev (kernel32's import library).
#
# Hosts of the library are built with Microsoft's compiler and call it by slot. Only this ABI gives a virtual destructor
# one slot; MinGW gives it two, so a MinGW build of the DLL would be called one operation off.
#
# What a compiled C++ runtime would otherwise bring is in cmake/msvc-abi/. It has no start-up that would run
# constructors, and no guards for function-local statics: the compiler turns away the former, the linker the latter.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_RC_COMPILER llvm-rc-19)
foreach(tool AR RANLIB MT NM OBJCOPY OBJDUMP READELF STRIP)
  string(TOLOWER "llvm-${tool}-19" program)
  find_program(CMAKE_${tool} NAMES ${program} REQUIRED)
endforeach()
find_program(CMAKE_LINKER NAMES lld-link-19 REQUIRED)
find_program(CMAKE_DLLTOOL NAMES llvm-dlltool-19 REQUIRED)

# A program cannot be linked before the runtime of this project has been built.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
# Neither the vendor's C runtime nor the usual Windows import libraries: msvc_abi_runtime names what is needed.
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
set(CMAKE_CXX_STANDARD_LIBRARIES "" CACHE STRING "Libraries linked into everything")

set(QXBC_MSVC_ABI_DIRECTORY "${CMAKE_CURRENT_LIST_DIR}/msvc-abi")
set(CMAKE_CXX_FLAGS_INIT "-fms-compatibility-version=19.30 -fexceptions -fcxx-exceptions -frtti")
# Our libc++ configuration stands before the package's, libc++ before the C headers that it wraps.
string(APPEND CMAKE_CXX_FLAGS_INIT " -nostdinc++ -nostdlibinc"
  " -isystem ${QXBC_MSVC_ABI_DIRECTORY}/include"
  " -isystem /usr/lib/llvm-19/include/c++/v1"
  " -isystem /usr/include/wine/wine/msvcrt"
  " -isystem /usr/include/wine/wine/windows"
  " -include ${QXBC_MSVC_ABI_DIRECTORY}/include/header_gaps.h")
string(APPEND CMAKE_CXX_FLAGS_INIT " -Werror=global-constructors")
# The same sources give the same bytes.
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-Xlinker /Brepro")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Xlinker /Brepro")

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/run-wine.sh")
