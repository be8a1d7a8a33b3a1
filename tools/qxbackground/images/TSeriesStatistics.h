#ifndef QXBACKGROUND_IMAGES_TSERIESSTATISTICS_H
#define QXBACKGROUND_IMAGES_TSERIESSTATISTICS_H

#include "images/TImage.h"

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace workbench {

// How often each 16-bit value occurs: any number of pixels in fixed memory, and exact statistics of them.
class THistogram {
public:
    THistogram() : counts(65536) {}

    void Add(const TImage& image);

    std::uint64_t Count() const { return total; }
    std::uint64_t CountOf(std::uint16_t value) const { return counts[value]; }
    std::uint16_t Minimum() const;
    std::uint16_t Maximum() const;
    double Mean() const;
    double StandardDeviation() const;
    double Median() const; // halfway between the two middle values of an even count
    double RobustSpread() const;
    // The value below or at which `fraction` (0 ... 1) of the pixels lie.
    std::uint16_t Percentile(double fraction) const;

private:
    std::uint64_t total = 0;
    std::vector<std::uint64_t> counts;
};

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
