#include "calibration/Listing.h"

#include "calibration/CalibrationFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
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
    std::size_t longest = 3;
    for (const TListedCorrection& correction : listed)
        longest = std::max(longest, std::min<std::size_t>(correction.key.size(), 60));
    const auto pad = [](std::string text, std::size_t width) {
        text.resize(std::max(text.size(), width), ' ');
        return text;
    };
    if (listed.empty())
        return {};
    std::string table = "  " + pad("key", longest) + "  " + pad("size", 14) + pad("exposure", 14) + "intensity\n";
    for (const TListedCorrection& correction : listed) {
        const bool known = correction.width != 0 || correction.height != 0;
        char exposure[40], intensity[40];
        std::snprintf(exposure, sizeof exposure, "%g s", static_cast<double>(correction.exposureSeconds));
        std::snprintf(intensity, sizeof intensity, "%g %%", static_cast<double>(correction.lightIntensityPercent));
        const std::string size =
            known ? std::to_string(correction.width) + " x " + std::to_string(correction.height) : std::string("?");
        table += "  " + pad(Printable(correction.key), longest) + "  " + pad(size, 14) + pad(exposure, 14) + intensity +
                 "\n";
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

std::string Text(const nlohmann::json& json)
{
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

} // namespace workbench
