#include "platform/RawFile.h"

#include <cstdio>

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
} // namespace

TRawFile* RawOpenForReading(const char* path) noexcept
{
    FILE* file = path != nullptr ? fopen(path, "rb") : nullptr;
    if (file != nullptr && GetFileType(Handle(file)) != FILE_TYPE_DISK) {
        fclose(file);
        file = nullptr;
    }
    return reinterpret_cast<TRawFile*>(file);
}

TRawFile* RawOpenForWriting(const char* path) noexcept
{
    return path != nullptr ? reinterpret_cast<TRawFile*>(fopen(path, "wb")) : nullptr;
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
