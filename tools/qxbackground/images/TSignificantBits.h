#ifndef QXBACKGROUND_IMAGES_TSIGNIFICANTBITS_H
#define QXBACKGROUND_IMAGES_TSIGNIFICANTBITS_H

#include "images/TImage.h"
#include "images/TPageMetadata.h"

#include <cstdint>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace workbench {

// Which of their 16 bits images use: cameras of 10, 12 or 14 bits write 16-bit files, with the unused bits above or
// below. Cheap: one pass at the speed of memory.
class TSignificantBits {
public:
    // `metadata` of the same page may say it.
    void Add(const TImage& image, const TPageMetadata& metadata);

    // How many bits are used: 1 to 16; 0 before there is an image with a value above 0. What the file says counts
    // before what the values show, because dark frames show little.
    int Used() const;
    // How many of the lowest bits are always zero, where the values fill the range up to the highest bit; otherwise 0.
    int LeftAlignedBy() const;
    // For people, without a line feed: "values below 4096: 12-bit data in 16-bit pixels". Empty where all 16 bits may
    // be in use.
    std::string Text() const;
    nlohmann::json Json() const;

private:
    std::uint16_t seen = 0; // all values, by OR
    int said = 0;
};

} // namespace workbench

#endif
