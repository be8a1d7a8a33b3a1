#include "MemoryFiles.h"

#include "platform/FolderSearch.h"
#include "platform/RawFile.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <set>

namespace {

using MemoryFiles::TBytes;

struct TStream {
    std::shared_ptr<TBytes> bytes; // a stream keeps the file that it opened, also when the path is written anew
    std::uint64_t position;
};

std::map<std::string, std::shared_ptr<TBytes>> files; // by path with "/"
std::set<std::string> folders;
unsigned int openStreams = 0;

std::string Normal(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

bool IsFolder(const std::string& normalPath)
{
    return normalPath.empty() || folders.count(normalPath) != 0;
}

std::string FolderOf(const std::string& normalPath)
{
    const std::string::size_type slash = normalPath.rfind('/');
    return slash == std::string::npos ? std::string() : normalPath.substr(0, slash);
}

std::string NameOf(const std::string& normalPath)
{
    return normalPath.substr(normalPath.rfind('/') + 1);
}

TStream* Stream(Platform::TRawFile* file)
{
    return reinterpret_cast<TStream*>(file);
}

Platform::TRawFile* Opened(const std::shared_ptr<TBytes>& bytes)
{
    ++openStreams;
    return reinterpret_cast<Platform::TRawFile*>(new TStream{bytes, 0});
}

} // namespace

namespace MemoryFiles {

void Clear()
{
    files.clear();
    folders.clear();
}

void MakeFolder(const std::string& path)
{
    folders.insert(Normal(path));
}

void Put(const std::string& path, const TBytes& bytes)
{
    files[Normal(path)] = std::make_shared<TBytes>(bytes);
}

const TBytes* Find(const std::string& path)
{
    const auto found = files.find(Normal(path));
    return found != files.end() ? found->second.get() : nullptr;
}

std::vector<std::string> Paths()
{
    std::vector<std::string> paths;
    for (const auto& file : files) {
        paths.push_back(file.first);
    }
    return paths;
}

bool CanBeWritten(const std::string& path)
{
    const std::string normalPath = Normal(path);
    return !IsFolder(normalPath) && !NameOf(normalPath).empty() && IsFolder(FolderOf(normalPath));
}

unsigned int OpenStreams()
{
    return openStreams;
}

} // namespace MemoryFiles

namespace Platform {

TRawFile* RawOpenForReading(const char* path) noexcept
{
    const auto found = path != nullptr ? files.find(Normal(path)) : files.end();
    return found != files.end() ? Opened(found->second) : nullptr;
}

TRawFile* RawOpenForWriting(const char* path) noexcept
{
    if (path == nullptr || !MemoryFiles::CanBeWritten(path)) {
        return nullptr;
    }
    const auto bytes = std::make_shared<TBytes>();
    files[Normal(path)] = bytes;
    return Opened(bytes);
}

std::size_t RawRead(TRawFile* file, void* bytes, std::size_t length) noexcept
{
    TStream* const stream = Stream(file);
    const std::uint64_t size = stream->bytes->size();
    const std::uint64_t rest = stream->position < size ? size - stream->position : 0;
    const std::size_t moved = static_cast<std::size_t>(std::min<std::uint64_t>(length, rest));
    if (moved > 0) {
        std::memcpy(bytes, stream->bytes->data() + stream->position, moved);
        stream->position += moved;
    }
    return moved;
}

std::size_t RawWrite(TRawFile* file, const void* bytes, std::size_t length) noexcept
{
    const unsigned char* const begin = static_cast<const unsigned char*>(bytes);
    if (length > 0) {
        Stream(file)->bytes->insert(Stream(file)->bytes->end(), begin, begin + length);
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
    return Stream(file)->bytes->size();
}

bool RawClose(TRawFile* file) noexcept
{
    delete Stream(file);
    --openStreams;
    return true;
}

bool PathExists(const char* path) noexcept
{
    const std::string normalPath = Normal(path);
    return !normalPath.empty() && (IsFolder(normalPath) || files.count(normalPath) != 0);
}

bool RemoveFile(const char* path) noexcept
{
    return files.erase(Normal(path)) != 0;
}

struct TFolderSearch::TState {
    std::vector<std::u16string> names;
    std::size_t position = 0;
};

TFolderSearch::TFolderSearch(const std::u16string& specification) : state(new TState)
{
    std::string folder; // without the "*" and the separator before it, every character by its low byte
    for (std::size_t i = 0; i + 1 < specification.size(); ++i) {
        folder.push_back(static_cast<char>(static_cast<unsigned char>(specification[i] & 0xFF)));
    }
    folder = Normal(folder);
    if (!folder.empty()) {
        folder.pop_back();
    }
    if (!IsFolder(folder)) {
        return;
    }
    std::set<std::string> narrowNames = {".", ".."};
    for (const auto& file : files) {
        if (FolderOf(file.first) == folder) {
            narrowNames.insert(NameOf(file.first));
        }
    }
    for (const std::string& path : folders) {
        if (FolderOf(path) == folder) {
            narrowNames.insert(NameOf(path));
        }
    }
    for (const std::string& narrow : narrowNames) {
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
