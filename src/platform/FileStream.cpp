#include "platform/FileStream.h"

namespace Platform {

bool TFileStream::OpenForReading(const char* path) noexcept
{
    Close();
    file = RawOpenForReading(path);
    position = 0;
    size = file != nullptr ? RawSize(file) : 0;
    return file != nullptr;
}

bool TFileStream::OpenForWriting(const char* path) noexcept
{
    Close();
    file = RawOpenForWriting(path);
    position = 0;
    size = 0;
    return file != nullptr;
}

bool TFileStream::Read(void* bytes, std::size_t length) noexcept
{
    const std::size_t moved = RawRead(file, bytes, length);
    position += moved;
    return moved == length;
}

bool TFileStream::Write(const void* bytes, std::size_t length) noexcept
{
    const std::size_t moved = RawWrite(file, bytes, length);
    position += moved;
    return moved == length;
}

bool TFileStream::SeekTo(std::uint64_t offset) noexcept
{
    if (offset == position) {
        return true;
    }
    if (!RawSeek(file, offset)) {
        return false;
    }
    position = offset;
    return true;
}

bool TFileStream::Close() noexcept
{
    if (file == nullptr) {
        return true;
    }
    TRawFile* const closing = file;
    file = nullptr;
    return RawClose(closing);
}

} // namespace Platform
