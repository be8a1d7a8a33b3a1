#ifndef QXBACKGROUND_BASE_WINDOWS_TSYSTEMHANDLE_H
#define QXBACKGROUND_BASE_WINDOWS_TSYSTEMHANDLE_H

#include <windows.h>

#include <filesystem>

namespace workbench {

// An open file, closed with this object.
class TSystemHandle {
public:
    // For `access`, beside all that others do with the file. `how` is one of CreateFile's ways (OPEN_EXISTING, ...).
    TSystemHandle(const std::filesystem::path& path, DWORD access, DWORD how = OPEN_EXISTING, DWORD flags = 0)
        : handle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, how,
                             flags, nullptr))
    {}
    ~TSystemHandle()
    {
        if (IsOpen())
            CloseHandle(handle);
    }
    TSystemHandle(const TSystemHandle&) = delete;
    TSystemHandle& operator=(const TSystemHandle&) = delete;

    bool IsOpen() const { return handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle; }

private:
    HANDLE handle;
};

} // namespace workbench

#endif
