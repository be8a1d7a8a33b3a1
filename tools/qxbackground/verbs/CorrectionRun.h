#ifndef QXBACKGROUND_VERBS_CORRECTIONRUN_H
#define QXBACKGROUND_VERBS_CORRECTIONRUN_H

#include "calibration/TContext.h"
#include "images/TImage.h"
#include "verbs/Options.h"

#include <string>

namespace workbench {

// Corrects every page of the options' images with the active correction of `object` and writes them to the output,
// then prints what was done. Sets exposure, intensity, level and region first. Pages are streamed: memory does not
// grow with their number. Nothing appears under the output's name unless every page was corrected.
void CorrectImages(QX_KRLSDK::TBackgroundCorrection& object, const TCorrectOptions& options, const std::string& what);

// The scaled background of the active correction's region, read through the library as any host can: what is missing
// from a white image after the correction.

TImage ScaledBackground(QX_KRLSDK::TBackgroundCorrection& object);

} // namespace workbench

#endif
