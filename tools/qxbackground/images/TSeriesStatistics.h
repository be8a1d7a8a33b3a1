#ifndef QXBACKGROUND_IMAGES_TSERIESSTATISTICS_H
#define QXBACKGROUND_IMAGES_TSERIESSTATISTICS_H

#include "images/THistogram.h"
#include "images/TImage.h"
#include "images/TPageFigures.h"

#include <string>
#include <vector>

namespace workbench {

// Standard deviation of the medians of an image's rows, or of its columns: how visible stripes are.
double RowPattern(const TImage& image);
double ColumnPattern(const TImage& image);

// What the workbench reports about a series of pages. Values of all pages count together; the patterns are the mean
// over the pages.
class TSeriesStatistics {
public:
    // Gives the figures of that page.
    TPageFigures Add(const TImage& image);
    void Add(const TSeriesStatistics& other);

    const THistogram& Histogram() const { return histogram; }
    std::uint64_t Pages() const { return pages; }
    // Of all pages together.
    TPageFigures Figures() const;
    nlohmann::json Json() const;

private:
    THistogram histogram, page;
    double rowPatterns = 0;
    double columnPatterns = 0;
    std::uint64_t pages = 0;
};

// A table of several series side by side, one title each, and below it what the figures are that not everybody knows.
std::string StatisticsTable(const std::vector<std::string>& titles, const std::vector<TPageFigures>& columns);

} // namespace workbench

#endif
