#include "platform/CriticalSection.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(CriticalSection, LetsOneThreadInAtATime)
{
    Platform::CRITICAL_SECTION section;
    Platform::InitializeCriticalSection(&section);
    int counter = 0; // unprotected but for the section
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&section, &counter] {
            for (int round = 0; round < 20000; ++round) {
                Platform::EnterCriticalSection(&section);
                Platform::EnterCriticalSection(&section); // twice is as good as once for the same thread
                const int read = counter;
                counter = read + 1;
                Platform::LeaveCriticalSection(&section);
                Platform::LeaveCriticalSection(&section);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    Platform::DeleteCriticalSection(&section);
    EXPECT_EQ(counter, 80000);
}

} // namespace
