include("${CMAKE_CURRENT_LIST_DIR}/WindowsLibraries.cmake")
qxbc_windows_library(TIFF::TIFF libtiff.a z)
set(TIFF_FOUND TRUE)
