#include "images/TSeriesStatistics.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <functional>

namespace workbench {

namespace {

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
    std::string table = fmt::format("  {:<30}", "ADU");
    for (const std::string& title : titles)
        table += fmt::format("{:>20}", title);
    table += '\n';
    const auto row = [&](const char* label, const std::function<std::string(const TSeriesStatistics&)>& text) {
        table += fmt::format("  {:<30}", label);
        for (const TSeriesStatistics* column : series)
            table += fmt::format("{:>20}", text(*column));
        table += '\n';
    };
    const auto number = [](double value) { return fmt::format("{:.2f}", value); };
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
