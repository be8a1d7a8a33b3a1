#ifndef QXBACKGROUND_IMAGES_TPAGEFIGURES_H
#define QXBACKGROUND_IMAGES_TPAGEFIGURES_H

#include <cstdint>

#include <nlohmann/json_fwd.hpp>

namespace workbench {

// What the workbench says of the pixels of a page, or of several together: all but the first and the last in ADU.
struct TPageFigures {
    std::uint64_t pixels = 0;
    double median = 0, mean = 0;
    double spread = 0; // of a normal distribution with the same median absolute deviation
    double standardDeviation = 0;
    double rowPattern = 0, columnPattern = 0; // see RowPattern
    int minimum = 0, maximum = 0;
    std::uint64_t pixelsAtZero = 0;

    double PercentAtZero() const
    {
        return pixels == 0 ? 0 : 100 * static_cast<double>(pixelsAtZero) / static_cast<double>(pixels);
    }
    nlohmann::json Json() const;
};

} // namespace workbench

#endif
