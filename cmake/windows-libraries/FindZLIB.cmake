# Debian's package for MinGW; CMake's own module would take the import library of a DLL.
include("${CMAKE_CURRENT_LIST_DIR}/WindowsLibraries.cmake")
qxbc_windows_library(ZLIB::ZLIB "" z)
set(ZLIB_FOUND TRUE)
