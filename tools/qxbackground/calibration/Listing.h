#ifndef QXBACKGROUND_CALIBRATION_LISTING_H
#define QXBACKGROUND_CALIBRATION_LISTING_H

#include "calibration/TCalibrationWalk.h"
#include "calibration/TContext.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace workbench {

struct TListedCorrection {
    std::string key;
    float exposureSeconds = 0;
    float lightIntensityPercent = 0;
    std::uint32_t width = 0; // 0: not known, because the file's records are damaged
    std::uint32_t height = 0;
};

// The corrections that `object` loaded without pixels, in its order, with the sizes that `walk` found.
std::vector<TListedCorrection> ListCorrections(QX_KRLSDK::TBackgroundCorrection& object, const TCalibrationWalk& walk);

std::string ListingTable(const std::vector<TListedCorrection>& listed);
nlohmann::json ListingJson(const std::vector<TListedCorrection>& listed);

} // namespace workbench

#endif
