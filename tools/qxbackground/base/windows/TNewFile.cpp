#include "base/TNewFile.h"

#include "base/Interrupts.h"
#include "base/windows/SystemError.h"
#include "base/windows/TSystemHandle.h"

#include <aclapi.h>

#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

namespace workbench {

namespace fs = std::filesystem;

namespace {

constexpr auto kMovePatience = std::chrono::seconds(10);
constexpr auto kPause = std::chrono::milliseconds(5);

// Somebody who reads a file, a virus scanner for one, keeps it from being replaced or moved for as long.
std::error_code MovePatiently(const fs::path& from, const fs::path& to, DWORD flags)
{
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        if (MoveFileExW(from.c_str(), to.c_str(), flags) != 0)
            return {};
        const DWORD error = GetLastError();
        const bool mayPass = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!mayPass || Interrupted() || std::chrono::steady_clock::now() - start > kMovePatience)
            return SystemError(error);
        std::this_thread::sleep_for(kPause);
    }
}

// Who may do what with a file.
struct TAccess {
    explicit TAccess(const fs::path& file)
    {
        std::wstring name = file.native();
        if (GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                                  nullptr, &descriptor) != ERROR_SUCCESS)
            return;
        SECURITY_DESCRIPTOR_CONTROL control = 0;
        DWORD revision = 0;
        GetSecurityDescriptorControl(descriptor, &control, &revision);
        if ((control & SE_DACL_PROTECTED) != 0) // against what the folder hands down
            inheritance = PROTECTED_DACL_SECURITY_INFORMATION;
    }
    ~TAccess() { LocalFree(descriptor); }
    TAccess(const TAccess&) = delete;
    TAccess& operator=(const TAccess&) = delete;

    bool SameAs(const TAccess& other) const
    {
        return other.list != nullptr && inheritance == other.inheritance && list->AclSize == other.list->AclSize &&
               std::memcmp(list, other.list, list->AclSize) == 0;
    }

    PACL list = nullptr; // a part of the descriptor
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    SECURITY_INFORMATION inheritance = UNPROTECTED_DACL_SECURITY_INFORMATION;
};

} // namespace

void TakeAfter(const fs::path& file, const fs::path& old)
{
    const DWORD attributes = GetFileAttributesW(old.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return;
    // A failure leaves what the folder gives its files.
    constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    SetFileAttributesW(file.c_str(), (attributes & kKept) | FILE_ATTRIBUTE_ARCHIVE);
    const TAccess wanted(old), given(file);
    if (wanted.list == nullptr || wanted.SameAs(given))
        return;
    std::wstring name = file.native();
    SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | wanted.inheritance, nullptr, nullptr,
                          wanted.list, nullptr);
}

std::error_code FlushFile(const fs::path& file)
{
    const TSystemHandle opened(file, GENERIC_WRITE);
    return opened.IsOpen() && FlushFileBuffers(opened.Get()) != 0 ? std::error_code() : LastSystemError();
}

std::error_code MoveOver(const fs::path& from, const fs::path& to)
{
    return MovePatiently(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

// Programs and the library open files here in a way that lets nobody remove them meanwhile, so that there is no file
// without a name: it has the hidden one until it gets its own.
TNewFile::TNewFile(const fs::path& hiddenName) : hidden(hiddenName), path(hiddenName.string())
{
    const TSystemHandle made(hidden, GENERIC_WRITE, CREATE_NEW);
    if (!made.IsOpen())
        throw std::system_error(LastSystemError());
    named = true;
    RemoveWhenKilled(path);
}

TNewFile::~TNewFile()
{
    if (named)
        DeleteFileW(hidden.c_str());
    KeepWhenKilled(path);
}

void TNewFile::TakeAfter(const fs::path& old)
{
    workbench::TakeAfter(hidden, old);
}

std::error_code TNewFile::Flush()
{
    return FlushFile(hidden);
}

std::error_code TNewFile::Appear(const fs::path& target)
{
    const std::error_code error = MovePatiently(hidden, target, MOVEFILE_WRITE_THROUGH);
    named = static_cast<bool>(error);
    return error;
}

std::error_code TNewFile::Replace(const fs::path& target)
{
    const std::error_code error = MoveOver(hidden, target);
    named = static_cast<bool>(error);
    return error;
}

std::error_code TNewFile::CannotGrow() const
{
    const TSystemHandle opened(hidden, FILE_APPEND_DATA);
    if (!opened.IsOpen())
        return LastSystemError();
    // More than what a file system may have left over in its last block.
    const std::vector<char> more(1 << 20);
    DWORD written = 0;
    if (WriteFile(opened.Get(), more.data(), static_cast<DWORD>(more.size()), &written, nullptr) == 0)
        return LastSystemError();
    return written == more.size() ? std::error_code() : std::make_error_code(std::errc::no_space_on_device);
}

} // namespace workbench
