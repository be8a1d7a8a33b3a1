#ifndef QXBACKGROUND_STACKS_TFILTEREDPIXELS_H
#define QXBACKGROUND_STACKS_TFILTEREDPIXELS_H

#include "images/TImage.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

// How many pixels of dark frames the library's median filter moved far when it made a correction of them: those that
// stood out of what is around them. (THotPixels finds such pixels, in more time.)
class TFilteredPixels {
public:
    explicit TFilteredPixels(const TImage& darkFrame) : dark(darkFrame) {}

    // The correction's pixels, piece after piece: two bytes each, the lower one first.
    void Add(const unsigned char* bytes, std::size_t count);
    // To be called when all of them were added: `sigma` times the spread of all moves is far.
    void Count(double sigma);

    std::uint64_t Hot() const { return hot; }
    std::uint64_t Dead() const { return dead; }

private:
    const TImage& dark;
    std::vector<std::int16_t> moves; // larger ones are cut off, which changes no count
    std::uint64_t hot = 0, dead = 0;
};

} // namespace workbench

#endif
