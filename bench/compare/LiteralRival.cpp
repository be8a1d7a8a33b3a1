#include "compare/Rivals.h"

#include <cmath>
#include <memory>

namespace Literal {

void Subtract(std::uint16_t* output, const std::uint16_t* image, const std::uint16_t* background, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const int difference = image[i] - background[i];
        if (difference < 0) {
            output[i] = 0;
        } else if (difference > 65535) {
            output[i] = 65535;
        } else {
            output[i] = static_cast<std::uint16_t>(difference);
        }
    }
}

// Into a new buffer every time, as a recalculation would.
void CopyAndScale(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, float factor)
{
    for (std::size_t i = 0; i < count; ++i) {
        output[i] = pixels[i];
    }
    for (std::size_t i = 0; i < count; ++i) {
        const float scaled = static_cast<float>(output[i]) * factor;
        const int rounded = static_cast<int>(static_cast<double>(scaled) + 0.5);
        output[i] = static_cast<std::uint16_t>(rounded < 0 ? 0 : rounded > 65535 ? 65535 : rounded);
    }
}

void Average(std::uint16_t* output, const std::uint16_t* const* frames, std::size_t frameCount, std::size_t count)
{
    const std::unique_ptr<float[]> sums(new float[count]);
    for (std::size_t i = 0; i < count; ++i) {
        sums[i] = static_cast<float>(frames[0][i]);
    }
    for (std::size_t frame = 1; frame < frameCount; ++frame) {
        for (std::size_t i = 0; i < count; ++i) {
            sums[i] += static_cast<float>(frames[frame][i]);
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        const double mean = static_cast<double>(sums[i] / static_cast<float>(frameCount));
        output[i] = static_cast<std::uint16_t>(static_cast<int>(std::floor(mean + 0.5)));
    }
}

void Median(std::uint16_t* image, std::size_t width, std::size_t height)
{
    const std::size_t stride = width + 2;
    const std::unique_ptr<std::uint16_t[]> padded(new std::uint16_t[stride * (height + 2)]);
    for (std::size_t row = 0; row < height; ++row) {
        std::uint16_t* const target = padded.get() + (row + 1) * stride;
        const std::uint16_t* const source = image + row * width;
        for (std::size_t column = 0; column < width; ++column) {
            target[column + 1] = source[column];
        }
        target[0] = source[width > 1 ? 1 : 0];
        target[width + 1] = source[width - 1];
    }
    for (std::size_t column = 0; column < stride; ++column) {
        padded[column] = padded[stride + column];
        padded[(height + 1) * stride + column] = padded[height * stride + column];
    }
    for (std::size_t row = 0; row < height; ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            std::uint16_t window[9];
            for (std::size_t i = 0; i < 9; ++i) {
                window[i] = padded[(row + i / 3) * stride + column + i % 3];
            }
            for (std::size_t pass = 0; pass < 5; ++pass) {
                std::size_t least = pass;
                for (std::size_t i = pass + 1; i < 9; ++i) {
                    if (window[i] < window[least]) {
                        least = i;
                    }
                }
                const std::uint16_t value = window[pass];
                window[pass] = window[least];
                window[least] = value;
            }
            image[row * width + column] = window[4];
        }
    }
}

double Statistics(const std::uint16_t* pixels, std::size_t count, std::uint16_t& minimum, std::uint16_t& maximum)
{
    minimum = pixels[0];
    maximum = pixels[0];
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        if (pixels[i] < minimum) {
            minimum = pixels[i];
        } else if (pixels[i] > maximum) {
            maximum = pixels[i];
        }
        sum += pixels[i];
    }
    return sum / static_cast<double>(count);
}

} // namespace Literal
