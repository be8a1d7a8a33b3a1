// Makes memory run out on purpose. The test executable replaces every global operator new and delete; the library is
// linked into it and gets its memory there.
#ifndef QXBC_TESTS_ALLOCATION_FAULTS_H
#define QXBC_TESTS_ALLOCATION_FAULTS_H

#include <cstddef>

enum class TFaultRepeat {
    kOnce,    // only the chosen allocation fails
    kForGood, // it and every later one
};

// While it lives, the allocation number `failAt` (from 1) of the whole process fails; 0 fails none and only counts.
// One at a time. Test assertions allocate too, so none belongs between arming and Disarm.
//
//     for (std::size_t failAt = 1;; ++failAt) {
//         TAllocationFaults faults(failAt);
//         const unsigned int code = object->AddCorrection(...);
//         faults.Disarm();
//         if (!faults.Fired()) { EXPECT_EQ(code, 0u); break; }  // ran to the end: every point was tried
//         ...
//     }
class TAllocationFaults {
public:
    explicit TAllocationFaults(std::size_t failAt, TFaultRepeat repeat = TFaultRepeat::kOnce) noexcept;
    ~TAllocationFaults() { Disarm(); }
    TAllocationFaults(const TAllocationFaults&) = delete;
    TAllocationFaults& operator=(const TAllocationFaults&) = delete;

    void Disarm() noexcept;
    // Whether an allocation was made to fail.
    bool Fired() const noexcept;
    // Allocations since arming, failed ones included.
    std::size_t Count() const noexcept;
    // Bytes that the first failed allocation asked for.
    std::size_t FailedSize() const noexcept;

    // Blocks of the process that were allocated and not freed yet.
    static std::size_t LiveBlocks() noexcept;
};

#endif
