// The pixel arithmetic written a second time, as plainly as its description reads and without regard to speed. The
// library is compared with it bit for bit; it shares no code with the library.
#ifndef QXBC_TESTS_LITERAL_ARITHMETIC_H
#define QXBC_TESTS_LITERAL_ARITHMETIC_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Literal {

struct TImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> pixels; // row-major

    std::uint16_t At(int row, int column) const
    {
        return pixels.at(static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                         static_cast<std::size_t>(column));
    }
    bool operator==(const TImage& other) const
    {
        return width == other.width && height == other.height && pixels == other.pixels;
    }
};

struct TStatistics {
    std::uint16_t minimum = 0;
    std::uint16_t maximum = 0;
    std::uint16_t average = 0;
};

// Mean of the frames: single-precision sum in their order, rounded half up.
TImage Average(const std::vector<TImage>& frames);

// 3 x 3 median over an image padded by one pixel on every side.
TImage Median(const TImage& image);

// What a stack of frames becomes: one frame as it is, several averaged; then the median.
TImage Correction(const std::vector<TImage>& frames);

// A rectangle of an image, by address: columns beyond a row are the next row's; 0 where it reaches beyond the pixels.
TImage CopyRegion(const TImage& image, int left, int top, int width, int height);

float LevelFraction(int percent);
float ScaleFactor(float exposure, float intensity, float level, float referenceExposure, float referenceIntensity);
TImage Scale(const TImage& image, float factor);

TImage Subtract(const TImage& image, const TImage& background);

TStatistics CalculateStatistics(const std::vector<std::uint16_t>& pixels);

} // namespace Literal

#endif
