#ifndef QXBACKGROUND_IMAGES_BYTEORDER_H
#define QXBACKGROUND_IMAGES_BYTEORDER_H

#include <cstddef>
#include <cstdint>

namespace workbench {

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
constexpr bool kHostIsBigEndian = true;
#else
constexpr bool kHostIsBigEndian = false;
#endif

inline std::uint16_t Swapped(std::uint16_t value)
{
    return static_cast<std::uint16_t>(value << 8 | value >> 8);
}

// Copies pixels with their bytes swapped, then with the bits of `flip` turned over. `to` may be `from`.
inline void CopySwapped(const std::uint16_t* from, std::uint16_t* to, std::size_t count, std::uint16_t flip = 0)
{
    for (std::size_t pixel = 0; pixel < count; ++pixel)
        to[pixel] = static_cast<std::uint16_t>(Swapped(from[pixel]) ^ flip);
}

} // namespace workbench

#endif
