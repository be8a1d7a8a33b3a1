#include "platform/RawFile.h"

#include "platform/posix/NativePath.h"

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {

namespace {
std::FILE* Native(TRawFile* file)
{
    return reinterpret_cast<std::FILE*>(file);
}
} // namespace

TRawFile* RawOpenForReading(const char* path) noexcept
{
    // Not waiting for the other end lets a pipe be opened, recognised and refused.
    const TNativePath native(path);
    const int descriptor = native.IsValid() ? open(native.Text(), O_RDONLY | O_CLOEXEC | O_NONBLOCK) : -1;
    if (descriptor < 0) {
        return nullptr;
    }
    struct stat status = {};
    std::FILE* file = nullptr;
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        file = fdopen(descriptor, "rb");
    }
    if (file == nullptr) {
        close(descriptor);
    }
    return reinterpret_cast<TRawFile*>(file);
}

TRawFile* RawOpenForWriting(const char* path) noexcept
{
    const TNativePath native(path);
    return native.IsValid() ? reinterpret_cast<TRawFile*>(std::fopen(native.Text(), "wbe")) : nullptr;
}

std::size_t RawRead(TRawFile* file, void* bytes, std::size_t length) noexcept
{
    return std::fread(bytes, 1, length, Native(file));
}

std::size_t RawWrite(TRawFile* file, const void* bytes, std::size_t length) noexcept
{
    return std::fwrite(bytes, 1, length, Native(file));
}

bool RawSeek(TRawFile* file, std::uint64_t offset) noexcept
{
    return fseeko(Native(file), static_cast<off_t>(offset), SEEK_SET) == 0;
}

std::uint64_t RawSize(TRawFile* file) noexcept
{
    struct stat status = {};
    return fstat(fileno(Native(file)), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool RawClose(TRawFile* file) noexcept
{
    return std::fclose(Native(file)) == 0;
}

bool PathExists(const char* path) noexcept
{
    const TNativePath native(path);
    return native.IsValid() && access(native.Text(), F_OK) == 0;
}

bool RemoveFile(const char* path) noexcept
{
    const TNativePath native(path);
    return native.IsValid() && unlink(native.Text()) == 0;
}

} // namespace Platform
