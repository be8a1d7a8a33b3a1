#include "MemoryFiles.h"

#include "platform/FolderSearch.h"
#include "platform/RawFile.h"

#include <algorithm>
#include <cstring>

namespace {

using Literal::TBytes;

struct TStream {
    TBytes bytes; // of its own: a stream keeps the file that it opened, also when the path is written anew
    std::uint64_t position = 0;
    std::optional<std::string> written; // where the bytes go when it is closed
};

TLiteralDisk memoryDisk("");
unsigned int openStreams = 0;

TStream* Stream(Platform::TRawFile* file)
{
    return reinterpret_cast<TStream*>(file);
}

Platform::TRawFile* Opened(const TStream& stream)
{
    ++openStreams;
    return reinterpret_cast<Platform::TRawFile*>(new TStream(stream));
}

} // namespace

namespace MemoryFiles {

TLiteralDisk& Disk()
{
    return memoryDisk;
}

void Clear()
{
    memoryDisk.nodes.clear();
}

void MakeFolder(const std::string& path)
{
    memoryDisk.nodes[*memoryDisk.Resolve(path)] = std::nullopt;
}

void Put(const std::string& path, const TBytes& bytes)
{
    memoryDisk.nodes[*memoryDisk.Resolve(path)] = bytes;
}

unsigned int OpenStreams()
{
    return openStreams;
}

} // namespace MemoryFiles

namespace Platform {

TRawFile* RawOpenForReading(const char* path) noexcept
{
    const auto bytes = path != nullptr ? memoryDisk.Read(path) : std::nullopt;
    return bytes.has_value() ? Opened({*bytes, 0, std::nullopt}) : nullptr;
}

TRawFile* RawOpenForWriting(const char* path) noexcept
{
    return path != nullptr && memoryDisk.Write(path, {}) ? Opened({{}, 0, path}) : nullptr;
}

std::size_t RawRead(TRawFile* file, void* bytes, std::size_t length) noexcept
{
    TStream* const stream = Stream(file);
    const std::uint64_t size = stream->bytes.size();
    const std::uint64_t rest = stream->position < size ? size - stream->position : 0;
    const std::size_t moved = static_cast<std::size_t>(std::min<std::uint64_t>(length, rest));
    if (moved > 0) {
        std::memcpy(bytes, stream->bytes.data() + stream->position, moved);
        stream->position += moved;
    }
    return moved;
}

std::size_t RawWrite(TRawFile* file, const void* bytes, std::size_t length) noexcept
{
    const unsigned char* const begin = static_cast<const unsigned char*>(bytes);
    if (length > 0) {
        Stream(file)->bytes.insert(Stream(file)->bytes.end(), begin, begin + length);
    }
    return length;
}

bool RawSeek(TRawFile* file, std::uint64_t offset) noexcept
{
    Stream(file)->position = offset;
    return true;
}

std::uint64_t RawSize(TRawFile* file) noexcept
{
    return Stream(file)->bytes.size();
}

bool RawClose(TRawFile* file) noexcept
{
    const TStream* const stream = Stream(file);
    if (stream->written.has_value()) {
        memoryDisk.Write(*stream->written, stream->bytes);
    }
    delete stream;
    --openStreams;
    return true;
}

bool PathExists(const char* path) noexcept
{
    return memoryDisk.Exists(path);
}

bool RemoveFile(const char* path) noexcept
{
    return memoryDisk.Remove(path);
}

struct TFolderSearch::TState {
    std::vector<std::u16string> names;
    std::size_t position = 0;
};

TFolderSearch::TFolderSearch(const std::u16string& specification) : state(new TState)
{
    std::string folder; // without the "*", every character by its low byte
    for (std::size_t i = 0; i + 1 < specification.size(); ++i) {
        folder.push_back(static_cast<char>(static_cast<unsigned char>(specification[i] & 0xFF)));
    }
    for (const std::string& narrow : memoryDisk.List(folder)) {
        std::u16string name;
        for (const char byte : narrow) {
            name.push_back(static_cast<unsigned char>(byte));
        }
        state->names.push_back(name);
    }
}

TFolderSearch::~TFolderSearch()
{
    delete state;
}

bool TFolderSearch::HasName() const noexcept
{
    return state->position < state->names.size();
}

const char16_t* TFolderSearch::Name() const noexcept
{
    return state->names[state->position].c_str();
}

void TFolderSearch::Next() noexcept
{
    ++state->position;
}

} // namespace Platform
