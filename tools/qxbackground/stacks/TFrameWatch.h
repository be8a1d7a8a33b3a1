#ifndef QXBACKGROUND_STACKS_TFRAMEWATCH_H
#define QXBACKGROUND_STACKS_TFRAMEWATCH_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// Looks at the frames of a stack as they pass, at some thousand pixels of each, and says what does not fit: a frame
// whose values have other steps than those of the rest, whose level is off, a level that drifts, a frame that is
// saturated.
class TFrameWatch {
public:
    // `sample`: pixels of the frame, evenly spread, at least one.
    void Add(const std::string& path, unsigned page, std::vector<std::uint16_t> sample);

    // "darks.tif page 3"; `frame` counts from 0.
    const std::string& NameOf(std::size_t frame) const { return frames[frame].name; }
    // One line each. Of `what`: "dark frames".
    std::vector<std::string> Warnings(const std::string& what) const;

private:
    struct TFrame {
        std::string name;
        double level = 0;     // the median of the sample, ADU
        double saturated = 0; // share of the sample that has the highest value that 10, 12, 14 or 16 bits can hold
        unsigned step = 0;    // of its values, see ValueStep
    };

    unsigned UsualStep() const;
    void WarnOfSteps(unsigned usual, const std::string& what, std::vector<std::string>& warnings) const;
    void WarnOfLevels(unsigned usualStep, const std::string& what, std::vector<std::string>& warnings) const;
    void WarnOfDrift(const std::string& what, std::vector<std::string>& warnings) const;

    std::vector<TFrame> frames;
};

// Whether a value is the highest that 10, 12, 14 or 16 bits can hold, in the low bits or in the high ones.
bool IsHighest(std::uint16_t value);

// "a, b, c and 7 more": the first few of `names`.
std::string FirstOf(const std::vector<std::string>& names);

} // namespace workbench

#endif
