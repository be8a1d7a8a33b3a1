#include "threads/LockWatch.h"

#include "platform/CriticalSection.h"
#include "support/AllocationFaults.h"

#include <cstdlib>
#include <iterator>
#include <optional>
#include <thread>

// The system's own locks, compiled a second time under another namespace.
namespace RealPlatform {
struct CRITICAL_SECTION;
void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept;
void EnterCriticalSection(CRITICAL_SECTION* section) noexcept;
void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept;
void DeleteCriticalSection(CRITICAL_SECTION* section) noexcept;
} // namespace RealPlatform

namespace {

// Written by the watched thread alone, without memory: that is being counted.
LockWatch::TEvent events[10000];
std::size_t eventCount = 0;
std::size_t blocksBefore = 0;
std::optional<TAllocationFaults> counting;
thread_local bool isWatched = false;

std::size_t FreesSoFar()
{
    return blocksBefore + counting->Count() - TAllocationFaults::LiveBlocks();
}

void Note(const void* section, bool isTaken)
{
    if (!isWatched) {
        return;
    }
    if (eventCount == std::size(events)) {
        std::abort();
    }
    events[eventCount++] = {section, isTaken, counting->Count(), FreesSoFar()};
}

RealPlatform::CRITICAL_SECTION* Real(Platform::CRITICAL_SECTION* section)
{
    return reinterpret_cast<RealPlatform::CRITICAL_SECTION*>(section);
}

} // namespace

namespace Platform {

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept
{
    RealPlatform::InitializeCriticalSection(Real(section));
}

void EnterCriticalSection(CRITICAL_SECTION* section) noexcept
{
    RealPlatform::EnterCriticalSection(Real(section));
    Note(section, true);
}

void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept
{
    Note(section, false);
    RealPlatform::LeaveCriticalSection(Real(section));
}

void DeleteCriticalSection(CRITICAL_SECTION* section) noexcept
{
    RealPlatform::DeleteCriticalSection(Real(section));
}

} // namespace Platform

namespace LockWatch {

TWatch::TWatch()
{
    eventCount = 0;
    blocksBefore = TAllocationFaults::LiveBlocks();
    counting.emplace(0);
    isWatched = true;
}

TWatch::~TWatch()
{
    Stop();
}

std::vector<TEvent> TWatch::Stop()
{
    isWatched = false;
    if (!counting) {
        return {};
    }
    counting->Disarm();
    allocations = counting->Count();
    frees = FreesSoFar();
    counting.reset();
    return {events, events + eventCount};
}

} // namespace LockWatch
