#ifndef QXBACKGROUND_REPORT_FIGURES_H
#define QXBACKGROUND_REPORT_FIGURES_H

#include "images/THistogram.h"
#include "images/TImage.h"

#include <cstdint>
#include <optional>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace workbench {

// What one image looks like, in figures for the report; each as it stands in docs/report.md.

// Means of rows and of columns, thinned to at most 512 points each by averaging neighbours.
nlohmann::json ProfilesJson(const TImage& image);

// Counts over the values between the 0.1st and the 99.9th percentile, and how many lie outside.
nlohmann::json HistogramJson(const THistogram& histogram);

// A pixel that differs from what surrounds it.
struct TUnusualPixel {
    int x = 0, y = 0;
    int value = 0;
    int difference = 0; // from the median of the pixels around it
};

struct TUnusualPixels {
    double threshold = 0; // in ADU
    std::uint64_t hot = 0, dead = 0;
    std::vector<TUnusualPixel> hottest, deadest; // the strongest first, at most 100 of each
};

// Compares each pixel with the median of the eight that lie three pixels away: clusters as wide as the library's median
// filter leaves them are found, gradients are not. Unusual is what differs by more than ten times the noise between
// neighbours, and more than 10 ADU.
TUnusualPixels FindUnusualPixels(const TImage& image);
nlohmann::json UnusualJson(const TUnusualPixels& unusual);

// What is left of an image when a background was taken away, before anything is cut off at zero.
struct TResidual {
    double mean = 0, spread = 0; // ADU; the spread is a standard deviation
};
TResidual ResidualOf(const TImage& image, const std::uint16_t* background);

// A figure, or null where there is none.
nlohmann::json OptionalJson(const std::optional<double>& value);

} // namespace workbench

#endif
