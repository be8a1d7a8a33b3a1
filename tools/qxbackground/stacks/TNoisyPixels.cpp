#include "stacks/TNoisyPixels.h"

#include "base/Wording.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>

namespace workbench {

namespace {

// A tile is worked on with what lies around it: a forecast looks two pixels far, is tried on pixels up to two pixels
// away, and how much light there is, on which noise depends, is seen one pixel further.
constexpr int kTile = 32;
constexpr int kAround = 5;
constexpr int kSide = kTile + 2 * kAround;

using TPlane = std::array<double, static_cast<std::size_t>(kSide) * kSide>;

constexpr double kNothing = std::numeric_limits<double>::infinity();
constexpr double kWorthIt = 0.1; // of the usual variance: so much more is to be done something about
constexpr double kNoiseGoes = 5; // standard deviations

std::size_t At(int x, int y)
{
    return static_cast<std::size_t>(y) * kSide + static_cast<std::size_t>(x);
}

// Of each pixel, the sum over the square around it without the pixel itself; outside of the plane is nothing.
void SumAround(const TPlane& of, int radius, TPlane& sums)
{
    TPlane rows;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            double sum = 0;
            for (int near = std::max(x - radius, 0); near <= std::min(x + radius, kSide - 1); ++near)
                sum += of[At(near, y)];
            rows[At(x, y)] = sum;
        }
    }
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            double sum = 0;
            for (int near = std::max(y - radius, 0); near <= std::min(y + radius, kSide - 1); ++near)
                sum += rows[At(x, near)];
            sums[At(x, y)] = sum - of[At(x, y)];
        }
    }
}

} // namespace

// A part of an image with what lies around it, as planes in double precision.
class TNoisyPixels::TTile {
public:
    explicit TTile(const TNoisyPixels& of) : all(of) {}

    // Whether there is anything to be done.
    bool Take(const std::vector<std::uint16_t>& image, int pedestal, int tileLeft, int tileTop);
    void Put(TImage& image, int pedestal);

private:
    // What the neighbours of each pixel foretell, and the variance that their own noise gives it.
    struct TForecast {
        TPlane value, variance;
    };

    void WeighLight();
    void Mean(int radius);
    void Surface();
    void Try();

    const TNoisyPixels& all;
    int left = 0, top = 0; // of the planes, in the image
    TPlane value, excess;  // of each pixel: ADU; the variance that dark current beyond the usual brings
    TPlane weight;         // 1 / its whole variance; 0: has no value
    TForecast forecast;    // the one being tried
    TPlane best, doubt;    // the best one, and its variance, with what neighbours fail by
    TPlane scratch, sums, weights;
};

bool TNoisyPixels::TTile::Take(const std::vector<std::uint16_t>& image, int pedestal, int tileLeft, int tileTop)
{
    left = tileLeft - kAround;
    top = tileTop - kAround;
    bool any = false;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const std::size_t at = At(x, y);
            value[at] = excess[at] = weight[at] = 0;
            if (left + x < 0 || top + y < 0 || left + x >= all.size.width || top + y >= all.size.height)
                continue;
            const std::size_t pixel = static_cast<std::size_t>(top + y) * static_cast<std::size_t>(all.size.width) +
                                      static_cast<std::size_t>(left + x);
            value[at] = static_cast<double>(image[pixel]) - pedestal;
            excess[at] = all.variancePerAdu * static_cast<double>(all.above[pixel]);
            if (all.kinds[pixel] == Usual || all.kinds[pixel] == Noisy)
                weight[at] = 1 / (all.usualVariance + excess[at]);
            const bool isInside = x >= kAround && y >= kAround && x < kSide - kAround && y < kSide - kAround;
            any = any || (isInside && (all.kinds[pixel] == Noisy || all.kinds[pixel] == Erratic));
        }
    }
    return any;
}

// Light has noise, too: as much as is around a pixel, on it as on its neighbours.
void TNoisyPixels::TTile::WeighLight()
{
    Mean(1);
    for (std::size_t at = 0; at < weight.size(); ++at) {
        if (weight[at] > 0)
            weight[at] = 1 / (1 / weight[at] + std::max(forecast.value[at], 0.0) * all.law.variancePerAdu);
    }
}

// The mean of the neighbours, each with the weight that its noise leaves it.
void TNoisyPixels::TTile::Mean(int radius)
{
    for (std::size_t at = 0; at < value.size(); ++at)
        scratch[at] = weight[at] * value[at];
    SumAround(scratch, radius, sums);
    SumAround(weight, radius, weights);
    for (std::size_t at = 0; at < value.size(); ++at) {
        const bool isThere = weights[at] > 0;
        forecast.value[at] = isThere ? sums[at] / weights[at] : 0;
        forecast.variance[at] = isThere ? 1 / weights[at] : kNothing;
    }
}

// The surface of second order, in rows and in columns, through the eight neighbours: follows a star or an edge, and has
// more noise.
void TNoisyPixels::TTile::Surface()
{
    forecast.value.fill(0);
    forecast.variance.fill(kNothing);
    for (int y = 1; y < kSide - 1; ++y) {
        for (int x = 1; x < kSide - 1; ++x) {
            double sides = 0, corners = 0, sidesVariance = 0, cornersVariance = 0;
            bool isThere = true;
            const auto add = [&](int dx, int dy, double& sum, double& variance) {
                const std::size_t at = At(x + dx, y + dy);
                isThere = isThere && weight[at] > 0;
                sum += value[at];
                variance += 1 / weight[at];
            };
            for (const int step : {-1, 1}) {
                add(step, 0, sides, sidesVariance);
                add(0, step, sides, sidesVariance);
                add(step, -1, corners, cornersVariance);
                add(step, 1, corners, cornersVariance);
            }
            if (isThere) {
                forecast.value[At(x, y)] = sides / 2 - corners / 4;
                forecast.variance[At(x, y)] = sidesVariance / 4 + cornersVariance / 16;
            }
        }
    }
}

// How far the forecast misses the pixels around, beyond what their noise and its own explain, tells how far it may miss
// this one.
void TNoisyPixels::TTile::Try()
{
    const auto trust = [this](std::size_t at) {
        return weight[at] > 0 ? 1 / (1 / weight[at] + forecast.variance[at]) : 0;
    };
    for (std::size_t at = 0; at < value.size(); ++at) {
        const double miss = trust(at) * (value[at] - forecast.value[at]);
        scratch[at] = miss * miss - trust(at);
    }
    SumAround(scratch, 2, sums);
    for (std::size_t at = 0; at < value.size(); ++at)
        scratch[at] = trust(at) * trust(at);
    SumAround(scratch, 2, weights);
    for (std::size_t at = 0; at < value.size(); ++at) {
        const double misses = weights[at] > 0 ? std::max(sums[at] / weights[at], 0.0) : kNothing;
        if (misses + forecast.variance[at] < doubt[at]) {
            doubt[at] = misses + forecast.variance[at];
            best[at] = forecast.value[at];
        }
    }
}

void TNoisyPixels::TTile::Put(TImage& image, int pedestal)
{
    WeighLight();
    doubt.fill(kNothing);
    for (const int radius : {1, 2}) {
        Mean(radius);
        Try();
    }
    Surface();
    Try();
    for (int y = kAround; y < std::min(kSide - kAround, all.size.height - top); ++y) {
        for (int x = kAround; x < std::min(kSide - kAround, all.size.width - left); ++x) {
            const std::size_t at = At(x, y);
            const std::size_t pixel = static_cast<std::size_t>(top + y) * static_cast<std::size_t>(all.size.width) +
                                      static_cast<std::size_t>(left + x);
            const TKind kind = all.kinds[pixel];
            if ((kind != Noisy && kind != Erratic) || doubt[at] == kNothing)
                continue;
            double kept = 0, off = 0;
            if (kind == Noisy) {
                off = value[at] - best[at];
                const double variance = doubt[at] + 1 / weight[at];
                kept = (variance - excess[at]) / variance;
                if (off * off > kNoiseGoes * kNoiseGoes * variance)
                    kept = off > 0 || 2 * excess[at] < variance ? 1 : 0;
            }
            const double drawn = std::floor(best[at] + kept * off + pedestal + 0.5);
            image.pixels[pixel] = static_cast<std::uint16_t>(std::clamp(drawn, 0.0, 65535.0));
        }
    }
}

TNoisyPixels::TNoisyPixels(TSize frameSize, const std::vector<float>& dark, const TNoiseLaw& lawOfOne,
                           const std::vector<float>& measured, std::uint64_t frameCount)
    : size(frameSize), above(dark), erratic(dark.size()), law(lawOfOne), frames(static_cast<double>(frameCount))
{
    constexpr double kErratic = 8; // times the variance that a pixel's level explains
    const auto middle = above.begin() + static_cast<std::ptrdiff_t>(above.size() / 2);
    std::nth_element(above.begin(), middle, above.end());
    const float usual = *middle;
    for (std::size_t i = 0; i < above.size(); ++i) {
        above[i] = std::max(dark[i] - usual, 0.0f);
        const double explained = law.usualVariance + law.variancePerAdu * static_cast<double>(above[i]);
        erratic[i] = static_cast<double>(measured[i]) > kErratic * explained;
    }
}

TNoisyPixels TNoisyPixels::Cut(int left, int top, TSize part) const
{
    TNoisyPixels cut;
    cut.size = part;
    cut.law = law;
    cut.frames = frames;
    cut.above.reserve(part.Pixels());
    cut.erratic.reserve(part.Pixels());
    for (int row = 0; row < part.height; ++row) {
        const std::ptrdiff_t start = static_cast<std::ptrdiff_t>(top + row) * size.width + left;
        cut.above.insert(cut.above.end(), above.begin() + start, above.begin() + start + part.width);
        cut.erratic.insert(cut.erratic.end(), erratic.begin() + start, erratic.begin() + start + part.width);
    }
    return cut;
}

// The image's own noise, and that of the average of the dark frames, which is scaled with it.
void TNoisyPixels::Expect(double times, double level, const THotPixels& hot)
{
    const double ofAverage = times * level * times * level / frames;
    variancePerAdu = law.variancePerAdu * (times + ofAverage);
    usualVariance = law.usualVariance * (std::max(times, 1.0) + ofAverage);
    kinds.assign(size.Pixels(), Usual);
    for (const THotPixels::TPixel& pixel : hot.Pixels())
        kinds[static_cast<std::size_t>(pixel.y) * static_cast<std::size_t>(size.width) +
              static_cast<std::size_t>(pixel.x)] = pixel.dead ? Dead : Noisy;
    for (std::size_t i = 0; i < above.size(); ++i) {
        if (kinds[i] == Usual && variancePerAdu * static_cast<double>(above[i]) > kWorthIt * usualVariance)
            kinds[i] = Noisy;
        if (kinds[i] != Dead && erratic[i])
            kinds[i] = Erratic;
    }
}

void TNoisyPixels::Repair(TImage& image, int pedestal) const
{
    const std::vector<std::uint16_t> before = image.pixels;
    const auto tile = std::make_unique<TTile>(*this);
    for (int top = 0; top < size.height; top += kTile) {
        for (int left = 0; left < size.width; left += kTile) {
            if (tile->Take(before, pedestal, left, top))
                tile->Put(image, pedestal);
        }
    }
}

std::string TNoisyPixels::Counts() const
{
    const auto count = [this](TKind kind) {
        return static_cast<std::uint64_t>(std::count(kinds.begin(), kinds.end(), kind));
    };
    return Counted(count(Noisy) + count(Erratic), "pixel") + ", " + std::to_string(count(Erratic)) + " of them erratic";
}

} // namespace workbench
