#include "base/TFileState.h"

#include "base/windows/TSystemHandle.h"

namespace workbench {

namespace fs = std::filesystem;

namespace {

std::uint64_t Joined(DWORD high, DWORD low)
{
    return (std::uint64_t{high} << 32) | low;
}

} // namespace

TFileState StateOf(const fs::path& path)
{
    TFileState state;
    // Only with this flag a folder can be looked at, too.
    const TSystemHandle file(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION found;
    if (!file.IsOpen() || GetFileInformationByHandle(file.Get(), &found) == 0)
        return state;
    constexpr std::uint64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kSecondsTo1970 = 11'644'473'600; // from 1601, when the system's clock starts
    const std::uint64_t changed = Joined(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime);
    state.exists = true;
    state.device = found.dwVolumeSerialNumber;
    state.inode = Joined(found.nFileIndexHigh, found.nFileIndexLow);
    state.bytes = static_cast<std::int64_t>(Joined(found.nFileSizeHigh, found.nFileSizeLow));
    state.changedSeconds = static_cast<std::int64_t>(changed / kTicksPerSecond) - kSecondsTo1970;
    state.changedNanoseconds = static_cast<std::int64_t>(changed % kTicksPerSecond * 100);
    return state;
}

std::error_code WriteProtection(const fs::path& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return {};
    const std::error_code denied = std::make_error_code(std::errc::permission_denied);
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0)
        return denied;
    const TSystemHandle file(path, GENERIC_WRITE);
    if (file.IsOpen())
        return {};
    const DWORD error = GetLastError();
    if (error == ERROR_WRITE_PROTECT)
        return std::make_error_code(std::errc::read_only_file_system);
    return error == ERROR_ACCESS_DENIED ? denied : std::error_code();
}

} // namespace workbench
