#ifndef QXBACKGROUND_IMAGES_TINPUTOPTIONS_H
#define QXBACKGROUND_IMAGES_TINPUTOPTIONS_H

#include "images/TImage.h"

#include <cstdint>
#include <optional>

namespace workbench {

// How frames lie in a file that says nothing itself: 16-bit little-endian pixels without gaps, from `offset` to the
// end.
struct TRawLayout {
    TSize size;
    std::uint64_t offset = 0;
};

// What the user says about the files to be read.
struct TInputOptions {
    // For files that are of no known format.
    std::optional<TRawLayout> raw;
};

} // namespace workbench

#endif
