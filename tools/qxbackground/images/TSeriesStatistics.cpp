#include "images/TSeriesStatistics.h"

#include "images/LineMedians.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <functional>

namespace workbench {

namespace {

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
    return SpreadOf(RowMedians(image));
}

double ColumnPattern(const TImage& image)
{
    return SpreadOf(ColumnMedians(image));
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
