#include "verbs/Options.h"

#include "base/TToolError.h"
#include "commandline/Limits.h"

#include <fmt/format.h>

namespace workbench {

namespace {

constexpr std::size_t kLongestKey = 512;

} // namespace

const char* const kKeyHelp = "Name of the correction: up to 512 bytes of printable text, letter case ignored. A longer "
                             "key is refused, because a calibration file keeps only the first 512 bytes of it";

std::string TConditions::Text() const
{
    return fmt::format("{:g} s, {:g} %", exposureSeconds, lightIntensityPercent);
}

void AddConditions(TVerb& verb, const std::string& prefix, const std::string& whose, TConditions& conditions)
{
    verb.add_option("--" + prefix + "exposure", conditions.exposureSeconds, "Exposure time of " + whose + " in seconds")
        ->required()
        ->check(AboveZero());
    verb.add_option("--" + prefix + "intensity", conditions.lightIntensityPercent,
                    "Light intensity of " + whose + " in percent")
        ->required()
        ->check(AboveZero());
}

void AddCorrectOptions(TVerb& verb, TCorrectOptions& options)
{
    AddConditions(verb, "", "the images", options.conditions);
    verb.add_option("--level", options.levelPercent, "How much of the background is subtracted, 0 to 100 percent")
        ->check(BetweenWhole(0, 100))
        ->capture_default_str();
    verb.add_option("--region", options.region,
                    "Part of the dark frames that the images show: left,top,width,height in pixels "
                    "(default: all of it). Images must have exactly this size");
    verb.Reads(TPathKind::Image, verb.add_option("images", options.inputs,
                                                 "Images to correct: 16-bit grayscale TIFF; every page is corrected")
                                     ->required());
    verb.Creates(TPathKind::Image,
                 verb.add_option("-o,--output", options.output, "Corrected pages, in order: one 16-bit grayscale TIFF")
                     ->required(),
                 options.overwrite);
    verb.Creates(TPathKind::Picture,
                 verb.add_option("--picture", options.picture,
                                 "Also write a PNG of the first page: before, background and after side by side"),
                 options.overwrite);
    verb.add_flag("--json", options.json, "Print the statistics as JSON");
    verb.add_flag("--no-statistics", options.noStatistics, "Do not compute statistics (faster)");
}

void CheckKey(const std::string& key)
{
    if (key.empty())
        throw TToolError("--key: the key is empty");
    if (key.size() > kLongestKey)
        throw TToolError("--key: the key has " + std::to_string(key.size()) +
                         " bytes; files keep 512, and a cut key may no longer tell corrections apart");
}

} // namespace workbench
