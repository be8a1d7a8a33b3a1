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

struct TCandidate {
    TStoredCorrection correction;
    std::string file;      // that holds it
    double degreesOff = 0; // by which the sensor was warmer than for the images
};
// Those of one file.
std::vector<TCandidate> CandidatesOf(const std::string& file, const std::vector<TStoredCorrection>& corrections);

struct TChoice {
    const TCandidate* candidate = nullptr;
    std::string reason; // "Chose 'k' (60 s, 100 %): exactly what the images need", for people
};

// The correction for these images: one of exactly their exposure x intensity; else the nearest that is scaled down;
// else the nearest. Of those the one whose temperature is nearest comes first. Throws TToolError about `place` when
// none has the images' size, and when two would do alike.
TChoice ChooseCorrection(const std::string& place, const std::vector<TCandidate>& candidates,
                         const TWantedCorrection& wanted);

} // namespace workbench

#endif
