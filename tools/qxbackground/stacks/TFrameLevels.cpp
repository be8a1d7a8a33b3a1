#include "stacks/TFrameLevels.h"

#include "images/SampleStep.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace workbench {

// The mean of the middle half of many pixels, the same in every frame: finer than a median, which is a whole number,
// and hot pixels, stars and cosmic rays count for nothing.
void TFrameLevels::Add(const TImage& frame)
{
    sample.clear();
    AddToSample(sample, frame.pixels.data(), 0, frame.pixels.size(), SampleStep(frame.pixels.size(), kUsualSample));
    const auto quarter = static_cast<std::ptrdiff_t>(sample.size() / 4);
    std::nth_element(sample.begin(), sample.begin() + quarter, sample.end());
    std::nth_element(sample.begin() + quarter, sample.end() - quarter - 1, sample.end());
    const double sum = std::accumulate(sample.begin() + quarter, sample.end() - quarter, 0.0);
    levels.push_back(sum / (static_cast<double>(sample.size()) - 2.0 * static_cast<double>(quarter)));
}

double TFrameLevels::Middle() const
{
    std::vector<double> sorted = levels;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

std::vector<int> TFrameLevels::Shifts() const
{
    const double common = Middle();
    std::vector<int> shifts;
    for (const double level : levels)
        shifts.push_back(static_cast<int>(std::lround(common - level)));
    return shifts;
}

double TFrameLevels::Rest() const
{
    const double common = Middle();
    double rest = 0;
    for (const double level : levels)
        rest += (common - level) - static_cast<double>(std::lround(common - level));
    return rest / static_cast<double>(levels.size());
}

} // namespace workbench
