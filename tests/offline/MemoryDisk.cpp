#include "offline/MemoryDisk.h"

#include "platform/FolderSearch.h"
#include "platform/RawFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::size_t liveBytes = 0;
std::size_t bytesAtStart = 0;
std::size_t peakBytes = 0;
int diskDepth = 0; // the disk's own memory does not count

// While the disk works.
struct TDiskWork {
    TDiskWork() { ++diskDepth; }
    ~TDiskWork() { --diskDepth; }
};

// Before every block stands its size, 0 for the disk's.
constexpr std::size_t kHeaderBytes = alignof(std::max_align_t);

void* Allocate(std::size_t size) noexcept
{
    unsigned char* const block = static_cast<unsigned char*>(std::malloc(size + kHeaderBytes));
    if (block == nullptr) {
        return nullptr;
    }
    const std::size_t counted = diskDepth > 0 ? 0 : size;
    std::memcpy(block, &counted, sizeof counted);
    liveBytes += counted;
    peakBytes = std::max(peakBytes, liveBytes);
    return block + kHeaderBytes;
}

void Free(void* pointer) noexcept
{
    if (pointer != nullptr) {
        unsigned char* const block = static_cast<unsigned char*>(pointer) - kHeaderBytes;
        std::size_t counted = 0;
        std::memcpy(&counted, block, sizeof counted);
        liveBytes -= counted;
        std::free(block);
    }
}

std::string Spelled(const char* path)
{
    std::string text(path);
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

} // namespace

// clang-format off
void* operator new(std::size_t size) { if (void* const block = Allocate(size)) { return block; } throw std::bad_alloc(); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }
void operator delete[](void* block, std::size_t) noexcept { Free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Free(block); }
// clang-format on

TMemoryWatch::TMemoryWatch()
{
    bytesAtStart = liveBytes;
    peakBytes = liveBytes;
}

TMemoryWatch::~TMemoryWatch() = default;

std::size_t TMemoryWatch::PeakBytes() const
{
    return peakBytes - bytesAtStart;
}

void TMemoryDisk::Restart()
{
    const TDiskWork work;
    *this = TMemoryDisk();
}

void TMemoryDisk::ForgetUses()
{
    const TDiskWork work;
    uses.clear();
    listings = 0;
    existenceTests = 0;
}

TMemoryDisk& MemoryDisk()
{
    static TMemoryDisk disk;
    return disk;
}

namespace Platform {

struct TRawFile {
    std::string path;
    std::size_t position;
};

TRawFile* RawOpenForReading(const char* path) noexcept
{
    const TDiskWork work;
    TMemoryDisk& disk = MemoryDisk();
    const std::string name = Spelled(path);
    if (disk.files.count(name) == 0) {
        return nullptr;
    }
    ++disk.uses[name].readings;
    ++disk.openFiles;
    return new TRawFile{name, 0};
}

TRawFile* RawOpenForWriting(const char* path) noexcept
{
    const TDiskWork work;
    TMemoryDisk& disk = MemoryDisk();
    const std::string name = Spelled(path);
    disk.files[name].clear();
    ++disk.uses[name].writings;
    ++disk.openFiles;
    return new TRawFile{name, 0};
}

std::size_t RawRead(TRawFile* file, void* bytes, std::size_t length) noexcept
{
    const TDiskWork work;
    const std::vector<unsigned char>& content = MemoryDisk().files[file->path];
    const std::size_t begin = std::min(file->position, content.size());
    const std::size_t count = std::min(length, content.size() - begin);
    if (count > 0) {
        std::memcpy(bytes, content.data() + begin, count);
    }
    file->position += count;
    MemoryDisk().uses[file->path].bytesRead += count;
    return count;
}

std::size_t RawWrite(TRawFile* file, const void* bytes, std::size_t length) noexcept
{
    const TDiskWork work;
    TMemoryDisk& disk = MemoryDisk();
    const std::size_t count = std::min(length, disk.freeBytes);
    disk.freeBytes -= disk.freeBytes == SIZE_MAX ? 0 : count;
    std::vector<unsigned char>& content = disk.files[file->path];
    const unsigned char* const first = static_cast<const unsigned char*>(bytes);
    content.insert(content.end(), first, first + count);
    disk.uses[file->path].bytesWritten += count;
    return count;
}

bool RawSeek(TRawFile* file, std::uint64_t offset) noexcept
{
    file->position = static_cast<std::size_t>(offset);
    return true;
}

std::uint64_t RawSize(TRawFile* file) noexcept
{
    const TDiskWork work;
    return MemoryDisk().files[file->path].size();
}

bool RawClose(TRawFile* file) noexcept
{
    const TDiskWork work;
    --MemoryDisk().openFiles;
    delete file;
    return true;
}

bool PathExists(const char* path) noexcept
{
    const TDiskWork work;
    ++MemoryDisk().existenceTests;
    return MemoryDisk().files.count(Spelled(path)) != 0;
}

bool RemoveFile(const char* path) noexcept
{
    const TDiskWork work;
    return !MemoryDisk().refusesRemovals && MemoryDisk().files.erase(Spelled(path)) != 0;
}

struct TFolderSearch::TState {
    std::vector<std::u16string> names;
    std::size_t next;
};

TFolderSearch::TFolderSearch(const std::u16string& specification) : state(nullptr)
{
    const TDiskWork work;
    TMemoryDisk& disk = MemoryDisk();
    ++disk.listings;
    ++disk.openSearches;
    disk.specifications.push_back(specification);
    state = new TState{{}, 0};
    if (!disk.scriptedSearches.empty()) {
        state->names = disk.scriptedSearches.front();
        disk.scriptedSearches.erase(disk.scriptedSearches.begin());
        return;
    }
    const std::u16string folder = specification.substr(0, specification.size() - 1);
    for (const auto& file : disk.files) {
        const std::u16string path(file.first.begin(), file.first.end());
        if (path.compare(0, folder.size(), folder) == 0 && path.find(u'\\', folder.size()) == std::u16string::npos) {
            state->names.push_back(path.substr(folder.size()));
        }
    }
}

TFolderSearch::~TFolderSearch()
{
    const TDiskWork work;
    --MemoryDisk().openSearches;
    delete state;
}

bool TFolderSearch::HasName() const noexcept
{
    return state->next < state->names.size();
}

const char16_t* TFolderSearch::Name() const noexcept
{
    return state->names[state->next].c_str();
}

void TFolderSearch::Next() noexcept
{
    ++state->next;
}

} // namespace Platform
