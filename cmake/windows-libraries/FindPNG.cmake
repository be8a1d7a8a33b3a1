include("${CMAKE_CURRENT_LIST_DIR}/WindowsLibraries.cmake")
qxbc_windows_library(PNG::PNG libpng16.a z)
set(PNG_FOUND TRUE)
