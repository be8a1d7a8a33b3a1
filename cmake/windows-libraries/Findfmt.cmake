# Of its headers alone: Debian's library is for Linux.
include("${CMAKE_CURRENT_LIST_DIR}/WindowsLibraries.cmake")
qxbc_windows_library(fmt::fmt "")
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
set(fmt_FOUND TRUE)
