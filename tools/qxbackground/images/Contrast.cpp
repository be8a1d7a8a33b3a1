#include "images/Contrast.h"

#include "images/THistogram.h"

#include <algorithm>

namespace workbench {

namespace {

constexpr int kLinePixels = 4;

} // namespace

TStretch StretchOf(const TImage& image)
{
    THistogram histogram;
    histogram.Add(image);
    const int black = histogram.Percentile(0.005);
    return {black, std::max<int>(histogram.Percentile(0.995), black + 1)};
}

TPicture Render(const TImage& image, const TStretch& stretch)
{
    TPicture picture{image.size.width, image.size.height, {}};
    picture.pixels.reserve(image.pixels.size());
    const int span = stretch.white - stretch.black;
    for (const std::uint16_t pixel : image.pixels) {
        const int above = std::clamp(int{pixel} - stretch.black, 0, span);
        picture.pixels.push_back(static_cast<std::uint8_t>(above * 255 / span));
    }
    return picture;
}

TPicture SideBySide(const std::vector<const TImage*>& panels, std::vector<std::string>& legend)
{
    int span = 1;
    for (const TImage* panel : panels) {
        const TStretch own = StretchOf(*panel);
        span = std::max(span, own.white - own.black);
    }
    TPicture all;
    for (const TImage* panel : panels) {
        all.width += panel->size.width + (all.width > 0 ? kLinePixels : 0);
        all.height = std::max(all.height, panel->size.height);
    }
    all.pixels.assign(static_cast<std::size_t>(all.width) * static_cast<std::size_t>(all.height), 255);
    std::ptrdiff_t left = 0;
    for (const TImage* panel : panels) {
        TStretch stretch = StretchOf(*panel);
        stretch.white = stretch.black + span;
        legend.push_back("black " + std::to_string(stretch.black) + ", white " + std::to_string(stretch.white));
        const TPicture picture = Render(*panel, stretch);
        for (std::ptrdiff_t row = 0; row < picture.height; ++row)
            std::copy_n(picture.pixels.begin() + row * picture.width, picture.width,
                        all.pixels.begin() + row * all.width + left);
        left += picture.width + kLinePixels;
    }
    return all;
}

} // namespace workbench
