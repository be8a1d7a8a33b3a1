#ifndef QXBACKGROUND_BATCH_THANDOVER_H
#define QXBACKGROUND_BATCH_THANDOVER_H

#include "base/TProgress.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

namespace workbench {

// Hands things from one thread to another, in order: pages, or bands of frames. Holds a few at most, and things are
// swapped in and out, so that the memory of their pixels goes round instead of being made anew for each.
template <class T> class THandover {
public:
    explicit THandover(std::size_t capacity) : slots(capacity) {}
    THandover(const THandover&) = delete;
    THandover& operator=(const THandover&) = delete;

    // For the thread that makes things. Waits for room; false when no more are wanted. `thing` gets a used one's
    // memory.
    bool Put(T& thing)
    {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [this] { return stopped || held < slots.size(); });
        if (stopped)
            return false;
        std::swap(slots[(first + held) % slots.size()], thing);
        ++held;
        changed.notify_one();
        return true;
    }

    // No more will come; `why` is thrown at the other end, after what came before it.
    void End(std::exception_ptr why)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ended = true;
        failure = std::move(why);
        changed.notify_one();
    }

    // For the thread that takes them. False after the last. Throws what End was given, and TToolError when the user
    // asked to stop.
    bool Take(T& thing)
    {
        // An interrupt wakes nobody who waits for something that is slow to come.
        constexpr auto kLookAgain = std::chrono::milliseconds(100);
        std::unique_lock<std::mutex> lock(mutex);
        while (!changed.wait_for(lock, kLookAgain, [this] { return ended || held > 0; }))
            ThrowIfInterrupted();
        if (held == 0) {
            if (failure)
                std::rethrow_exception(failure);
            return false;
        }
        std::swap(slots[first], thing);
        first = (first + 1) % slots.size();
        --held;
        changed.notify_one();
        return true;
    }

    // No more are wanted.
    void Stop()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopped = true;
        changed.notify_one();
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<T> slots; // a ring: `held` of them from `first` on
    std::size_t first = 0, held = 0;
    bool ended = false, stopped = false;
    std::exception_ptr failure;
};

} // namespace workbench

#endif
