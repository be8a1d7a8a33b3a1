#ifndef QXBACKGROUND_STACKS_TFILTEREDPIXELS_H
#define QXBACKGROUND_STACKS_TFILTEREDPIXELS_H

#include "images/TImage.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace workbench {

// How many pixels of dark frames the library's median filter moved far when it made a correction of them: those that
// stood out of what is around them. (THotPixels finds such pixels, in more time.)
class TFilteredPixels {
public:
    // What becomes of the frame is kept in its own memory.
    explicit TFilteredPixels(TImage darkFrame) : pixels(std::move(darkFrame.pixels)) {}

    // The correction's pixels, piece after piece: two bytes each, the lower one first.
    void Add(const unsigned char* bytes, std::size_t count);
    // To be called when all of them were added: `sigma` times the spread of all moves is far.
    void Count(double sigma);

    std::uint64_t Hot() const { return hot; }
    std::uint64_t Dead() const { return dead; }

private:
    // Of the frame; where `added`, how far they were moved, as signed numbers. Larger moves are cut off, which changes
    // no count.
    std::vector<std::uint16_t> pixels;
    std::size_t added = 0;
    std::uint64_t hot = 0, dead = 0;
};

} // namespace workbench

#endif
