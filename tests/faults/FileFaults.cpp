#include "faults/FileFaults.h"

#include "faults/RealRawFile.h"
#include "platform/RawFile.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace {

struct TCurrent {
    TFileFaultPlan plan;
    std::array<std::uint64_t, kFileOperationCount> counts = {};
    std::uint64_t diskLeft = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t writtenBytes = 0;
    std::function<void(std::uint64_t)> beforeWrite;
    bool fired = false;
};

// Nothing here allocates: memory may be made to run out at the same time.
TCurrent current;
unsigned int openStreams = 0;

bool IsToFail(TFileOperation operation)
{
    const std::uint64_t number = ++current.counts[static_cast<std::size_t>(operation)];
    const TFileFaultPlan& plan = current.plan;
    const bool fails =
        operation == plan.operation && plan.failAt > 0 &&
        (number == plan.failAt || (plan.repeat == TFileFaultRepeat::kFromThenOn && number > plan.failAt));
    current.fired = current.fired || fails;
    return fails;
}

RealPlatform::TRawFile* Real(Platform::TRawFile* file)
{
    return reinterpret_cast<RealPlatform::TRawFile*>(file);
}

Platform::TRawFile* Opened(RealPlatform::TRawFile* file)
{
    openStreams += file != nullptr ? 1u : 0u;
    return reinterpret_cast<Platform::TRawFile*>(file);
}

// The length of a read or write that may have to fail.
std::size_t AllowedLength(TFileOperation operation, std::size_t length)
{
    return IsToFail(operation) ? std::min(length > 0 ? length - 1 : 0, current.plan.movedBytes) : length;
}

} // namespace

TFileFaults::TFileFaults(const TFileFaultPlan& plan)
{
    current = TCurrent{};
    current.plan = plan;
}

TFileFaults::~TFileFaults()
{
    current = TCurrent{};
}

void TFileFaults::LimitDisk(std::uint64_t bytes)
{
    current.diskLeft = bytes;
}

void TFileFaults::BeforeWrite(std::function<void(std::uint64_t)> callback)
{
    current.beforeWrite = std::move(callback);
}

bool TFileFaults::Fired() const
{
    return current.fired;
}

std::uint64_t TFileFaults::Count(TFileOperation operation) const
{
    return current.counts[static_cast<std::size_t>(operation)];
}

unsigned int TFileFaults::OpenStreams()
{
    return openStreams;
}

namespace Platform {

TRawFile* RawOpenForReading(const char* path) noexcept
{
    return IsToFail(TFileOperation::kOpenForReading) ? nullptr : Opened(RealPlatform::RawOpenForReading(path));
}

TRawFile* RawOpenForWriting(const char* path) noexcept
{
    return IsToFail(TFileOperation::kOpenForWriting) ? nullptr : Opened(RealPlatform::RawOpenForWriting(path));
}

std::size_t RawRead(TRawFile* file, void* bytes, std::size_t length) noexcept
{
    const std::size_t allowed = AllowedLength(TFileOperation::kRead, length);
    return allowed > 0 ? RealPlatform::RawRead(Real(file), bytes, allowed) : 0;
}

std::size_t RawWrite(TRawFile* file, const void* bytes, std::size_t length) noexcept
{
    const std::size_t planned = AllowedLength(TFileOperation::kWrite, length);
    if (current.beforeWrite) {
        current.beforeWrite(current.writtenBytes);
    }
    const std::size_t allowed = static_cast<std::size_t>(std::min<std::uint64_t>(planned, current.diskLeft));
    if (allowed < planned) {
        current.fired = true;
    }
    const std::size_t written = allowed > 0 ? RealPlatform::RawWrite(Real(file), bytes, allowed) : 0;
    current.diskLeft -= written;
    current.writtenBytes += written;
    return written;
}

bool RawSeek(TRawFile* file, std::uint64_t offset) noexcept
{
    return !IsToFail(TFileOperation::kSeek) && RealPlatform::RawSeek(Real(file), offset);
}

std::uint64_t RawSize(TRawFile* file) noexcept
{
    return RealPlatform::RawSize(Real(file));
}

// A stream is closed in any case: a failure says that its bytes are not all stored.
bool RawClose(TRawFile* file) noexcept
{
    --openStreams;
    const bool closed = RealPlatform::RawClose(Real(file));
    return !IsToFail(TFileOperation::kClose) && closed;
}

bool PathExists(const char* path) noexcept
{
    return !IsToFail(TFileOperation::kPathExists) && RealPlatform::PathExists(path);
}

bool RemoveFile(const char* path) noexcept
{
    return !IsToFail(TFileOperation::kRemove) && RealPlatform::RemoveFile(path);
}

} // namespace Platform
