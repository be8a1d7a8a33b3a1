#include "model/LiteralArithmetic.h"

#include <cmath>

namespace Literal {

TImage Average(const std::vector<TImage>& frames)
{
    TImage result = frames.front();
    for (std::size_t i = 0; i < result.pixels.size(); ++i) {
        float sum = static_cast<float>(frames.front().pixels[i]);
        for (std::size_t frame = 1; frame < frames.size(); ++frame) {
            sum = sum + static_cast<float>(frames[frame].pixels[i]);
        }
        const float quotient = sum / static_cast<float>(frames.size());
        const double rounded = std::floor(static_cast<double>(quotient) + 0.5);
        result.pixels[i] = static_cast<std::uint16_t>(static_cast<std::int64_t>(rounded) & 0xFFFF);
    }
    return result;
}

namespace {

// Left of column 0 lies the value of column 1; with a width of 1 that is the next row's, and nothing follows the last.
std::uint16_t LeftPad(const TImage& image, int row)
{
    if (image.width > 1) {
        return image.At(row, 1);
    }
    return row + 1 < image.height ? image.At(row + 1, 0) : image.At(row, 0);
}

TImage Padded(const TImage& image)
{
    TImage padded;
    padded.width = image.width + 2;
    padded.height = image.height + 2;
    for (int paddedRow = 0; paddedRow < padded.height; ++paddedRow) {
        int row = paddedRow - 1;
        row = row < 0 ? 0 : row;
        row = row > image.height - 1 ? image.height - 1 : row;
        padded.pixels.push_back(LeftPad(image, row));
        for (int column = 0; column < image.width; ++column) {
            padded.pixels.push_back(image.At(row, column));
        }
        padded.pixels.push_back(image.At(row, image.width - 1));
    }
    return padded;
}

// Five times the smallest of what is left; the fifth is the median.
std::uint16_t MedianOfNine(std::vector<std::uint16_t> values)
{
    std::uint16_t smallest = 0;
    for (int pass = 0; pass < 5; ++pass) {
        std::size_t where = 0;
        for (std::size_t i = 1; i < values.size(); ++i) {
            if (values[i] < values[where]) {
                where = i;
            }
        }
        smallest = values[where];
        values.erase(values.begin() + static_cast<std::ptrdiff_t>(where));
    }
    return smallest;
}

} // namespace

TImage Median(const TImage& image)
{
    const TImage padded = Padded(image);
    TImage result = image;
    result.pixels.clear();
    for (int row = 0; row < image.height; ++row) {
        for (int column = 0; column < image.width; ++column) {
            std::vector<std::uint16_t> nine;
            for (int r = row; r <= row + 2; ++r) {
                for (int c = column; c <= column + 2; ++c) {
                    nine.push_back(padded.At(r, c));
                }
            }
            result.pixels.push_back(MedianOfNine(nine));
        }
    }
    return result;
}

TImage Correction(const std::vector<TImage>& frames)
{
    return Median(frames.size() == 1 ? frames.front() : Average(frames));
}

TImage CopyRegion(const TImage& image, int left, int top, int width, int height)
{
    TImage result;
    result.width = width;
    result.height = height;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const std::size_t address =
                static_cast<std::size_t>((std::int64_t{top} + row) * image.width + left + column);
            result.pixels.push_back(address < image.pixels.size() ? image.pixels[address] : std::uint16_t{0});
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
    for (std::uint16_t& pixel : result.pixels) {
        const float value = static_cast<float>(pixel) * factor;
        const double shifted = static_cast<double>(value) + 0.5;
        if (std::isnan(shifted) || shifted < 1.0) {
            pixel = 0;
        } else if (shifted >= 65535.0) {
            pixel = 65535;
        } else {
            pixel = static_cast<std::uint16_t>(std::trunc(shifted));
        }
    }
    return result;
}

TImage Subtract(const TImage& image, const TImage& background)
{
    TImage result = image;
    for (std::size_t i = 0; i < result.pixels.size(); ++i) {
        const int difference = static_cast<int>(image.pixels[i]) - static_cast<int>(background.pixels.at(i));
        result.pixels[i] = static_cast<std::uint16_t>(difference < 0 ? 0 : difference);
    }
    return result;
}

TStatistics CalculateStatistics(const std::vector<std::uint16_t>& pixels)
{
    TStatistics result;
    result.minimum = pixels.front();
    result.maximum = pixels.front();
    double sum = 0.0;
    for (const std::uint16_t pixel : pixels) {
        result.minimum = pixel < result.minimum ? pixel : result.minimum;
        result.maximum = pixel > result.maximum ? pixel : result.maximum;
        sum += pixel;
    }
    result.average = static_cast<std::uint16_t>(std::trunc(sum / static_cast<double>(pixels.size())));
    return result;
}

} // namespace Literal
