#include "report/Figures.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <tuple>

namespace workbench {

namespace {

constexpr std::size_t kMostProfilePoints = 512;
constexpr int kRing = 3; // pixels from the one that is looked at
constexpr std::size_t kMostPositions = 100;

double Rounded(double value)
{
    return std::round(value * 1000) / 1000;
}

nlohmann::json ProfileJson(const std::vector<double>& means)
{
    const std::size_t step = (means.size() + kMostProfilePoints - 1) / kMostProfilePoints;
    nlohmann::json values = nlohmann::json::array();
    for (std::size_t from = 0; from < means.size(); from += step) {
        const std::size_t to = std::min(from + step, means.size());
        double sum = 0;
        for (std::size_t i = from; i < to; ++i)
            sum += means[i];
        values.push_back(Rounded(sum / static_cast<double>(to - from)));
    }
    return {{"step", step}, {"values", std::move(values)}};
}

// The pixels of an image; beyond an edge lies its mirror image.
class TMirrored {
public:
    explicit TMirrored(const TImage& of) : image(of) {}
    int At(int x, int y) const
    {
        return image.pixels[static_cast<std::size_t>(Within(y, image.size.height)) *
                                static_cast<std::size_t>(image.size.width) +
                            static_cast<std::size_t>(Within(x, image.size.width))];
    }

private:
    static int Within(int at, int length)
    {
        if (at < 0)
            at = -at;
        if (at >= length)
            at = 2 * (length - 1) - at;
        return std::clamp(at, 0, length - 1);
    }
    const TImage& image;
};

// Noise between pixels that lie so far apart as those that are compared.
double NeighbourNoise(const TImage& image)
{
    const auto width = static_cast<std::size_t>(image.size.width);
    const auto height = static_cast<std::size_t>(image.size.height);
    constexpr std::size_t kStep = kRing;
    if (width <= kStep)
        return 0;
    TImage differences;
    const std::size_t rows = std::max<std::size_t>(1, height / 512); // some of the rows are enough
    for (std::size_t y = 0; y < height; y += rows) {
        const std::uint16_t* const row = image.pixels.data() + y * width;
        for (std::size_t x = kStep; x < width; ++x)
            differences.pixels.push_back(static_cast<std::uint16_t>(std::abs(int{row[x]} - int{row[x - kStep]})));
    }
    THistogram histogram;
    histogram.Add(differences);
    constexpr double kSigmaPerMad = 1.4826;
    return histogram.Median() * kSigmaPerMad / std::sqrt(2.0);
}

void Keep(std::vector<TUnusualPixel>& kept)
{
    std::sort(kept.begin(), kept.end(), [](const TUnusualPixel& one, const TUnusualPixel& other) {
        const int first = std::abs(one.difference), second = std::abs(other.difference);
        return std::tie(second, one.y, one.x) < std::tie(first, other.y, other.x);
    });
    if (kept.size() > kMostPositions)
        kept.resize(kMostPositions);
}

nlohmann::json PositionsJson(const std::vector<TUnusualPixel>& pixels)
{
    nlohmann::json json = nlohmann::json::array();
    for (const TUnusualPixel& pixel : pixels)
        json.push_back({pixel.x, pixel.y, pixel.value, pixel.difference});
    return json;
}

} // namespace

nlohmann::json ProfilesJson(const TImage& image)
{
    const auto width = static_cast<std::size_t>(image.size.width);
    const auto height = static_cast<std::size_t>(image.size.height);
    std::vector<double> rows, columns;
    std::vector<std::uint64_t> columnSums(width);
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint16_t* const row = image.pixels.data() + y * width;
        std::uint64_t sum = 0;
        for (std::size_t x = 0; x < width; ++x) {
            sum += row[x];
            columnSums[x] += row[x];
        }
        rows.push_back(static_cast<double>(sum) / static_cast<double>(width));
    }
    for (const std::uint64_t sum : columnSums)
        columns.push_back(static_cast<double>(sum) / static_cast<double>(height));
    return {{"rows", ProfileJson(rows)}, {"columns", ProfileJson(columns)}};
}

nlohmann::json HistogramJson(const THistogram& histogram)
{
    constexpr int kBars = 160;
    const int low = histogram.Percentile(0.001), high = histogram.Percentile(0.999);
    const int step = std::max(1, (high - low + kBars) / kBars);
    nlohmann::json counts = nlohmann::json::array();
    std::uint64_t below = 0, inside = 0;
    for (int value = 0; value < low; ++value)
        below += histogram.CountOf(static_cast<std::uint16_t>(value));
    for (int from = low; from <= high; from += step) {
        std::uint64_t count = 0;
        for (int value = from; value < std::min(from + step, 65536); ++value)
            count += histogram.CountOf(static_cast<std::uint16_t>(value));
        counts.push_back(count);
        inside += count;
    }
    return {{"from", low},
            {"step", step},
            {"counts", std::move(counts)},
            {"below", below},
            {"above", histogram.Count() - below - inside}};
}

TUnusualPixels FindUnusualPixels(const TImage& image)
{
    TUnusualPixels found;
    found.threshold = std::max(10.0, 10 * NeighbourNoise(image));
    const auto limit = static_cast<int>(found.threshold);
    const TMirrored at(image);
    for (int y = 0; y < image.size.height; ++y) {
        for (int x = 0; x < image.size.width; ++x) {
            const int value = at.At(x, y);
            // Most pixels are told from an unusual one by a single neighbour.
            if (std::abs(value - at.At(x - kRing, y)) <= limit || std::abs(value - at.At(x + kRing, y)) <= limit)
                continue;
            std::array<int, 8> ring{at.At(x - kRing, y),         at.At(x + kRing, y),
                                    at.At(x, y - kRing),         at.At(x, y + kRing),
                                    at.At(x - kRing, y - kRing), at.At(x + kRing, y - kRing),
                                    at.At(x - kRing, y + kRing), at.At(x + kRing, y + kRing)};
            std::sort(ring.begin(), ring.end());
            const int difference = value - (ring[3] + ring[4]) / 2;
            if (std::abs(difference) <= limit)
                continue;
            ++(difference > 0 ? found.hot : found.dead);
            std::vector<TUnusualPixel>& kept = difference > 0 ? found.hottest : found.deadest;
            kept.push_back({x, y, value, difference});
            if (kept.size() > 50 * kMostPositions)
                Keep(kept);
        }
    }
    Keep(found.hottest);
    Keep(found.deadest);
    return found;
}

nlohmann::json UnusualJson(const TUnusualPixels& unusual)
{
    return {{"threshold", Rounded(unusual.threshold)},
            {"hot", unusual.hot},
            {"dead", unusual.dead},
            {"hotPixels", PositionsJson(unusual.hottest)},
            {"deadPixels", PositionsJson(unusual.deadest)}};
}

TResidual ResidualOf(const TImage& image, const std::uint16_t* background)
{
    const std::uint16_t* const pixels = image.pixels.data();
    const std::size_t count = image.pixels.size();
    std::int64_t sum = 0;
    std::uint64_t squares = 0;
    // Sums of a block fit 32 bits, which processors add up faster.
    constexpr std::size_t kBlock = 16384;
    for (std::size_t from = 0; from < count; from += kBlock) {
        const std::size_t to = std::min(from + kBlock, count);
        std::int32_t blockSum = 0;
        for (std::size_t i = from; i < to; ++i) {
            const std::int32_t left = std::int32_t{pixels[i]} - std::int32_t{background[i]};
            blockSum += left;
            const auto size = static_cast<std::uint32_t>(left < 0 ? -left : left);
            squares += std::uint64_t{size} * size;
        }
        sum += blockSum;
    }
    const auto n = static_cast<double>(count);
    const double mean = static_cast<double>(sum) / n;
    return {mean, std::sqrt(std::max(0.0, static_cast<double>(squares) / n - mean * mean))};
}

nlohmann::json OptionalJson(const std::optional<double>& value)
{
    return value ? nlohmann::json(*value) : nlohmann::json();
}

} // namespace workbench
