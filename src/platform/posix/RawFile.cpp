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

bool IsNullDevice(const struct stat& status)
{
    struct stat null = {};
    return S_ISCHR(status.st_mode) && stat("/dev/null", &null) == 0 && S_ISCHR(null.st_mode) &&
           null.st_rdev == status.st_rdev;
}

bool IsReadable(int, const struct stat& status)
{
    return S_ISREG(status.st_mode) || IsNullDevice(status);
}

// A device that is always full is written to like a disk that is.
bool IsWritable(int descriptor, const struct stat& status)
{
    return !S_ISFIFO(status.st_mode) && !S_ISSOCK(status.st_mode) && isatty(descriptor) == 0;
}

// Not waiting for the other end lets a pipe be opened, recognised and refused.
TRawFile* Open(const char* path, int flags, const char* mode, bool (*isAccepted)(int, const struct stat&)) noexcept
{
    constexpr mode_t kAsTheProcessSays = 0666;
    const TNativePath native(path);
    const int descriptor =
        native.IsValid() ? open(native.Text(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, kAsTheProcessSays) : -1;
    if (descriptor < 0) {
        return nullptr;
    }
    struct stat status = {};
    std::FILE* file = nullptr;
    if (fstat(descriptor, &status) == 0 && isAccepted(descriptor, status) &&
        fcntl(descriptor, F_SETFL, 0) == 0) { // from here on reads and writes are whole
        file = fdopen(descriptor, mode);
    }
    if (file == nullptr) {
        close(descriptor);
    }
    return reinterpret_cast<TRawFile*>(file);
}
} // namespace

TRawFile* RawOpenForReading(const char* path) noexcept
{
    return Open(path, O_RDONLY, "rb", IsReadable);
}

TRawFile* RawOpenForWriting(const char* path) noexcept
{
    return Open(path, O_WRONLY | O_CREAT | O_TRUNC, "wb", IsWritable);
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
