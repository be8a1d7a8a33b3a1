#include "images/THistogram.h"

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

// The spread of a normal distribution from its median absolute deviation.
constexpr double kSigmaPerMad = 1.4826;

// The element at `rank` (from 0) of the sorted values that `counts` describes.
std::size_t ValueAtRank(const std::vector<std::uint64_t>& counts, std::uint64_t rank)
{
    std::uint64_t seen = 0;
    for (std::size_t value = 0; value < counts.size(); ++value) {
        seen += counts[value];
        if (seen > rank)
            return value;
    }
    return counts.size() - 1;
}

// Twice the median, so that it is a whole number.
std::uint64_t DoubleMedian(const std::vector<std::uint64_t>& counts, std::uint64_t total)
{
    return total == 0 ? 0 : ValueAtRank(counts, (total - 1) / 2) + ValueAtRank(counts, total / 2);
}

} // namespace

void THistogram::Add(const TImage& image)
{
    for (const std::uint16_t pixel : image.pixels)
        ++counts[pixel];
    total += image.pixels.size();
}

std::uint16_t THistogram::Minimum() const
{
    return static_cast<std::uint16_t>(total == 0 ? 0 : ValueAtRank(counts, 0));
}

std::uint16_t THistogram::Maximum() const
{
    return static_cast<std::uint16_t>(total == 0 ? 0 : ValueAtRank(counts, total - 1));
}

double THistogram::Mean() const
{
    double sum = 0;
    for (std::size_t value = 0; value < counts.size(); ++value)
        sum += static_cast<double>(value) * static_cast<double>(counts[value]);
    return total == 0 ? 0 : sum / static_cast<double>(total);
}

double THistogram::StandardDeviation() const
{
    const double mean = Mean();
    double squares = 0;
    for (std::size_t value = 0; value < counts.size(); ++value) {
        const double deviation = static_cast<double>(value) - mean;
        squares += deviation * deviation * static_cast<double>(counts[value]);
    }
    return total == 0 ? 0 : std::sqrt(squares / static_cast<double>(total));
}

double THistogram::Median() const
{
    return static_cast<double>(DoubleMedian(counts, total)) / 2.0;
}

double THistogram::RobustSpread() const
{
    const std::uint64_t middle = DoubleMedian(counts, total);
    std::vector<std::uint64_t> deviations(2 * counts.size()); // in half units, as the median is
    for (std::size_t value = 0; value < counts.size(); ++value) {
        const std::uint64_t twice = 2 * value;
        deviations[twice > middle ? twice - middle : middle - twice] += counts[value];
    }
    return kSigmaPerMad * static_cast<double>(DoubleMedian(deviations, total)) / 4.0;
}

std::uint16_t THistogram::Percentile(double fraction) const
{
    if (total == 0)
        return 0;
    const auto rank = static_cast<std::uint64_t>(std::clamp(fraction, 0.0, 1.0) * static_cast<double>(total - 1));
    return static_cast<std::uint16_t>(ValueAtRank(counts, rank));
}

} // namespace workbench
