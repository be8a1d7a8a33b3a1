# Cross-builds for 64-bit Windows with MinGW. Only for the unit tests of what lies behind the interface: GoogleTest
# needs a whole C++ runtime, which the Microsoft ABI build does not have. The DLL for hosts is never made this way, see
# toolchain-windows-msvc-abi.cmake.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix) # GoogleTest asks for one
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# One self-contained program, and arithmetic in SSE registers: the old register stack rounds differently.
set(CMAKE_CXX_FLAGS_INIT "-mfpmath=sse -msse2")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# find_package(GTest) builds it from its Debian source package.
list(APPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}/googletest")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/run-wine.sh")
