#ifndef QXBACKGROUND_STACKS_TPIXELCOMBINER_H
#define QXBACKGROUND_STACKS_TPIXELCOMBINER_H

#include "stacks/TStackOptions.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

// Combines the values that one pixel has in all frames of a stack.
//
// "Sigma" leaves out what lies further from the median than LOW or HIGH times the spread, 1.4826 x the median distance
// from the median, and looks again until nothing more goes. "Winsor" takes as the spread 1.134 x the standard deviation
// of the values once those beyond 1.5 of it are drawn in to there, until that settles. The spread is never taken below
// the noise of the whole stack, since a few values may agree by chance. What is left is averaged, or its median taken,
// in whole numbers, halves up.
class TPixelCombiner {
public:
    struct TResult {
        std::uint16_t value = 0;
        double exact = 0;                      // before it was rounded
        std::uint16_t lowest = 0, highest = 0; // of what was kept
        unsigned rejected = 0;
    };

    // `noiseAdu`: the standard deviation of a pixel between frames, for most pixels.
    TPixelCombiner(const TStackOptions& options, double noiseAdu, std::size_t frames);

    // Of as many values as there are frames, at least one; sorts them.
    TResult Combine(std::uint16_t* values);

private:
    struct TRange {
        std::size_t begin, end;
        std::size_t Count() const { return end - begin; }
    };

    TRange Kept(const std::uint16_t* sorted);
    double MedianSpread(const std::uint16_t* sorted, TRange range, double median);
    double WinsorSpread(const std::uint16_t* sorted, TRange range, double median);

    const TStackOptions options;
    const double noise;
    const std::size_t frames;
    std::vector<double> distances;
};

} // namespace workbench

#endif
