// The memory of the fuzz targets.
#ifndef FUZZ_LIMITEDMEMORY_H
#define FUZZ_LIMITEDMEMORY_H

#include <cstddef>

// While it lives, the operators new of the executable refuse a larger block than this. Hostile numbers then cost no
// time: a file may describe a correction of gigabytes, and the host may choose it.
class TLimitedMemory {
public:
    static constexpr std::size_t kLargestBlock = std::size_t{1} << 22;

    TLimitedMemory() noexcept { limit = kLargestBlock; }
    ~TLimitedMemory() { limit = kNoLimit; }
    TLimitedMemory(const TLimitedMemory&) = delete;
    TLimitedMemory& operator=(const TLimitedMemory&) = delete;

    static std::size_t Limit() noexcept { return limit; }

private:
    static constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);
    static std::size_t limit;
};

#endif
