// The recursive lock of the operating system, under the names it has on Windows. The type is an opaque block so that
// no system header reaches the rest of the library.
#ifndef PLATFORM_CRITICALSECTION_H
#define PLATFORM_CRITICALSECTION_H

namespace Platform {

struct CRITICAL_SECTION {
    alignas(8) unsigned char storage[64];
};

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept;
void EnterCriticalSection(CRITICAL_SECTION* section) noexcept;
void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept;
void DeleteCriticalSection(CRITICAL_SECTION* section) noexcept;

} // namespace Platform

#endif
