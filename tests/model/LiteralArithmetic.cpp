#include "model/LiteralArithmetic.h"

#include <cmath>
#include <memory>

namespace Literal {

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

namespace {

// Left of column 0 lies the value of column 1; with a width of 1 that is the next row's, and nothing follows the last.
std::uint16_t LeftPad(const std::uint16_t* row, std::size_t width, bool isLast)
{
    return row[width > 1 || !isLast ? 1 : 0];
}

} // namespace

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
        target[0] = LeftPad(source, width, row + 1 == height);
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
            for (std::size_t pass = 0; pass < 5; ++pass) { // the fifth smallest is the median
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

void CopyAndScale(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, float factor)
{
    const float positive = factor > 0.0f ? factor : 0.0f; // all results below zero, and all that are no number, are 0
    for (std::size_t i = 0; i < count; ++i) {
        output[i] = pixels[i];
    }
    for (std::size_t i = 0; i < count; ++i) {
        const float scaled = static_cast<float>(output[i]) * positive;
        const double shifted = static_cast<double>(scaled) + 0.5;
        if (shifted < 65535.0) {
            output[i] = static_cast<std::uint16_t>(static_cast<int>(shifted));
        } else {
            output[i] = shifted >= 65535.0 ? 65535 : 0; // 0: zero times infinity is no number
        }
    }
}

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

TImage Average(const std::vector<TImage>& frames)
{
    std::vector<const std::uint16_t*> pointers;
    for (const TImage& frame : frames) {
        pointers.push_back(frame.pixels.data());
    }
    TImage result = frames.front();
    Average(result.pixels.data(), pointers.data(), pointers.size(), result.pixels.size());
    return result;
}

TImage Median(const TImage& image)
{
    TImage result = image;
    Median(result.pixels.data(), static_cast<std::size_t>(image.width), static_cast<std::size_t>(image.height));
    return result;
}

TImage Correction(const std::vector<TImage>& frames)
{
    return Median(frames.size() == 1 ? frames.front() : Average(frames));
}

TImage CopyRegion(const TImage& image, int left, int top, int width, int height)
{
    TImage result{width, height, {}};
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const std::int64_t address = (std::int64_t{top} + row) * image.width + left + column;
            const bool isInside = address < static_cast<std::int64_t>(image.pixels.size());
            result.pixels.push_back(isInside ? image.pixels[static_cast<std::size_t>(address)] : std::uint16_t{0});
        }
    }
    return result;
}

float LevelFraction(int percent)
{
    return static_cast<float>(static_cast<double>(static_cast<float>(percent)) / 100.0);
}

float ScaleFactor(float exposure, float intensity, float level, float referenceExposure, float referenceIntensity)
{
    const float product = intensity * exposure;
    const float levelled = product * level;
    const float reference = referenceIntensity * referenceExposure;
    return levelled / reference;
}

TImage Scale(const TImage& image, float factor)
{
    TImage result = image;
    CopyAndScale(result.pixels.data(), image.pixels.data(), image.pixels.size(), factor);
    return result;
}

TImage Subtract(const TImage& image, const TImage& background)
{
    TImage result = image;
    Subtract(result.pixels.data(), image.pixels.data(), background.pixels.data(), image.pixels.size());
    return result;
}

TStatistics CalculateStatistics(const std::vector<std::uint16_t>& pixels)
{
    TStatistics result;
    const double mean = Statistics(pixels.data(), pixels.size(), result.minimum, result.maximum);
    result.average = static_cast<std::uint16_t>(mean);
    return result;
}

} // namespace Literal
