#ifndef QXBACKGROUND_STACKS_TDARKNOISE_H
#define QXBACKGROUND_STACKS_TDARKNOISE_H

#include "images/TImage.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace workbench {

// How much a dark frame's pixels vary from frame to frame, by their level: charge comes in whole electrons, so that
// each ADU above the level of most pixels brings so much more of variance.
struct TNoiseLaw {
    double usualVariance = 0;  // ADU^2, of a pixel of the level that most have
    double variancePerAdu = 0; // ADU
};

// Learns that from the frames of a stack as they pass, by twos: a pixel's two values tell its noise, and they and those
// of the two frames before them, whichever is lower, its level. A cosmic ray is in one of them only, and a frame's own
// level does not count. What is learnt are medians.
class TDarkNoise {
public:
    TDarkNoise();

    void Add(const TImage& frame);
    // Nothing when there are too few frames, or pixels of too few levels, to tell.
    std::optional<TNoiseLaw> Law() const;
    // Of each pixel, what its own values say, ADU^2: without the pair of frames that differs most, lest a cosmic ray
    // counts, so that it is mostly less than the law's. Of too few frames 0; infinite where more than one has the
    // highest value that it can have, and may have had more.
    std::vector<float> Measured() const;

private:
    // Pixels of about the same level.
    struct TBand {
        std::vector<std::uint32_t> distances; // how often two values lay so far apart
        std::uint64_t count = 0;
        double levels = 0; // their sum

        double Variance() const;
    };

    std::vector<TBand> bands;
    // A frame's pixels above the median of all; what is at the highest value may have had more, and is kWithout.
    void TakeApart(const TImage& frame);

    std::vector<int> first, second;    // of two frames
    std::vector<int> sums, sumsBefore; // of two frames, and of the two before them
    std::vector<std::uint16_t> sample;
    bool hasFirst = false;
    std::vector<std::uint8_t> cutOff;       // of each pixel: in how many frames, up to 2
    std::vector<float> distances, farthest; // of each pixel: of its pairs, squared, their sum and the greatest
    unsigned pairs = 0;
};

} // namespace workbench

#endif
