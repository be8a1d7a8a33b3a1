// Watches who holds which lock: takes the place of the system's locks in its executable, and does what they do.
#ifndef QXBC_TESTS_THREADS_LOCKWATCH_H
#define QXBC_TESTS_THREADS_LOCKWATCH_H

#include <cstddef>
#include <vector>

namespace LockWatch {

// A lock was taken or given back, in the order in which it happened.
struct TEvent {
    const void* section;
    bool isTaken;
    std::size_t allocations; // of memory, since the watch began
    std::size_t frees;       // likewise
};

// What one thread does with locks while this object lives. One at a time; the watched work has to run on the thread
// that made it.
class TWatch {
public:
    TWatch();
    ~TWatch();
    TWatch(const TWatch&) = delete;
    TWatch& operator=(const TWatch&) = delete;

    // Ends the watch.
    std::vector<TEvent> Stop();
    // Allocations and frees until then.
    std::size_t Allocations() const { return allocations; }
    std::size_t Frees() const { return frees; }

private:
    std::size_t allocations = 0;
    std::size_t frees = 0;
};

} // namespace LockWatch

#endif
