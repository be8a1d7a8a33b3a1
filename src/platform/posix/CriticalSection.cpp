#include "platform/CriticalSection.h"

#include <new>

#include <pthread.h>

namespace Platform {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION), "the opaque block must hold the mutex");
static_assert(alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION), "the opaque block must be aligned for the mutex");

namespace {
pthread_mutex_t* Mutex(CRITICAL_SECTION* section)
{
    return reinterpret_cast<pthread_mutex_t*>(section->storage);
}
} // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (section->storage) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void EnterCriticalSection(CRITICAL_SECTION* section) noexcept
{
    pthread_mutex_lock(Mutex(section));
}

void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept
{
    pthread_mutex_unlock(Mutex(section));
}

void DeleteCriticalSection(CRITICAL_SECTION* section) noexcept
{
    pthread_mutex_destroy(Mutex(section));
}

} // namespace Platform
