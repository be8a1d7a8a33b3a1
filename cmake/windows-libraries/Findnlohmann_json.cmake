include("${CMAKE_CURRENT_LIST_DIR}/WindowsLibraries.cmake")
qxbc_windows_library(nlohmann_json::nlohmann_json "")
set(nlohmann_json_FOUND TRUE)
