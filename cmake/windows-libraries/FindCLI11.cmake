include("${CMAKE_CURRENT_LIST_DIR}/WindowsLibraries.cmake")
qxbc_windows_library(CLI11::CLI11 "")
set(CLI11_FOUND TRUE)
