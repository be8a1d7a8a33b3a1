#include "base/TFileState.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace workbench {

namespace fs = std::filesystem;

TFileState StateOf(const fs::path& path)
{
    TFileState state;
    struct stat found;
    if (stat(path.c_str(), &found) != 0)
        return state;
    state.exists = true;
    state.device = found.st_dev;
    state.inode = found.st_ino;
    state.bytes = found.st_size;
    state.changedSeconds = found.st_mtim.tv_sec;
    state.changedNanoseconds = found.st_mtim.tv_nsec;
    return state;
}

std::error_code WriteProtection(const fs::path& path)
{
    struct stat found;
    if (stat(path.c_str(), &found) != 0)
        return {};
    if ((found.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
        return std::make_error_code(std::errc::permission_denied);
    return access(path.c_str(), W_OK) == 0 ? std::error_code() : std::error_code(errno, std::generic_category());
}

} // namespace workbench
