#include "report/Marks.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace workbench {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();

nlohmann::json LimitJson(double limit)
{
    return std::isinf(limit) ? nlohmann::json() : nlohmann::json(limit);
}

} // namespace

const char* MarkText(TMark mark)
{
    return mark == TMark::Bad ? "bad" : mark == TMark::Look ? "look" : "good";
}

const std::vector<TThreshold>& CorrectionThresholds()
{
    static const std::vector<TThreshold> thresholds{
        {"saturated", "Pixels at 65535", "%", 0.01, 1,
         "the dark frames were overexposed there, so that what is subtracted is too little"},
        {"zero", "Pixels at 0", "%", 1, 50,
         "the camera's offset is too low: dark values were cut off at zero, so that their average is too high"},
        {"flat", "All pixels equal", "", 0.5, kNever, "a camera gives no such frames: were real dark frames used?"},
        {"hot", "Hot pixels", "%", 0.1, 2,
         "clusters that the median filter did not take out: warm sensor, or light on it"},
        {"dead", "Dead pixels", "%", 0.1, 2, "clusters of pixels that are darker than what surrounds them"},
        {"conditions", "Exposure and intensity unusable", "", 0.5, 0.5,
         "scaling divides by them: nothing or everything would be subtracted"},
        {"scaling", "Worst error when scaled to another's conditions", "times the limit", 1, kNever,
         "scaled that far it leaves an error; a correction of its own is needed there (see the cross-check)"},
    };
    return thresholds;
}

nlohmann::json ThresholdsJson()
{
    nlohmann::json json = nlohmann::json::array();
    for (const TThreshold& threshold : CorrectionThresholds())
        json.push_back({{"name", threshold.name},
                        {"label", threshold.label},
                        {"unit", threshold.unit},
                        {"look", LimitJson(threshold.look)},
                        {"bad", LimitJson(threshold.bad)},
                        {"why", threshold.why}});
    return json;
}

nlohmann::json CheckJson(const std::string& name, double value, TMark& worst, const std::string& details)
{
    const std::vector<TThreshold>& all = CorrectionThresholds();
    const TThreshold& threshold =
        *std::find_if(all.begin(), all.end(), [&name](const TThreshold& one) { return name == one.name; });
    const TMark mark = value > threshold.bad ? TMark::Bad : value > threshold.look ? TMark::Look : TMark::Good;
    worst = std::max(worst, mark);
    std::string reason;
    if (mark != TMark::Good && !details.empty())
        reason = details;
    else if (mark != TMark::Good && *threshold.unit == '\0')
        reason = fmt::format("{}: {}.", threshold.label, threshold.why);
    else if (mark != TMark::Good)
        reason = fmt::format("{}: {:.3g} {}, above {:g}: {}.", threshold.label, value, threshold.unit,
                             mark == TMark::Bad ? threshold.bad : threshold.look, threshold.why);
    return {{"name", name}, {"value", value}, {"mark", MarkText(mark)}, {"reason", reason}};
}

TScalingLimits ScalingLimits(double targetMean)
{
    return {std::max(1.0, 0.01 * targetMean), std::max(3.0, 0.05 * targetMean)};
}

} // namespace workbench
