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

#endif
