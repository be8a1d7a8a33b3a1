#include "platform/CriticalSection.h"

#include <windows.h>

namespace Platform {

static_assert(sizeof(::CRITICAL_SECTION) <= sizeof(CRITICAL_SECTION), "the opaque block must hold the section");
static_assert(alignof(::CRITICAL_SECTION) <= alignof(CRITICAL_SECTION), "the opaque block must be aligned for it");

namespace {
::CRITICAL_SECTION* Native(CRITICAL_SECTION* section)
{
    return reinterpret_cast<::CRITICAL_SECTION*>(section->storage);
}
} // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept
{
    ::InitializeCriticalSection(Native(section));
}

void EnterCriticalSection(CRITICAL_SECTION* section) noexcept
{
    ::EnterCriticalSection(Native(section));
}

void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept
{
    ::LeaveCriticalSection(Native(section));
}

void DeleteCriticalSection(CRITICAL_SECTION* section) noexcept
{
    ::DeleteCriticalSection(Native(section));
}

} // namespace Platform
