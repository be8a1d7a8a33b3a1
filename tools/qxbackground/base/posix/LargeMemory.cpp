#include "base/LargeMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace workbench {

void ExpectWholeUse(void* begin, std::size_t bytes)
{
    constexpr std::size_t kLarge = std::size_t{2} << 20; // smaller blocks hold no large page
    if (bytes < kLarge)
        return;
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(begin) + page - 1) / page * page;
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(begin) + bytes) / page * page;
    if (first < end)
        madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE); // only advice: a failure changes nothing
}

} // namespace workbench
