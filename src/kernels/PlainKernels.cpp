#include "kernels/PlainKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Kernels::Plain {

namespace {

std::uint16_t MedianOfNine(std::uint16_t (&window)[9])
{
    std::nth_element(window, window + 4, window + 9);
    return window[4];
}

// Copies a row between its two pads.
void PadRow(std::uint16_t* padded, const std::uint16_t* image, std::size_t row, std::size_t width, std::size_t height)
{
    const std::uint16_t* source = image + row * width;
    std::memcpy(padded + 1, source, width * sizeof *source);
    padded[width + 1] = source[width - 1];
    if (width > 1 || row + 1 < height) {
        padded[0] = source[1];
    } else {
        padded[0] = source[0];
    }
}

} // namespace

void SubtractInPlace(std::uint16_t* image, const std::uint16_t* background, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint16_t larger = std::max(image[i], background[i]);
        image[i] = static_cast<std::uint16_t>(larger - background[i]);
    }
}

void SubtractInto(std::uint16_t* output, const std::uint16_t* image, const std::uint16_t* background,
                  std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint16_t larger = std::max(image[i], background[i]);
        output[i] = static_cast<std::uint16_t>(larger - background[i]);
    }
}

void Scale(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, float factor) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        const float scaled = static_cast<float>(pixels[i]) * factor;
        const double rounded = static_cast<double>(scaled) + 0.5;
        if (!(rounded >= 0.0)) { // also NaN
            output[i] = 0;
        } else if (rounded >= 65535.0) {
            output[i] = 65535;
        } else {
            output[i] = static_cast<std::uint16_t>(rounded);
        }
    }
}

void Average(std::uint16_t* output, const std::uint16_t* const* frames, std::size_t frameCount,
             std::size_t pixelCount) noexcept
{
    const float divisor = static_cast<float>(frameCount);
    for (std::size_t i = 0; i < pixelCount; ++i) {
        float sum = static_cast<float>(frames[0][i]);
        for (std::size_t frame = 1; frame < frameCount; ++frame) {
            sum += static_cast<float>(frames[frame][i]);
        }
        const double rounded = std::floor(static_cast<double>(sum / divisor) + 0.5);
        output[i] = static_cast<std::uint16_t>(static_cast<std::int32_t>(rounded) & 0xFFFF);
    }
}

void Median3x3(std::uint16_t* image, std::size_t width, std::size_t height, std::uint16_t* scratch) noexcept
{
    if (width == 0 || height == 0) {
        return;
    }
    // Three padded rows as they were before the filter; a row is overwritten only after it was copied here.
    std::uint16_t* above = scratch;
    std::uint16_t* centre = above + (width + 2);
    std::uint16_t* below = centre + (width + 2);
    PadRow(centre, image, 0, width, height);
    std::memcpy(above, centre, (width + 2) * sizeof *centre);
    for (std::size_t row = 0; row < height; ++row) {
        if (row + 1 < height) {
            PadRow(below, image, row + 1, width, height);
        } else {
            std::memcpy(below, centre, (width + 2) * sizeof *centre);
        }
        for (std::size_t column = 0; column < width; ++column) {
            std::uint16_t window[9] = {
                above[column],      above[column + 1], above[column + 2], centre[column],    centre[column + 1],
                centre[column + 2], below[column],     below[column + 1], below[column + 2],
            };
            image[row * width + column] = MedianOfNine(window);
        }
        std::uint16_t* const free = above;
        above = centre;
        centre = below;
        below = free;
    }
}

void Statistics(const std::uint16_t* pixels, std::size_t count, std::uint16_t& minimum, std::uint16_t& maximum,
                std::uint64_t& sum) noexcept
{
    minimum = pixels[0];
    maximum = pixels[0];
    sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        minimum = std::min(minimum, pixels[i]);
        maximum = std::max(maximum, pixels[i]);
        sum += pixels[i];
    }
}

} // namespace Kernels::Plain
