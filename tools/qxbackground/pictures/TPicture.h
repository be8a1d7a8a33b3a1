#ifndef QXBACKGROUND_PICTURES_TPICTURE_H
#define QXBACKGROUND_PICTURES_TPICTURE_H

#include "base/TReplacedFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// An 8-bit grayscale picture for the eye.
struct TPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    std::uint8_t& At(int x, int y)
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
};

// Writes a PNG file, whole or not at all. Throws TToolError.
void WritePng(const std::string& path, const TPicture& picture, TExisting existing);

} // namespace workbench

#endif
