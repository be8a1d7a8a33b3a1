# Cross-builds for 64-bit ARM with Debian's g++-aarch64-linux-gnu, and runs what was built under qemu-user. What it shows:
# that the kernels are right, and vectorised, where the processor is another one, plain char is unsigned, and numbers
# that are too large become other integers.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc) # GoogleTest asks for one, and the hosts in C
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# find_package(GTest) builds it from its Debian source package.
list(APPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}/googletest")

find_program(QXBC_QEMU_ARM64 qemu-aarch64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR "${QXBC_QEMU_ARM64};-L;${CMAKE_FIND_ROOT_PATH}")
