#include "batch/TPageQueue.h"

#include "base/TProgress.h"

#include <chrono>
#include <utility>

namespace workbench {

bool TPageQueue::Put(TPage& page)
{
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [this] { return stopped || held < slots.size(); });
    if (stopped)
        return false;
    std::swap(slots[(first + held) % slots.size()], page);
    ++held;
    changed.notify_one();
    return true;
}

void TPageQueue::End(std::exception_ptr why)
{
    const std::lock_guard<std::mutex> lock(mutex);
    ended = true;
    failure = std::move(why);
    changed.notify_one();
}

bool TPageQueue::Take(TPage& page)
{
    // An interrupt wakes nobody who waits for a page that is slow to come.
    constexpr auto kLookAgain = std::chrono::milliseconds(100);
    std::unique_lock<std::mutex> lock(mutex);
    while (!changed.wait_for(lock, kLookAgain, [this] { return ended || held > 0; }))
        ThrowIfInterrupted();
    if (held == 0) {
        if (failure)
            std::rethrow_exception(failure);
        return false;
    }
    std::swap(slots[first], page);
    first = (first + 1) % slots.size();
    --held;
    changed.notify_one();
    return true;
}

void TPageQueue::Stop()
{
    const std::lock_guard<std::mutex> lock(mutex);
    stopped = true;
    changed.notify_one();
}

} // namespace workbench
