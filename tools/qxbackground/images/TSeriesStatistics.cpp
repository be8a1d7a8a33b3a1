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

TPageFigures FiguresOf(const THistogram& histogram, double rowPattern, double columnPattern)
{
    TPageFigures figures;
    figures.pixels = histogram.Count();
    figures.median = histogram.Median();
    figures.mean = histogram.Mean();
    figures.spread = histogram.RobustSpread();
    figures.standardDeviation = histogram.StandardDeviation();
    figures.rowPattern = rowPattern;
    figures.columnPattern = columnPattern;
    figures.minimum = histogram.Minimum();
    figures.maximum = histogram.Maximum();
    figures.pixelsAtZero = histogram.CountOf(0);
    return figures;
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

TPageFigures TSeriesStatistics::Add(const TImage& image)
{
    page.Clear();
    page.Add(image);
    histogram.Add(page);
    const TPageFigures figures = FiguresOf(page, RowPattern(image), ColumnPattern(image));
    rowPatterns += figures.rowPattern;
    columnPatterns += figures.columnPattern;
    ++pages;
    return figures;
}

void TSeriesStatistics::Add(const TSeriesStatistics& other)
{
    histogram.Add(other.histogram);
    rowPatterns += other.rowPatterns;
    columnPatterns += other.columnPatterns;
    pages += other.pages;
}

TPageFigures TSeriesStatistics::Figures() const
{
    const double count = pages == 0 ? 1 : static_cast<double>(pages);
    return FiguresOf(histogram, rowPatterns / count, columnPatterns / count);
}

nlohmann::json TSeriesStatistics::Json() const
{
    return Figures().Json();
}

std::string StatisticsTable(const std::vector<std::string>& titles, const std::vector<TPageFigures>& columns)
{
    std::string table = fmt::format("  {:<30}", "ADU");
    for (const std::string& title : titles)
        table += fmt::format("{:>20}", title);
    table += '\n';
    const auto row = [&](const char* label, const std::function<std::string(const TPageFigures&)>& text) {
        table += fmt::format("  {:<30}", label);
        for (const TPageFigures& column : columns)
            table += fmt::format("{:>20}", text(column));
        table += '\n';
    };
    const auto number = [&row](const char* label, double TPageFigures::* figure) {
        row(label, [figure](const TPageFigures& figures) { return fmt::format("{:.2f}", figures.*figure); });
    };
    number("median", &TPageFigures::median);
    number("mean", &TPageFigures::mean);
    number("spread (1.4826 x MAD)", &TPageFigures::spread);
    number("standard deviation", &TPageFigures::standardDeviation);
    number("row pattern", &TPageFigures::rowPattern);
    number("column pattern", &TPageFigures::columnPattern);
    row("minimum ... maximum",
        [](const TPageFigures& figures) { return fmt::format("{} ... {}", figures.minimum, figures.maximum); });
    row("pixels at zero (clipped)", [](const TPageFigures& figures) {
        return fmt::format("{} ({:.2f} %)", figures.pixelsAtZero, figures.PercentAtZero());
    });
    return table + "  ADU: steps of the pixels' values. Spread: by the median absolute deviation (MAD), which stars "
                   "and hot pixels "
                   "hardly move.\n  Row, column pattern: standard deviation of the medians of all rows, of all "
                   "columns: how strong "
                   "stripes are.\n";
}

} // namespace workbench
