#include "images/TSeriesStatistics.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

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

double MedianOf(std::vector<std::uint16_t>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2.0;
}

double SpreadOf(const std::vector<double>& values)
{
    double sum = 0, squares = 0;
    for (const double value : values)
        sum += value;
    const double mean = sum / static_cast<double>(values.size());
    for (const double value : values)
        squares += (value - mean) * (value - mean);
    return std::sqrt(squares / static_cast<double>(values.size()));
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

double RowPattern(const TImage& image)
{
    const auto width = static_cast<std::size_t>(image.size.width);
    const auto height = static_cast<std::size_t>(image.size.height);
    std::vector<double> medians;
    std::vector<std::uint16_t> line(width);
    for (std::size_t row = 0; row < height; ++row) {
        std::copy_n(image.pixels.data() + row * width, width, line.begin());
        medians.push_back(MedianOf(line));
    }
    return SpreadOf(medians);
}

double ColumnPattern(const TImage& image)
{
    constexpr std::size_t kColumnsAtOnce = 32; // one cache line of pixels per row
    const auto width = static_cast<std::size_t>(image.size.width);
    const auto height = static_cast<std::size_t>(image.size.height);
    std::vector<double> medians;
    std::vector<std::vector<std::uint16_t>> lines(std::min(kColumnsAtOnce, width), std::vector<std::uint16_t>(height));
    for (std::size_t left = 0; left < width; left += kColumnsAtOnce) {
        const std::size_t columns = std::min(kColumnsAtOnce, width - left);
        for (std::size_t row = 0; row < height; ++row) {
            for (std::size_t column = 0; column < columns; ++column)
                lines[column][row] = image.pixels[row * width + left + column];
        }
        for (std::size_t column = 0; column < columns; ++column)
            medians.push_back(MedianOf(lines[column]));
    }
    return SpreadOf(medians);
}

void TSeriesStatistics::Add(const TImage& image)
{
    histogram.Add(image);
    rowPatterns += RowPattern(image);
    columnPatterns += ColumnPattern(image);
    pages += 1;
}

nlohmann::json TSeriesStatistics::Json() const
{
    return {{"pixels", histogram.Count()},
            {"median", histogram.Median()},
            {"mean", histogram.Mean()},
            {"spread", histogram.RobustSpread()},
            {"standardDeviation", histogram.StandardDeviation()},
            {"minimum", histogram.Minimum()},
            {"maximum", histogram.Maximum()},
            {"rowPattern", MeanRowPattern()},
            {"columnPattern", MeanColumnPattern()},
            {"pixelsAtZero", histogram.CountOf(0)}};
}

std::string StatisticsTable(const std::vector<std::string>& titles, const std::vector<const TSeriesStatistics*>& series)
{
    std::string table;
    char cell[64];
    const auto row = [&](const char* label, const std::function<std::string(const TSeriesStatistics&)>& text) {
        std::snprintf(cell, sizeof cell, "  %-30s", label);
        table += cell;
        for (const TSeriesStatistics* column : series) {
            std::snprintf(cell, sizeof cell, "%20s", text(*column).c_str());
            table += cell;
        }
        table += '\n';
    };
    const auto number = [](double value) {
        char text[40];
        std::snprintf(text, sizeof text, "%.2f", value);
        return std::string(text);
    };
    std::snprintf(cell, sizeof cell, "  %-30s", "ADU");
    table += cell;
    for (const std::string& title : titles) {
        std::snprintf(cell, sizeof cell, "%20s", title.c_str());
        table += cell;
    }
    table += '\n';
    row("median", [&](const auto& s) { return number(s.Histogram().Median()); });
    row("mean", [&](const auto& s) { return number(s.Histogram().Mean()); });
    row("spread (1.4826 x MAD)", [&](const auto& s) { return number(s.Histogram().RobustSpread()); });
    row("standard deviation", [&](const auto& s) { return number(s.Histogram().StandardDeviation()); });
    row("row pattern", [&](const auto& s) { return number(s.MeanRowPattern()); });
    row("column pattern", [&](const auto& s) { return number(s.MeanColumnPattern()); });
    row("minimum ... maximum", [&](const auto& s) {
        return std::to_string(s.Histogram().Minimum()) + " ... " + std::to_string(s.Histogram().Maximum());
    });
    row("pixels at zero (clipped)", [&](const auto& s) {
        const auto zeros = static_cast<double>(s.Histogram().CountOf(0));
        const auto all = static_cast<double>(s.Histogram().Count());
        return std::to_string(s.Histogram().CountOf(0)) + " (" + number(all > 0 ? 100 * zeros / all : 0) + " %)";
    });
    return table;
}

} // namespace workbench
