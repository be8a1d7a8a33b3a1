// The pixel arithmetic written a second time, as plainly as its description reads: one pixel at a time, with a padded
// image and a partial selection sort for the median. The library is compared with it bit for bit, and timed beside it.
// Shares no code with the library.
#ifndef TESTS_MODEL_LITERALARITHMETIC_H
#define TESTS_MODEL_LITERALARITHMETIC_H

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

// The loops. `count` is a number of pixels; an output may be one of the inputs.
//
// The mean of the frames: a single-precision sum in their order, rounded half up.
void Average(std::uint16_t* output, const std::uint16_t* const* frames, std::size_t frameCount, std::size_t count);
// The median of 3 x 3 pixels, in place: the image is padded by one pixel on every side first.
void Median(std::uint16_t* image, std::size_t width, std::size_t height);
// Copied, then scaled where it lies. What is no number, and what is below a half, becomes 0.
void CopyAndScale(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, float factor);
void Subtract(std::uint16_t* output, const std::uint16_t* image, const std::uint16_t* background, std::size_t count);
// Gives the mean.
double Statistics(const std::uint16_t* pixels, std::size_t count, std::uint16_t& minimum, std::uint16_t& maximum);

// The same on images.
TImage Average(const std::vector<TImage>& frames);
TImage Median(const TImage& image);
TImage Scale(const TImage& image, float factor);
TImage Subtract(const TImage& image, const TImage& background);
TStatistics CalculateStatistics(const std::vector<std::uint16_t>& pixels); // of at least one

// What a stack of frames becomes: one frame as it is, several averaged; then the median.
TImage Correction(const std::vector<TImage>& frames);

// A rectangle of an image: the pixels at (top + row) * image.width + left + column, in whatever row of the image they
// lie; 0 beyond the last of them.
TImage CopyRegion(const TImage& image, int left, int top, int width, int height);

float LevelFraction(int percent);
float ScaleFactor(float exposure, float intensity, float level, float referenceExposure, float referenceIntensity);

} // namespace Literal

#endif
