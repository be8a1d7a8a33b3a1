#ifndef QXBACKGROUND_VERBS_TTURN_H
#define QXBACKGROUND_VERBS_TTURN_H

#include "calibration/TCalibrationPlace.h"
#include "calibration/TContext.h"
#include "images/TShot.h"
#include "verbs/Options.h"

#include <cstdint>
#include <optional>
#include <string>

namespace workbench {

// A correction for images that were taken alike.
struct TTurn {
    QX_KRLSDK::TBackgroundCorrection* object = nullptr; // holds the correction
    std::string key;
    std::string what;            // the correction, in words
    std::string reason;          // why it was chosen; empty where the command names it
    double referenceProduct = 0; // exposure x intensity of the dark frames
    TShot darks;                 // how they were taken, as far as it is known; without the exposure
    std::optional<bool> hasBias; // taken off the dark frames; where that is known

    // Filled in by the plan.
    double exposureSeconds = 0; // of the images
    double factor = 0;          // that the background is scaled by
    std::uint64_t pages = 0;    // 0 where nobody counted
};

// Tells the library of the turn's exposure; of all settings that the options give, once its correction is active; and
// makes it active first.
void SetExposure(const TTurn& turn, const TCorrectOptions& options);
void Configure(const TTurn& turn, const TCorrectOptions& options);
void Activate(const TTurn& turn, const TCorrectOptions& options);

// Takes into the turn, whose correction is active, what is recorded of how that was built.
void TakeRecord(TTurn& turn, const TCalibrationPlace& place);

} // namespace workbench

#endif
