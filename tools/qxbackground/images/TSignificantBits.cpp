#include "images/TSignificantBits.h"

#include "base/Wording.h"

#include <nlohmann/json.hpp>

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
    if (const int zeros = LeftAlignedBy(); zeros > 0)
        return 16 - zeros;
    // A file may also say from how many bits its values were scaled up.
    return said > 0 ? said : BitsOf(seen);
}

std::string TSignificantBits::Text() const
{
    const int used = Used();
    const int zeros = LeftAlignedBy();
    if (used == 0 || used == 16)
        return {};
    const std::string bits = std::to_string(used) + "-bit data in 16-bit pixels";
    if (zeros > 0)
        return "the lowest " + Counted(static_cast<std::uint64_t>(zeros), "bit") + (zeros == 1 ? " is" : " are") +
               " always zero: " + bits + ", left-aligned";
    if (said == used)
        return bits + (said < BitsOf(seen) ? ", scaled up" : "") + ", as the file says";
    return "values stay below " + std::to_string(1 << used) + ": " + bits;
}

nlohmann::json TSignificantBits::Json() const
{
    return {{"used", Used()}, {"alwaysZeroBelow", LeftAlignedBy()}};
}

} // namespace workbench
