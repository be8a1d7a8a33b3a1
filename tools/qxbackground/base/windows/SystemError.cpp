#include "base/windows/SystemError.h"

#include "base/windows/WideText.h"

#include <windows.h>

#include <string>

namespace workbench {

namespace {

class TWindowsCategory : public std::error_category {
public:
    const char* name() const noexcept override { return "windows"; }
    std::string message(int code) const override
    {
        wchar_t text[512] = L"";
        const DWORD length =
            FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                           nullptr, static_cast<DWORD>(code), 0, text, sizeof text / sizeof *text, nullptr);
        std::string narrow = Narrow(std::wstring(text, length));
        while (!narrow.empty() && (narrow.back() == ' ' || narrow.back() == '.'))
            narrow.pop_back();
        return narrow.empty() ? "error " + std::to_string(code) : narrow;
    }
};

} // namespace

std::error_code SystemError(unsigned long code)
{
    static const TWindowsCategory category;
    switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return std::make_error_code(std::errc::no_such_file_or_directory);
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
        return std::make_error_code(std::errc::permission_denied);
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return std::make_error_code(std::errc::file_exists);
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return std::make_error_code(std::errc::no_space_on_device);
    case ERROR_FILENAME_EXCED_RANGE:
        return std::make_error_code(std::errc::filename_too_long);
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
        return std::make_error_code(std::errc::not_enough_memory);
    default:
        return {static_cast<int>(code), category};
    }
}

std::error_code LastSystemError()
{
    return SystemError(GetLastError());
}

} // namespace workbench
