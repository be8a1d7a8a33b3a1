// Advice to the system about large blocks of memory.
#ifndef PLATFORM_LARGEBLOCKS_H
#define PLATFORM_LARGEBLOCKS_H

#include <cstddef>

namespace Platform {

// Asks for large pages behind a block of memory that was just allocated, where the system has them for the asking: the
// first touch of a block costs more than anything that is done with its pixels, and a page of 2 MiB costs one touch
// where small ones cost 512. Small blocks are left alone, and so are systems that want a privilege for it. Advice only:
// nothing depends on it, and it stays with the addresses when the block is freed. Null is allowed.
void PreferLargePages(void* block, std::size_t length) noexcept;

} // namespace Platform

#endif
