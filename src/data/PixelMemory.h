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

// A block for an image that is worked on together with a host's: `count` pixels behind some that are left free.
// Allocators put large images a few bytes behind the beginning of a page, and the processor's first cache may then hold
// a line of the one or the line of the other that is wanted at the same time, but not both: what they are to each other
// hangs on the addresses of the process. Half a page apart they never meet. (Subtraction of 2048 x 2048 on an EPYC took
// 1.4 times as long in every second process.) Smaller images lie anywhere.
constexpr std::size_t kPagesOfTheirOwnFrom = 65536;
constexpr std::size_t kBytesOfAPage = 4096;

inline std::uint16_t* AllocatePixelsApart(std::size_t count) noexcept
{
    return AllocatePixels(count < kPagesOfTheirOwnFrom ? count : count + kBytesOfAPage / sizeof(std::uint16_t));
}

// Where the pixels begin in such a block.
inline std::uint16_t* PixelsApart(std::uint16_t* block, std::size_t count) noexcept
{
    constexpr std::uintptr_t kPlace = kBytesOfAPage / 2 + 16; // to lines of the cache as most images are
    const std::uintptr_t bytes = (kPlace - reinterpret_cast<std::uintptr_t>(block)) % kBytesOfAPage;
    return count < kPagesOfTheirOwnFrom ? block : block + bytes / sizeof *block;
}

#endif
