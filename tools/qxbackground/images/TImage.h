#ifndef QXBACKGROUND_IMAGES_TIMAGE_H
#define QXBACKGROUND_IMAGES_TIMAGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

struct TSize {
    int width = 0;
    int height = 0;

    bool operator==(const TSize& other) const { return width == other.width && height == other.height; }
    bool operator!=(const TSize& other) const { return !(*this == other); }
    std::size_t Pixels() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    std::string Text() const { return std::to_string(width) + " x " + std::to_string(height); }
};

// A 16-bit grayscale image, row-major, no padding.
struct TImage {
    TSize size;
    std::vector<std::uint16_t> pixels;
};

} // namespace workbench

#endif
