#include "boundary/TAutoVelmorCriticalSection.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>
#include <type_traits>

namespace {

using VelmorUtility::TAutoVelmorCriticalSection;
using VelmorUtility::TOwnedCriticalSection;

static_assert(std::has_virtual_destructor_v<TAutoVelmorCriticalSection>);
static_assert(!std::is_copy_constructible_v<TAutoVelmorCriticalSection>);

// Starts a thread that takes and leaves the lock.
std::future<void> Contend(TOwnedCriticalSection& lock)
{
    return std::async(std::launch::async, [&lock] { const TAutoVelmorCriticalSection guard(lock.Get()); });
}

bool IsBlocked(const std::future<void>& contender)
{
    return contender.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
}

TEST(LockGuard, KeepsOtherThreadsOutForItsLifetime)
{
    TOwnedCriticalSection lock;
    std::future<void> contender;
    {
        const TAutoVelmorCriticalSection guard(lock.Get());
        contender = Contend(lock);
        EXPECT_TRUE(IsBlocked(contender));
    }
    contender.get();
}

TEST(LockGuard, IsRecursiveWithinOneThread)
{
    TOwnedCriticalSection lock;
    std::future<void> contender;
    {
        const TAutoVelmorCriticalSection outer(lock.Get());
        {
            const TAutoVelmorCriticalSection middle(lock.Get());
            const TAutoVelmorCriticalSection inner(lock.Get());
        }
        contender = Contend(lock);
        EXPECT_TRUE(IsBlocked(contender)) << "leaving the inner guards gave the lock up";
    }
    contender.get();
}

TEST(LockGuard, LeavesWhenAnExceptionPasses)
{
    TOwnedCriticalSection lock;
    EXPECT_THROW(
        {
            const TAutoVelmorCriticalSection guard(lock.Get());
            throw std::runtime_error("passing");
        },
        std::runtime_error);
    Contend(lock).get();
}

TEST(LockGuard, DifferentLocksAreIndependent)
{
    TOwnedCriticalSection first;
    TOwnedCriticalSection second;
    const TAutoVelmorCriticalSection guard(first.Get());
    Contend(second).get();
}

} // namespace
