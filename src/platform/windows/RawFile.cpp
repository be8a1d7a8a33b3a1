#include "platform/RawFile.h"

#include <cstdio>
#include <cstring>

#include <io.h>
#include <windows.h>

namespace Platform {

namespace {
FILE* Native(TRawFile* file)
{
    return reinterpret_cast<FILE*>(file);
}

HANDLE Handle(FILE* file)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
}

// The system knows the null device by its name, with folders before it or without: the full path of each is this one.
bool IsNullDevice(const char* path)
{
    constexpr char kNullDevice[] = "\\\\.\\nul";
    char fullPath[sizeof kNullDevice] = {};
    const DWORD length = GetFullPathNameA(path, sizeof fullPath, fullPath, nullptr);
    return length == sizeof kNullDevice - 1 && _stricmp(fullPath, kNullDevice) == 0;
}

bool IsReadable(const char* path, DWORD type)
{
    return type == FILE_TYPE_DISK || (type == FILE_TYPE_CHAR && IsNullDevice(path));
}

bool IsWritable(const char* path, DWORD type)
{
    return type != FILE_TYPE_PIPE && (type != FILE_TYPE_CHAR || IsNullDevice(path));
}

TRawFile* Open(const char* path, const char* mode, bool (*isAccepted)(const char*, DWORD)) noexcept
{
    FILE* file = path != nullptr ? fopen(path, mode) : nullptr;
    if (file != nullptr && !isAccepted(path, GetFileType(Handle(file)))) {
        fclose(file);
        file = nullptr;
    }
    return reinterpret_cast<TRawFile*>(file);
}
} // namespace

TRawFile* RawOpenForReading(const char* path) noexcept
{
    return Open(path, "rb", IsReadable);
}

TRawFile* RawOpenForWriting(const char* path) noexcept
{
    return Open(path, "wb", IsWritable);
}

std::size_t RawRead(TRawFile* file, void* bytes, std::size_t length) noexcept
{
    return fread(bytes, 1, length, Native(file));
}

std::size_t RawWrite(TRawFile* file, const void* bytes, std::size_t length) noexcept
{
    return fwrite(bytes, 1, length, Native(file));
}

bool RawSeek(TRawFile* file, std::uint64_t offset) noexcept
{
    return _fseeki64(Native(file), static_cast<long long>(offset), SEEK_SET) == 0;
}

std::uint64_t RawSize(TRawFile* file) noexcept
{
    LARGE_INTEGER size = {};
    return GetFileSizeEx(Handle(Native(file)), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

bool RawClose(TRawFile* file) noexcept
{
    return fclose(Native(file)) == 0;
}

bool PathExists(const char* path) noexcept
{
    return path != nullptr && _access(path, 0) == 0;
}

bool RemoveFile(const char* path) noexcept
{
    return path != nullptr && remove(path) == 0;
}

} // namespace Platform
