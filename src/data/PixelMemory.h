// Memory for images that the library keeps.
#ifndef DATA_PIXELMEMORY_H
#define DATA_PIXELMEMORY_H

#include "platform/LargeBlocks.h"

#include <cstddef>
#include <cstdint>
#include <new>

// `count` pixels, to be freed with delete[], or null when there is no memory.
inline std::uint16_t* AllocatePixels(std::size_t count) noexcept
{
    if (count > PTRDIFF_MAX / sizeof(std::uint16_t)) { // for so many even the new that throws nothing throws
        return nullptr;
    }
    auto* const pixels = new (std::nothrow) std::uint16_t[count];
    Platform::PreferLargePages(pixels, count * sizeof *pixels);
    return pixels;
}

// Pixels to leave free in front of an image that is worked on together with a host's. Allocators put all large images a
// few bytes behind the beginning of a page, and the processor's first cache may then hold a line of the one or the line
// of the other that is wanted at the same time, but not both: what both are to each other hangs on the addresses of the
// process. Half a page apart they never meet. (Subtraction of 2048 x 2048 on an EPYC took 1.4 times as long in every
// second process.) Smaller images lie anywhere.
inline std::size_t PixelsLeftFree(std::size_t count) noexcept
{
    constexpr std::size_t kPagesOfTheirOwnFrom = 65536;
    constexpr std::size_t kHalfAPage = 2048 / sizeof(std::uint16_t);
    return count >= kPagesOfTheirOwnFrom ? kHalfAPage : 0;
}

#endif
