#ifndef QXBACKGROUND_IMAGES_THISTOGRAM_H
#define QXBACKGROUND_IMAGES_THISTOGRAM_H

#include "images/TImage.h"

#include <cstdint>
#include <vector>

namespace workbench {

// How often each 16-bit value occurs: any number of pixels in fixed memory, and exact statistics of them.
class THistogram {
public:
    THistogram() : counts(65536) {}

    void Add(const TImage& image);
    void Add(const THistogram& other);
    void Clear();

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
    void Widen(std::size_t value);
    std::size_t ValueAtRank(std::uint64_t rank) const;
    std::uint64_t DoubleMedian() const;

    std::uint64_t total = 0;
    std::vector<std::uint64_t> counts;
    std::size_t lowest = 65536, end = 0; // values outside do not occur: an image has few of all that there could be
};

} // namespace workbench

#endif
