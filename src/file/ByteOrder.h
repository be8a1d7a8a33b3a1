// Pixels between memory and file, which is little-endian whatever the machine.
#ifndef FILE_BYTEORDER_H
#define FILE_BYTEORDER_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ByteOrder {

inline bool IsLittleEndian() noexcept
{
    const std::uint16_t probe = 1;
    unsigned char first = 0;
    std::memcpy(&first, &probe, 1);
    return first == 1;
}

// Swaps the bytes of every pixel.
inline void Swap(std::uint16_t* pixels, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        pixels[i] = static_cast<std::uint16_t>((pixels[i] << 8) | (pixels[i] >> 8));
    }
}

} // namespace ByteOrder

#endif
