#include "stacks/TFrameWatch.h"

#include "base/Wording.h"
#include "stacks/ValueStep.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace workbench {

namespace {

double MedianOf(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

bool IsHighest(std::uint16_t value)
{
    static const std::uint16_t kHighest[] = {1023, 4095, 16383, 65535, 1023 << 6, 4095 << 4, 16383 << 2};
    return std::find(std::begin(kHighest), std::end(kHighest), value) != std::end(kHighest);
}

std::string FirstOf(const std::vector<std::string>& names)
{
    constexpr std::size_t kMost = 5;
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), kMost); ++i)
        text += (i == 0 ? "" : ", ") + names[i];
    if (names.size() > kMost)
        text += " and " + std::to_string(names.size() - kMost) + " more";
    return text;
}

void TFrameWatch::Add(const std::string& path, unsigned page, std::vector<std::uint16_t> sample)
{
    TFrame entry;
    entry.name = Printable(path) + " page " + std::to_string(page);
    entry.step = ValueStep(sample);
    const auto middle = sample.begin() + static_cast<std::ptrdiff_t>(sample.size() / 2);
    std::nth_element(sample.begin(), middle, sample.end());
    entry.level = *middle;
    const std::uint16_t highest = *std::max_element(middle, sample.end());
    if (IsHighest(highest))
        entry.saturated =
            static_cast<double>(std::count(middle, sample.end(), highest)) / static_cast<double>(sample.size());
    frames.push_back(entry);
}

// That of most frames that tell one; of two that are as frequent, the first one's.
unsigned TFrameWatch::UsualStep() const
{
    std::map<unsigned, std::size_t> counts;
    for (const TFrame& frame : frames)
        ++counts[frame.step];
    counts.erase(0);
    unsigned usual = 0;
    for (const TFrame& frame : frames) {
        if (frame.step != 0 && (usual == 0 || counts[frame.step] > counts[usual]))
            usual = frame.step;
    }
    return usual;
}

void TFrameWatch::WarnOfSteps(unsigned usual, const std::string& what, std::vector<std::string>& warnings) const
{
    unsigned odd = 0;
    std::vector<std::string> names;
    for (const TFrame& frame : frames) {
        if (frame.step == 0 || frame.step == usual || (odd != 0 && frame.step != odd))
            continue;
        odd = frame.step;
        names.push_back(frame.name);
    }
    if (odd != 0)
        warnings.push_back(fmt::format("values come {} in {}, {} in the other {}: they may not mean the same in all of "
                                       "them; leave frames of another bit depth out, or have all written in one way",
                                       ValueStepText(odd), FirstOf(names), ValueStepText(usual), what));
}

// Of frames of another step enough is said.
void TFrameWatch::WarnOfLevels(unsigned usualStep, const std::string& what, std::vector<std::string>& warnings) const
{
    if (frames.size() < 3)
        return;
    std::vector<double> levels, distances;
    for (const TFrame& frame : frames)
        levels.push_back(frame.level);
    const double usual = MedianOf(levels);
    for (const double level : levels)
        distances.push_back(std::abs(level - usual));
    const double most = std::max(8 * 1.4826 * MedianOf(distances), 2 + 0.02 * usual);
    std::vector<std::string> above, below;
    for (const TFrame& frame : frames) {
        const bool isOfThisStep = frame.step == 0 || frame.step == usualStep;
        if (isOfThisStep && std::abs(frame.level - usual) > most)
            (frame.level > usual ? above : below).push_back(fmt::format("{} ({:g} ADU)", frame.name, frame.level));
    }
    if (!above.empty())
        warnings.push_back(fmt::format("brighter than the other {}, which are at {:g} ADU: {}; is there light in them, "
                                       "or another exposure? Leave them out, or use --reject sigma",
                                       what, usual, FirstOf(above)));
    if (!below.empty())
        warnings.push_back(fmt::format("darker than the other {}, which are at {:g} ADU: {}; were they taken with "
                                       "another exposure? Leave them out, or use --reject sigma",
                                       what, usual, FirstOf(below)));
}

// From the first third of the frames to the last one, and in step with their order.
void TFrameWatch::WarnOfDrift(const std::string& what, std::vector<std::string>& warnings) const
{
    if (frames.size() < 6)
        return;
    const std::size_t third = frames.size() / 3;
    std::vector<double> first, last;
    for (std::size_t i = 0; i < third; ++i) {
        first.push_back(frames[i].level);
        last.push_back(frames[frames.size() - 1 - i].level);
    }
    const double from = MedianOf(first), to = MedianOf(last);
    // Kendall's tau, over neighbours far enough apart to be cheap with thousands of frames.
    double agreeing = 0, pairs = 0;
    for (std::size_t i = 0; i + third < frames.size(); ++i, ++pairs) {
        const double step = frames[i + third].level - frames[i].level;
        agreeing += step * (to - from) > 0 ? 1 : step == 0 ? 0.5 : 0;
    }
    if (std::abs(to - from) > std::max(2.0, 0.01 * from) && agreeing > 0.8 * pairs)
        warnings.push_back(fmt::format("the level of the {} drifts from {:g} to {:g} ADU: was the camera still getting "
                                       "{}? The correction is their average; take them when the camera is settled",
                                       what, from, to, to > from ? "warmer" : "colder"));
}

std::vector<std::string> TFrameWatch::Warnings(const std::string& what) const
{
    std::vector<std::string> warnings;
    const unsigned step = UsualStep();
    WarnOfSteps(step, what, warnings);
    WarnOfLevels(step, what, warnings);
    WarnOfDrift(what, warnings);
    std::vector<std::string> saturated;
    for (const TFrame& frame : frames) {
        if (frame.saturated > 0.01)
            saturated.push_back(fmt::format("{} ({:.0f} % of its pixels)", frame.name, 100 * frame.saturated));
    }
    if (!saturated.empty())
        warnings.push_back("saturated among the " + what + ": " + FirstOf(saturated) +
                           "; what a pixel got beyond its highest value is lost");
    return warnings;
}

} // namespace workbench
