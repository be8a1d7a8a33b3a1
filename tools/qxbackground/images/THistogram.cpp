#include "images/THistogram.h"

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

// The spread of a normal distribution from its median absolute deviation.
constexpr double kSigmaPerMad = 1.4826;

// The element at `rank` (from 0) of the sorted values that `counts` describes.
std::size_t IndexAtRank(const std::uint64_t* counts, std::size_t size, std::uint64_t rank)
{
    std::uint64_t seen = 0;
    for (std::size_t index = 0; index < size; ++index) {
        seen += counts[index];
        if (seen > rank)
            return index;
    }
    return size == 0 ? 0 : size - 1;
}

} // namespace

void THistogram::Widen(std::size_t value)
{
    lowest = std::min(lowest, value);
    end = std::max(end, value + 1);
}

void THistogram::Clear()
{
    for (std::size_t value = lowest; value < end; ++value)
        counts[value] = 0;
    total = 0;
    lowest = counts.size();
    end = 0;
}

void THistogram::Add(const THistogram& other)
{
    total += other.total;
    for (std::size_t value = other.lowest; value < other.end; ++value)
        counts[value] += other.counts[value];
    lowest = std::min(lowest, other.lowest);
    end = std::max(end, other.end);
}

void THistogram::Add(const TImage& image)
{
    const std::vector<std::uint16_t>& pixels = image.pixels;
    total += pixels.size();
    if (pixels.size() < counts.size()) {
        for (const std::uint16_t pixel : pixels) {
            ++counts[pixel];
            Widen(pixel);
        }
        return;
    }
    // Neighbours are often equal, and a count that was just written is slow to read again: they go to different tables.
    constexpr std::size_t kTables = 4;
    std::vector<std::uint32_t> tables(kTables * counts.size()); // a page has fewer than 2^31 pixels
    std::uint32_t* const first = tables.data();
    std::uint32_t* const second = first + counts.size();
    std::uint32_t* const third = second + counts.size();
    std::uint32_t* const fourth = third + counts.size();
    std::size_t i = 0;
    for (; i + kTables <= pixels.size(); i += kTables) {
        ++first[pixels[i]];
        ++second[pixels[i + 1]];
        ++third[pixels[i + 2]];
        ++fourth[pixels[i + 3]];
    }
    for (; i < pixels.size(); ++i)
        ++first[pixels[i]];
    for (std::size_t value = 0; value < counts.size(); ++value) {
        const std::uint64_t count = std::uint64_t{first[value]} + second[value] + third[value] + fourth[value];
        counts[value] += count;
        if (count > 0)
            Widen(value);
    }
}

std::size_t THistogram::ValueAtRank(std::uint64_t rank) const
{
    return total == 0 ? 0 : lowest + IndexAtRank(counts.data() + lowest, end - lowest, rank);
}

// Twice the median, so that it is a whole number.
std::uint64_t THistogram::DoubleMedian() const
{
    return total == 0 ? 0 : ValueAtRank((total - 1) / 2) + ValueAtRank(total / 2);
}

std::uint16_t THistogram::Minimum() const
{
    return static_cast<std::uint16_t>(total == 0 ? 0 : lowest);
}

std::uint16_t THistogram::Maximum() const
{
    return static_cast<std::uint16_t>(total == 0 ? 0 : end - 1);
}

double THistogram::Mean() const
{
    double sum = 0;
    for (std::size_t value = lowest; value < end; ++value)
        sum += static_cast<double>(value) * static_cast<double>(counts[value]);
    return total == 0 ? 0 : sum / static_cast<double>(total);
}

double THistogram::StandardDeviation() const
{
    const double mean = Mean();
    double squares = 0;
    for (std::size_t value = lowest; value < end; ++value) {
        const double deviation = static_cast<double>(value) - mean;
        squares += deviation * deviation * static_cast<double>(counts[value]);
    }
    return total == 0 ? 0 : std::sqrt(squares / static_cast<double>(total));
}

double THistogram::Median() const
{
    return static_cast<double>(DoubleMedian()) / 2.0;
}

double THistogram::RobustSpread() const
{
    if (total == 0)
        return 0;
    const std::uint64_t middle = DoubleMedian();
    std::vector<std::uint64_t> deviations(2 * (end - lowest)); // in half units, as the median is
    for (std::size_t value = lowest; value < end; ++value) {
        const std::uint64_t twice = 2 * value;
        deviations[twice > middle ? twice - middle : middle - twice] += counts[value];
    }
    const std::size_t both = IndexAtRank(deviations.data(), deviations.size(), (total - 1) / 2) +
                             IndexAtRank(deviations.data(), deviations.size(), total / 2);
    return kSigmaPerMad * static_cast<double>(both) / 4.0;
}

std::uint16_t THistogram::Percentile(double fraction) const
{
    if (total == 0)
        return 0;
    const auto rank = static_cast<std::uint64_t>(std::clamp(fraction, 0.0, 1.0) * static_cast<double>(total - 1));
    return static_cast<std::uint16_t>(ValueAtRank(rank));
}

} // namespace workbench
