#include "pictures/TShown.h"

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

constexpr int kMostDots = 640, kFewestDots = 400; // of the longer side, where pixels allow

float MeanOfSquare(const TImage& image, int left, int top, int side)
{
    const int right = std::min(left + side, image.size.width), bottom = std::min(top + side, image.size.height);
    std::uint64_t sum = 0;
    for (int y = top; y < bottom; ++y) {
        const std::uint16_t* const row =
            image.pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(image.size.width);
        for (int x = left; x < right; ++x)
            sum += row[x];
    }
    return static_cast<float>(static_cast<double>(sum) / ((right - left) * (bottom - top)));
}

} // namespace

TShown::TShown(const TImage& image)
{
    const int longer = std::max(image.size.width, image.size.height);
    meanOf = (longer + kMostDots - 1) / kMostDots;
    squareDots = std::max(1, kFewestDots / longer);
    width = (image.size.width + meanOf - 1) / meanOf;
    height = (image.size.height + meanOf - 1) / meanOf;
    values.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            values.push_back(MeanOfSquare(image, x * meanOf, y * meanOf, meanOf));
    }
}

TStretch TShown::Stretch() const
{
    std::vector<float> sorted = values;
    const auto at = [&sorted](double fraction) {
        const auto rank = static_cast<std::ptrdiff_t>(fraction * static_cast<double>(sorted.size() - 1));
        std::nth_element(sorted.begin(), sorted.begin() + rank, sorted.end());
        return static_cast<double>(sorted[static_cast<std::size_t>(rank)]);
    };
    const double low = at(0.005), middle = at(0.5), many = at(0.98), most = at(0.995);
    // Noise and a glow fade out smoothly and are shown whole. Stars and hot pixels reach so far that the sky's own
    // structure would be lost: then 98 of 100 dots have shades, and what is not much further above the middle than the
    // darkest are below.
    constexpr double kSmooth = 1.5, kSky = 3;
    const bool isSmooth = most - middle <= kSmooth * (many - middle);
    const double high = isSmooth ? most : std::min(most, std::max(many, middle + kSky * (middle - low)));
    const int black = static_cast<int>(std::floor(low)), white = static_cast<int>(std::ceil(high));
    return white > black ? TStretch{black, white}
                         : TStretch{std::max(0, black - 1), std::min(black + 1, 65535)}; // all the same
}

void TShown::DrawInto(TPicture& picture, int left, int top, const TStretch& stretch) const
{
    const float scale = 255.0f / static_cast<float>(stretch.white - stretch.black);
    for (int y = 0; y < Height(); ++y) {
        for (int x = 0; x < Width(); ++x) {
            const std::size_t at = static_cast<std::size_t>(y / squareDots) * static_cast<std::size_t>(width) +
                                   static_cast<std::size_t>(x / squareDots);
            const float shade = (values[at] - static_cast<float>(stretch.black)) * scale;
            picture.At(left + x, top + y) = static_cast<std::uint8_t>(std::lround(std::clamp(shade, 0.0f, 255.0f)));
        }
    }
}

std::string TShown::SizeText() const
{
    const auto square = [](int side) { return std::to_string(side) + " x " + std::to_string(side); };
    if (meanOf > 1)
        return "each dot is the mean of " + square(meanOf) + " pixels";
    return squareDots > 1 ? "each pixel is drawn as " + square(squareDots) + " dots" : "each dot is one pixel";
}

} // namespace workbench
