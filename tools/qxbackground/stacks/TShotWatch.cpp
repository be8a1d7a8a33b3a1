#include "stacks/TShotWatch.h"

#include "base/Wording.h"
#include "stacks/TFrameWatch.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace workbench {

void TShotWatch::Note(const std::string& path, const TShotDifference& difference)
{
    auto place = std::find_if(found.begin(), found.end(),
                              [&](const TFound& one) { return one.difference.what == difference.what; });
    if (place == found.end())
        place = found.insert(found.end(), {difference, {}});
    const std::string name = Printable(path);
    if (place->paths.empty() || place->paths.back() != name) // its pages come one after the other
        place->paths.push_back(name);
}

void TShotWatch::Add(const std::string& path, const TShot& image, const TShot& expected)
{
    for (const TShotDifference& difference : Differences(image, expected))
        Note(path, difference);
    if (image.sensorCelsius && expected.sensorCelsius &&
        std::abs(*image.sensorCelsius - *expected.sensorCelsius) > toleranceCelsius + 1e-9)
        Note(path, {"temperature", fmt::format("{:.3g} C", *image.sensorCelsius),
                    fmt::format("{:.3g} C", *expected.sensorCelsius)});
    if (image.day && expected.day && *image.day - *expected.day > mostDays)
        Note(path, {"day", std::to_string(*image.day - *expected.day), {}});
}

std::vector<std::string> TShotWatch::Warnings() const
{
    std::vector<std::string> warnings;
    for (const TFound& one : found) {
        const TShotDifference& difference = one.difference;
        if (difference.what == "day") {
            warnings.push_back(fmt::format("the correction is {} days older than {}: hot pixels come with time; take "
                                           "new dark frames, or allow it with --warn-older",
                                           difference.one, FirstOf(one.paths)));
            continue;
        }
        std::string but = difference.other + " in the dark frames: is this the right correction?";
        if (difference.what == "exposure")
            but = "--exposure says " + difference.other + ", which counts";
        if (difference.what == "temperature")
            but = difference.other + " in the dark frames: dark current doubles about every 6 degrees";
        warnings.push_back(
            fmt::format("{} {} by the header of {}, but {}", difference.what, difference.one, FirstOf(one.paths), but));
    }
    return warnings;
}

} // namespace workbench
