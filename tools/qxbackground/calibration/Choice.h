#ifndef QXBACKGROUND_CALIBRATION_CHOICE_H
#define QXBACKGROUND_CALIBRATION_CHOICE_H

#include "calibration/TCalibrationWalk.h"

#include <string>
#include <vector>

namespace workbench {

// What a correction is wanted for.
struct TWantedCorrection {
    double exposureSeconds = 0;
    double lightIntensityPercent = 0;
    std::uint32_t width = 0, height = 0; // of the images
    bool mayBeLarger = false;            // because the images show a region of it
};

struct TChoice {
    std::string key;
    std::string reason; // "is exactly of 60 s x 100 %", for people
};

// The correction for these images: one of exactly their exposure x intensity; else the nearest that is scaled down;
// else the nearest. Throws TToolError about `file` when none has the images' size, and when two would do alike.
TChoice ChooseCorrection(const std::string& file, const std::vector<TStoredCorrection>& corrections,
                         const TWantedCorrection& wanted);

} // namespace workbench

#endif
