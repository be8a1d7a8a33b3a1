#ifndef QXBACKGROUND_BASE_TFILESTATE_H
#define QXBACKGROUND_BASE_TFILESTATE_H

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace workbench {

// Which file a path leads to, and what tells whether it was changed.
struct TFileState {
    bool exists = false;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t bytes = 0;
    std::int64_t changedSeconds = 0; // since 1970
    std::int64_t changedNanoseconds = 0;

    bool SameFile(const TFileState& other) const
    {
        return exists && other.exists && device == other.device && inode == other.inode;
    }
    bool operator==(const TFileState& other) const
    {
        return exists == other.exists && device == other.device && inode == other.inode && bytes == other.bytes &&
               changedSeconds == other.changedSeconds && changedNanoseconds == other.changedNanoseconds;
    }
    bool operator!=(const TFileState& other) const { return !(*this == other); }
};
TFileState StateOf(const std::filesystem::path& path); // follows links

// Why an existing file may not be written to; nothing when it may. One without any write permission may not, even by an
// administrator.
std::error_code WriteProtection(const std::filesystem::path& path);

} // namespace workbench

#endif
