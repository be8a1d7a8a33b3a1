#include "stacks/TDarkNoise.h"

#include "images/SampleStep.h"
#include "stacks/TFrameWatch.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace workbench {

namespace {

constexpr int kFinest = 16;                  // ADU from the usual level, of the first band on either side
constexpr std::size_t kOneSide = 1 + 2 * 12; // bands of half an octave, up to 65535 ADU
constexpr std::size_t kFarthest = 8191;      // ADU between two values; more counts as that
constexpr std::uint64_t kPairsInBand = 64;   // pairs of values in a band that is to count

// In whole numbers: a logarithm may be rounded otherwise on another system.
std::size_t BandOf(int above)
{
    const std::int64_t distance = std::abs(above);
    std::size_t band = 0;
    for (std::int64_t square = distance * distance / (kFinest * kFinest); square > 0; square /= 2)
        ++band;
    return std::min(band, kOneSide - 1) + (above < 0 ? kOneSide : 0);
}

// One for each possible level.
const std::vector<std::uint8_t>& Bands()
{
    static const std::vector<std::uint8_t> table = [] {
        std::vector<std::uint8_t> made;
        for (int above = -65535; above <= 65535; ++above)
            made.push_back(static_cast<std::uint8_t>(BandOf(above)));
        return made;
    }();
    return table;
}

constexpr int kWithout = 1 << 20; // no value

} // namespace

TDarkNoise::TDarkNoise() : bands(2 * kOneSide) {}

void TDarkNoise::TakeApart(const TImage& frame)
{
    sample.clear();
    const std::size_t step = SampleStep(frame.pixels.size(), kUsualSample);
    for (std::size_t i = 0; i < frame.pixels.size(); i += step)
        sample.push_back(frame.pixels[i]);
    const auto middle = sample.begin() + static_cast<std::ptrdiff_t>(sample.size() / 2);
    std::nth_element(sample.begin(), middle, sample.end());
    const int usual = *middle;
    const std::uint16_t highest = *std::max_element(frame.pixels.begin(), frame.pixels.end());
    const bool cutsOff =
        highest > usual && (IsHighest(highest) || std::count(frame.pixels.begin(), frame.pixels.end(), highest) > 1);
    second.resize(frame.pixels.size());
    cutOff.resize(frame.pixels.size());
    for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
        const bool isHighest = frame.pixels[i] == highest;
        second[i] = isHighest ? kWithout : frame.pixels[i] - usual;
        if (isHighest && cutsOff)
            cutOff[i] = static_cast<std::uint8_t>(std::min(cutOff[i] + 1, 2));
    }
}

void TDarkNoise::Add(const TImage& frame)
{
    TakeApart(frame);
    hasFirst = !hasFirst;
    if (hasFirst) {
        std::swap(first, second);
        return;
    }
    sums.resize(first.size());
    distances.resize(first.size());
    farthest.resize(first.size());
    ++pairs;
    const std::uint8_t* const bandOf = Bands().data() + 65535;
    for (std::size_t i = 0; i < first.size(); ++i) {
        sums[i] = first[i] + second[i];
        if (sums[i] >= kWithout / 2)
            continue;
        const auto distance = static_cast<float>(first[i] - second[i]);
        distances[i] += distance * distance;
        farthest[i] = std::max(farthest[i], distance * distance);
        if (sumsBefore.empty() || sumsBefore[i] >= kWithout / 2)
            continue;
        const int level = std::clamp(std::min(sums[i], sumsBefore[i]) / 2, -65535, 65535);
        TBand& band = bands[bandOf[level]];
        if (band.distances.empty())
            band.distances.resize(kFarthest + 1);
        ++band.distances[std::min(static_cast<std::size_t>(std::abs(first[i] - second[i])), kFarthest)];
        ++band.count;
        band.levels += level;
    }
    std::swap(sums, sumsBefore);
}

std::vector<float> TDarkNoise::Measured() const
{
    constexpr unsigned kFewest = 3;
    std::vector<float> variances(cutOff.size());
    for (std::size_t i = 0; i < variances.size(); ++i) {
        if (cutOff[i] > 1)
            variances[i] = std::numeric_limits<float>::infinity();
        else if (pairs >= kFewest)
            variances[i] = std::max(distances[i] - farthest[i], 0.0f) / static_cast<float>(2 * (pairs - 1));
    }
    return variances;
}

// By the median distance of two values, each of which has half of their variance. Distances are whole numbers; within
// one the median lies where its share of them says.
double TDarkNoise::TBand::Variance() const
{
    const double half = static_cast<double>(count) / 2;
    double below = 0;
    for (std::size_t distance = 0; distance < distances.size(); ++distance) {
        const double here = distances[distance];
        if (below + here >= half && here > 0) {
            const double low = distance == 0 ? 0 : static_cast<double>(distance) - 0.5;
            const double high = static_cast<double>(distance) + 0.5;
            const double median = low + (high - low) * (half - below) / here;
            return std::max(median * median * 1.4826 * 1.4826 / 2, 1.0 / 12);
        }
        below += here;
    }
    return 0;
}

// A straight line through the bands' variances, each with the weight that its number of pairs gives it. Theirs depends
// on the line, so that it is drawn again.
std::optional<TNoiseLaw> TDarkNoise::Law() const
{
    struct TPoint {
        double level, variance, count, expected;
    };
    std::vector<TPoint> points;
    for (const TBand& band : bands) {
        if (band.count >= kPairsInBand) {
            const double variance = band.Variance();
            points.push_back(
                {band.levels / static_cast<double>(band.count), variance, static_cast<double>(band.count), variance});
        }
    }
    if (points.size() < 2)
        return std::nullopt;
    TNoiseLaw law;
    double slopeError = 0;
    for (int round = 0; round < 4; ++round) {
        double weights = 0, levels = 0, variances = 0, squares = 0, products = 0;
        for (const TPoint& point : points) {
            const double weight = point.count / (point.expected * point.expected);
            weights += weight;
            levels += weight * point.level;
            variances += weight * point.variance;
            squares += weight * point.level * point.level;
            products += weight * point.level * point.variance;
        }
        const double determinant = weights * squares - levels * levels;
        if (determinant <= 0)
            return std::nullopt;
        law.variancePerAdu = (weights * products - levels * variances) / determinant;
        law.usualVariance = (variances - law.variancePerAdu * levels) / weights;
        slopeError = std::sqrt(weights / determinant) * 2.3; // of a variance by way of a median, from so many pairs
        for (TPoint& point : points)
            point.expected = std::max(law.usualVariance + law.variancePerAdu * point.level, 1.0 / 12);
    }
    if (law.usualVariance <= 0 || law.variancePerAdu < 3 * slopeError)
        return std::nullopt;
    return law;
}

} // namespace workbench
