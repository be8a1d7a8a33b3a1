#include "platform/LargeBlocks.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace Platform {

void PreferLargePages(void* block, std::size_t length) noexcept
{
#ifdef MADV_HUGEPAGE
    constexpr std::size_t kWorthIt = std::size_t{4} << 20; // holds at least one whole page of 2 MiB
    if (block == nullptr || length < kWorthIt) {
        return;
    }
    // Only what lies wholly within the block: other blocks share its first and its last small page.
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t begin = (address + page - 1) / page * page;
    const std::uintptr_t end = (address + length) / page * page;
    static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
#else
    static_cast<void>(block);
    static_cast<void>(length);
#endif
}

} // namespace Platform
