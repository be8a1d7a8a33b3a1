#include "images/TSignificantBits.h"

#include <algorithm>

namespace workbench {

namespace {

int BitsOf(unsigned value)
{
    int bits = 0;
    for (; value != 0; value >>= 1)
        ++bits;
    return bits;
}

} // namespace

void TSignificantBits::Add(const TImage& image, const TPageMetadata& metadata)
{
    std::uint16_t all = 0;
    for (const std::uint16_t pixel : image.pixels)
        all = static_cast<std::uint16_t>(all | pixel);
    seen = static_cast<std::uint16_t>(seen | all);
    said = std::max(said, metadata.significantBits);
}

int TSignificantBits::LeftAlignedBy() const
{
    if (BitsOf(seen) < 16)
        return 0;
    int zeros = 0;
    while ((seen >> zeros & 1) == 0)
        ++zeros;
    return zeros;
}

int TSignificantBits::Used() const
{
    if (seen == 0)
        return 0;
    const int zeros = LeftAlignedBy();
    if (zeros > 0)
        return 16 - zeros;
    const int needed = BitsOf(seen);
    return said >= needed ? said : needed;
}

std::string TSignificantBits::Text() const
{
    const int used = Used();
    const int zeros = LeftAlignedBy();
    if (used == 0 || used == 16)
        return {};
    const std::string bits = std::to_string(used) + "-bit data in 16-bit pixels";
    if (zeros > 0)
        return "the lowest " + std::to_string(zeros) + " bits are always zero: " + bits + ", left-aligned";
    if (said == used)
        return "the file says so: " + bits;
    return "values stay below " + std::to_string(1 << used) + ": " + bits;
}

} // namespace workbench
