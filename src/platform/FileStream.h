// A binary file that closes itself.
#ifndef PLATFORM_FILESTREAM_H
#define PLATFORM_FILESTREAM_H

#include "platform/RawFile.h"

#include <cstddef>
#include <cstdint>

namespace Platform {

// Owns an open file, or none. Offsets are 64-bit. Never throws; a failed operation returns false.
class TFileStream {
public:
    TFileStream() noexcept = default;
    ~TFileStream() { Close(); }
    TFileStream(const TFileStream&) = delete;
    TFileStream& operator=(const TFileStream&) = delete;

    bool OpenForReading(const char* path) noexcept;
    bool OpenForWriting(const char* path) noexcept;
    bool IsOpen() const noexcept { return file != nullptr; }

    // Reads exactly `length` bytes. After a failure the position is where the bytes ended.
    bool Read(void* bytes, std::size_t length) noexcept;
    bool Write(const void* bytes, std::size_t length) noexcept;
    // Moves to an offset from the start of a file open for reading; beyond the end is allowed.
    bool SeekTo(std::uint64_t offset) noexcept;

    std::uint64_t Position() const noexcept { return position; }
    // Bytes from the position to the end of the file as it was when it was opened for reading.
    std::uint64_t Remaining() const noexcept { return position < size ? size - position : 0; }

    // False when bytes written before could not be stored after all. Nothing happens without an open file.
    bool Close() noexcept;

private:
    TRawFile* file = nullptr;
    std::uint64_t position = 0;
    std::uint64_t size = 0; // of a file open for reading
};

} // namespace Platform

#endif
