#include "report/TDarkStack.h"

#include "base/TToolError.h"
#include "images/THistogram.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace workbench {

namespace {

constexpr double kSigmaPerMad = 1.4826;
constexpr double kHotBeyond = 10;  // spreads above the median: a hot pixel has noise of its own
constexpr double kStrayBeyond = 8; // spreads of a difference: a cosmic ray

// The value up to which a pixel counts.
int LimitOf(const THistogram& histogram)
{
    const double limit = histogram.Median() + kHotBeyond * std::max(1.0, histogram.RobustSpread());
    return static_cast<int>(std::min(limit, 65534.0)); // what is saturated has no noise
}

double LevelOf(const THistogram& histogram, int limit)
{
    double sum = 0, count = 0;
    for (int value = 0; value <= limit; ++value) {
        const auto number = static_cast<double>(histogram.CountOf(static_cast<std::uint16_t>(value)));
        sum += number * value;
        count += number;
    }
    return count > 0 ? sum / count : histogram.Mean();
}

double MedianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

// The variance of one frame: half of that of the difference of two, in which what is fixed cancels.
double PairVariance(const TImage& one, const TImage& other, int limit)
{
    constexpr int kZero = 65535;
    std::vector<std::uint64_t> counts(2 * kZero + 1);
    for (std::size_t i = 0; i < one.pixels.size(); ++i) {
        const int a = one.pixels[i], b = other.pixels[i];
        if (a + b <= 2 * limit)
            ++counts[static_cast<std::size_t>(a - b + kZero)];
    }
    const std::uint64_t total = std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
    if (total == 0)
        return 0;
    const auto rank = [](std::uint64_t wanted, auto&& at) {
        std::uint64_t seen = 0;
        for (int i = 0;; ++i) {
            seen += at(i);
            if (seen > wanted || i == 2 * kZero)
                return i;
        }
    };
    const int median = rank(total / 2, [&counts](int i) { return counts[static_cast<std::size_t>(i)]; });
    const auto countAt = [&counts](int i) {
        return i < 0 || i > 2 * kZero ? std::uint64_t{0} : counts[static_cast<std::size_t>(i)];
    };
    const int deviation = rank(total / 2, [&](int distance) {
        return distance == 0 ? countAt(median) : countAt(median - distance) + countAt(median + distance);
    });
    const double reach = kStrayBeyond * std::max(1.0, kSigmaPerMad * deviation);
    double count = 0, sum = 0, squares = 0;
    for (int i = std::max(0, median - static_cast<int>(reach));
         i <= std::min(2 * kZero, median + static_cast<int>(reach)); ++i) {
        const auto number = static_cast<double>(counts[static_cast<std::size_t>(i)]);
        const double distance = i - median;
        count += number;
        sum += number * distance;
        squares += number * distance * distance;
    }
    return count < 2 ? 0 : (squares - sum * sum / count) / (count - 1) / 2;
}

} // namespace

void TDarkStack::Add(TImage& frame, const std::string& name)
{
    if (!levels.empty() && frame.pixels.size() != pixels)
        throw TToolError(name, "has another size than the dark frames before it");
    THistogram histogram;
    histogram.Add(frame);
    const int limit = LimitOf(histogram);
    levels.push_back(LevelOf(histogram, limit));
    names.push_back(name);
    pixels = frame.pixels.size();
    if (levels.size() % 2 == 1) {
        std::swap(waiting, frame);
        waitingLimit = limit;
    } else {
        variances.push_back(PairVariance(waiting, frame, std::min(limit, waitingLimit)));
    }
}

TFitPoint TDarkStack::Variance(double x) const
{
    const auto pairs = static_cast<double>(variances.size());
    const double variance = std::accumulate(variances.begin(), variances.end(), 0.0) / pairs;
    return {x, variance, std::max(1e-9, variance * std::sqrt(2 / (pairs * static_cast<double>(pixels))))};
}

TFitPoint TDarkStack::Level(double x) const
{
    const auto count = static_cast<double>(levels.size());
    const double mean = std::accumulate(levels.begin(), levels.end(), 0.0) / count;
    double squares = 0;
    for (const double level : levels)
        squares += (level - mean) * (level - mean);
    // Never better than the pixels' noise allows, also where levels agree by chance.
    const double noise = variances.empty() ? 1 : Variance(0).y;
    const double scatter = count > 1 ? squares / (count - 1) : 0;
    return {x, mean, std::sqrt(std::max(scatter, std::max(noise, 1e-6) / static_cast<double>(pixels)) / count)};
}

std::optional<TLineFit> TDarkStack::Drift() const
{
    std::vector<TFitPoint> points;
    for (std::size_t frame = 0; frame < levels.size(); ++frame)
        points.push_back({static_cast<double>(frame), levels[frame], 0});
    return FitLine(points);
}

double TDarkStack::Limit() const
{
    const double median = MedianOf(levels);
    std::vector<double> distances;
    for (const double level : levels)
        distances.push_back(std::abs(level - median));
    constexpr double kBeyond = 5, kLeastAdu = 0.5;
    return std::max(kLeastAdu, kBeyond * kSigmaPerMad * MedianOf(distances));
}

std::vector<std::size_t> TDarkStack::FramesThatAreOff() const
{
    std::vector<std::size_t> off;
    const double median = MedianOf(levels), limit = Limit();
    for (std::size_t frame = 0; frame < levels.size(); ++frame) {
        if (std::abs(levels[frame] - median) > limit)
            off.push_back(frame);
    }
    return off;
}

} // namespace workbench
