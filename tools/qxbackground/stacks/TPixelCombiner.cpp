#include "stacks/TPixelCombiner.h"

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

double MedianOf(const std::uint16_t* sorted, std::size_t begin, std::size_t end)
{
    const std::size_t middle = begin + (end - begin) / 2;
    return (end - begin) % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2.0;
}

} // namespace

TPixelCombiner::TPixelCombiner(const TStackOptions& wanted, double noiseAdu, std::size_t count)
    : options(wanted), noise(std::max(noiseAdu, 0.5)), frames(count)
{}

double TPixelCombiner::MedianSpread(const std::uint16_t* sorted, TRange range, double median)
{
    distances.clear();
    for (std::size_t i = range.begin; i < range.end; ++i)
        distances.push_back(std::abs(sorted[i] - median));
    std::sort(distances.begin(), distances.end());
    const std::size_t middle = distances.size() / 2;
    const double half =
        distances.size() % 2 == 1 ? distances[middle] : (distances[middle - 1] + distances[middle]) / 2.0;
    return 1.4826 * half;
}

double TPixelCombiner::WinsorSpread(const std::uint16_t* sorted, TRange range, double median)
{
    constexpr int kMostRounds = 50;
    if (range.Count() < 2)
        return 0;
    const auto count = static_cast<double>(range.Count());
    const auto deviation = [&](double lowest, double highest) {
        double sum = 0, squares = 0;
        for (std::size_t i = range.begin; i < range.end; ++i)
            sum += std::clamp<double>(sorted[i], lowest, highest);
        for (std::size_t i = range.begin; i < range.end; ++i) {
            const double distance = std::clamp<double>(sorted[i], lowest, highest) - sum / count;
            squares += distance * distance;
        }
        return std::sqrt(squares / (count - 1));
    };
    double spread = deviation(0, 65535);
    for (int round = 0; round < kMostRounds; ++round) {
        const double next = 1.134 * deviation(median - 1.5 * spread, median + 1.5 * spread);
        const bool settled = std::abs(next - spread) <= 0.0005 * spread;
        spread = next;
        if (settled)
            break;
    }
    return spread;
}

TPixelCombiner::TRange TPixelCombiner::Kept(const std::uint16_t* sorted)
{
    TRange kept{0, frames};
    if (options.rejection == TRejection::None)
        return kept;
    if (options.rejection == TRejection::MinMax)
        return {options.extremes, frames - options.extremes};
    for (;;) {
        const double median = MedianOf(sorted, kept.begin, kept.end);
        const auto within = [&](double spread) {
            TRange range = kept;
            while (sorted[range.begin] < median - options.low * spread)
                ++range.begin;
            while (sorted[range.end - 1] > median + options.high * spread)
                --range.end;
            return range;
        };
        TRange next = within(noise);
        if (next.Count() == kept.Count()) // nor can a wider spread reject anything
            return kept;
        next = within(std::max(noise, options.rejection == TRejection::Sigma ? MedianSpread(sorted, kept, median)
                                                                             : WinsorSpread(sorted, kept, median)));
        if (next.Count() == kept.Count())
            return kept;
        kept = next;
    }
}

TPixelCombiner::TResult TPixelCombiner::Combine(std::uint16_t* values)
{
    std::sort(values, values + frames);
    const TRange kept = Kept(values);
    TResult result;
    result.lowest = values[kept.begin];
    result.highest = values[kept.end - 1];
    result.rejected = static_cast<unsigned>(frames - kept.Count());
    if (options.combination == TCombination::Median) {
        result.exact = MedianOf(values, kept.begin, kept.end);
        result.value = static_cast<std::uint16_t>(std::floor(result.exact + 0.5));
        return result;
    }
    std::uint64_t sum = 0;
    for (std::size_t i = kept.begin; i < kept.end; ++i)
        sum += values[i];
    result.exact = static_cast<double>(sum) / static_cast<double>(kept.Count());
    result.value = static_cast<std::uint16_t>((2 * sum + kept.Count()) / (2 * kept.Count()));
    return result;
}

} // namespace workbench
