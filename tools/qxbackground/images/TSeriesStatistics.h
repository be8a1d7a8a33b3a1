#ifndef QXBACKGROUND_IMAGES_TSERIESSTATISTICS_H
#define QXBACKGROUND_IMAGES_TSERIESSTATISTICS_H

#include "images/THistogram.h"
#include "images/TImage.h"

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace workbench {

// Standard deviation of the medians of an image's rows, or of its columns: how visible stripes are.
double RowPattern(const TImage& image);
double ColumnPattern(const TImage& image);

// What the workbench reports about a series of pages. Values of all pages count together; the patterns are the mean
// over the pages.
class TSeriesStatistics {
public:
    void Add(const TImage& image);

    const THistogram& Histogram() const { return histogram; }
    double MeanRowPattern() const { return pages == 0 ? 0 : rowPatterns / pages; }
    double MeanColumnPattern() const { return pages == 0 ? 0 : columnPatterns / pages; }
    nlohmann::json Json() const;

private:
    THistogram histogram;
    double rowPatterns = 0;
    double columnPatterns = 0;
    double pages = 0;
};

// A table of several series side by side, one title each.
std::string StatisticsTable(const std::vector<std::string>& titles,
                            const std::vector<const TSeriesStatistics*>& series);

} // namespace workbench

#endif
