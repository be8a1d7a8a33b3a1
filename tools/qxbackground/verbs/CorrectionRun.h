#ifndef QXBACKGROUND_VERBS_CORRECTIONRUN_H
#define QXBACKGROUND_VERBS_CORRECTIONRUN_H

#include "calibration/TContext.h"
#include "images/TImage.h"
#include "verbs/CorrectionSetup.h"
#include "verbs/Options.h"
#include "verbs/TCorrectionPlan.h"

namespace workbench {

// Corrects every page of the options' images as the plan says and writes them to the output, then prints what was done.
// The correction of the plan's first turn is active already; exposure, intensity, level and region are set here. Pages
// are streamed: memory does not grow with their number. A second thread reads and corrects, ahead of this one, which
// writes.
//
// Into one file: nothing appears under its name unless every page was corrected. Into a folder: each input has an
// output of its own there; an input that fails is told, the others are done, and the context's status becomes
// kSomeFailed.
void CorrectImages(TContext& context, const TCorrectionPlan& plan, const TCorrectOptions& options,
                   const TCorrectionSetup& setup);

// The scaled background of the active correction's region, read through the library as any host can: what is missing
// from a white image after the correction.
TImage ScaledBackground(QX_KRLSDK::TBackgroundCorrection& object);

} // namespace workbench

#endif
