// Files as the system gives them, and nothing more. The fault tests put an implementation of their own in the place of
// this one; production code does not know about it.
//
// Paths are narrow text. Where the system separates folders with "/", every "\" in a path counts as one.
#ifndef PLATFORM_RAWFILE_H
#define PLATFORM_RAWFILE_H

#include <cstddef>
#include <cstdint>

namespace Platform {

struct TRawFile; // an open binary stream

// The null device opens like a file: an empty one to read, and one that takes everything. Folders cannot be opened, nor
// what could keep the caller waiting for ever, while it holds an object's lock: a pipe, a socket, a terminal.
//
// Opens an existing file for reading; null on failure. Every other device is a failure as well: it has no length that
// what it says of itself could be held against.
TRawFile* RawOpenForReading(const char* path) noexcept;
// Creates or empties a file for writing; null on failure. A device that is always full, say, fails when it is written.
TRawFile* RawOpenForWriting(const char* path) noexcept;
// Both give the number of bytes that were moved.
std::size_t RawRead(TRawFile* file, void* bytes, std::size_t length) noexcept;
std::size_t RawWrite(TRawFile* file, const void* bytes, std::size_t length) noexcept;
// Moves to an offset from the start; beyond the end is allowed.
bool RawSeek(TRawFile* file, std::uint64_t offset) noexcept;
// Length of a file open for reading.
std::uint64_t RawSize(TRawFile* file) noexcept;
// Closes in any case; false when bytes written before could not be stored.
bool RawClose(TRawFile* file) noexcept;

// Whether anything, a folder included, has this path.
bool PathExists(const char* path) noexcept;
// Removes a file, never a folder.
bool RemoveFile(const char* path) noexcept;

} // namespace Platform

#endif
