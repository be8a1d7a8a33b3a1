#include "calibration/TWorkingFolder.h"

#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

TWorkingFolder::TWorkingFolder(const fs::path& folder) : old(fs::current_path())
{
    if (!folder.empty())
        fs::current_path(folder);
}

TWorkingFolder::~TWorkingFolder()
{
    std::error_code ignored;
    fs::current_path(old, ignored);
}

} // namespace workbench
