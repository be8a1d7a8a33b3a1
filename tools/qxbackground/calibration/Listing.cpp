#include "calibration/Listing.h"

#include "base/Wording.h"
#include "calibration/CalibrationFile.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <unordered_map>

namespace workbench {

std::vector<TListedCorrection> ListCorrections(QX_KRLSDK::TBackgroundCorrection& object, const TCalibrationWalk& walk)
{
    std::unordered_map<std::string, const TStoredCorrection*> stored;
    for (const TStoredCorrection& correction : walk.corrections)
        stored.emplace(correction.key, &correction);
    std::vector<TListedCorrection> listed;
    for (const std::string& key : object.Keys()) {
        TListedCorrection correction;
        correction.key = key;
        Call("key '" + key + "'", [&] {
            object.SetActive(key);
            const auto reference = object.Reference();
            correction.exposureSeconds = reference.exposureSeconds;
            correction.lightIntensityPercent = reference.lightIntensityPercent;
        });
        if (const auto found = stored.find(key); found != stored.end()) {
            correction.width = found->second->width;
            correction.height = found->second->height;
        }
        listed.push_back(correction);
    }
    return listed;
}

std::string ListingTable(const std::vector<TListedCorrection>& listed)
{
    if (listed.empty())
        return {};
    std::size_t longest = 3;
    for (const TListedCorrection& correction : listed)
        longest = std::max(longest, std::min<std::size_t>(correction.key.size(), 60));
    std::string table;
    const auto row = [&](const std::string& key, const std::string& size, const std::string& exposure,
                         const std::string& intensity) {
        // Keys are padded by bytes: they need not be text in any encoding.
        table += fmt::format("  {}{:{}}  {:<14}{:<14}{}\n", key, "", longest - std::min(longest, key.size()), size,
                             exposure, intensity);
    };
    row("key", "size", "exposure", "intensity");
    for (const TListedCorrection& correction : listed) {
        const bool known = correction.width != 0 || correction.height != 0;
        row(Printable(correction.key), known ? fmt::format("{} x {}", correction.width, correction.height) : "?",
            fmt::format("{:g} s", static_cast<double>(correction.exposureSeconds)),
            fmt::format("{:g} %", static_cast<double>(correction.lightIntensityPercent)));
    }
    return table;
}

nlohmann::json ListingJson(const std::vector<TListedCorrection>& listed)
{
    nlohmann::json list = nlohmann::json::array();
    for (const TListedCorrection& correction : listed)
        list.push_back({{"key", correction.key},
                        {"width", correction.width},
                        {"height", correction.height},
                        {"exposureSeconds", correction.exposureSeconds},
                        {"lightIntensityPercent", correction.lightIntensityPercent}});
    return list;
}

} // namespace workbench
