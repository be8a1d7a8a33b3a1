include("${CMAKE_CURRENT_LIST_DIR}/WindowsLibraries.cmake")
qxbc_windows_library(CFITSIO::CFITSIO libcfitsio.a z)
set(CFITSIO_FOUND TRUE)
