#ifndef QXBACKGROUND_BATCH_TPAGEQUEUE_H
#define QXBACKGROUND_BATCH_TPAGEQUEUE_H

#include "batch/TPage.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <vector>

namespace workbench {

// Hands pages from one thread to another, in order. Holds a few at most, and pages are swapped in and out, so that the
// memory of their pixels goes round instead of being made anew for each.
class TPageQueue {
public:
    explicit TPageQueue(std::size_t capacity) : slots(capacity) {}
    TPageQueue(const TPageQueue&) = delete;
    TPageQueue& operator=(const TPageQueue&) = delete;

    // For the thread that makes pages. Waits for room; false when no more are wanted. `page` gets a used page's memory.
    bool Put(TPage& page);
    // No more will come; `failure` is thrown at the other end, after the pages before it.
    void End(std::exception_ptr failure);

    // For the thread that takes them. False after the last. Throws what End was given, and TToolError when the user
    // asked to stop.
    bool Take(TPage& page);
    // No more are wanted.
    void Stop();

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<TPage> slots; // a ring: `held` of them from `first` on
    std::size_t first = 0, held = 0;
    bool ended = false, stopped = false;
    std::exception_ptr failure;
};

} // namespace workbench

#endif
