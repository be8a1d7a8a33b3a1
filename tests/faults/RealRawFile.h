// The system's own file functions (platform/RawFile.h), compiled a second time under another namespace: what the
// functions that fail on purpose fall back on.
#ifndef TESTS_FAULTS_REALRAWFILE_H
#define TESTS_FAULTS_REALRAWFILE_H

#include <cstddef>
#include <cstdint>

namespace RealPlatform {

struct TRawFile;

TRawFile* RawOpenForReading(const char* path) noexcept;
TRawFile* RawOpenForWriting(const char* path) noexcept;
std::size_t RawRead(TRawFile* file, void* bytes, std::size_t length) noexcept;
std::size_t RawWrite(TRawFile* file, const void* bytes, std::size_t length) noexcept;
bool RawSeek(TRawFile* file, std::uint64_t offset) noexcept;
std::uint64_t RawSize(TRawFile* file) noexcept;
bool RawClose(TRawFile* file) noexcept;
bool PathExists(const char* path) noexcept;
bool RemoveFile(const char* path) noexcept;

} // namespace RealPlatform

#endif
