// The scoped lock guard of every interface operation.
#ifndef BOUNDARY_TAUTOVELMORCRITICALSECTION_H
#define BOUNDARY_TAUTOVELMORCRITICALSECTION_H

#include "platform/CriticalSection.h"

namespace VelmorUtility {

// Holds a critical section from construction to destruction, on every way out of a scope. Always a local object.
class TAutoVelmorCriticalSection {
public:
    explicit TAutoVelmorCriticalSection(Platform::CRITICAL_SECTION* criticalSection) noexcept : section(criticalSection)
    {
        Platform::EnterCriticalSection(section);
    }
    virtual ~TAutoVelmorCriticalSection() { Platform::LeaveCriticalSection(section); }
    TAutoVelmorCriticalSection(const TAutoVelmorCriticalSection&) = delete;
    TAutoVelmorCriticalSection& operator=(const TAutoVelmorCriticalSection&) = delete;

private:
    Platform::CRITICAL_SECTION* section; // never null
};

// Owns a critical section: made with the object that it serialises, removed last.
class TOwnedCriticalSection {
public:
    TOwnedCriticalSection() noexcept { Platform::InitializeCriticalSection(&section); }
    ~TOwnedCriticalSection() { Platform::DeleteCriticalSection(&section); }
    TOwnedCriticalSection(const TOwnedCriticalSection&) = delete;
    TOwnedCriticalSection& operator=(const TOwnedCriticalSection&) = delete;

    Platform::CRITICAL_SECTION* Get() noexcept { return &section; }

private:
    Platform::CRITICAL_SECTION section;
};

} // namespace VelmorUtility

#endif
