#ifndef QXBACKGROUND_VERBS_CORRECTIONSETUP_H
#define QXBACKGROUND_VERBS_CORRECTIONSETUP_H

#include "calibration/TContext.h"
#include "images/TImageReader.h"
#include "stacks/TRefinement.h"
#include "verbs/Options.h"
#include "verbs/TCorrectionPlan.h"

#include <string>
#include <vector>

namespace workbench {

// What is known before the run: what else is done to the images, and what is to be told with what the run has to say.
struct TCorrectionSetup {
    TRefinement refinement; // for whole frames
    TExactDark unfiltered;  // of no size: the library's median filter stays
    TShot bias;             // how the bias frames were taken
    std::vector<std::string> notes, warnings;
};

// Reads the bias frames and the list of hot pixels that the options name. Throws TToolError when they are not of this
// size, which the dark frames have.
// `unfiltered`: the bias is wanted before it is rounded, too.
TCorrectionSetup ReadSetup(const TCorrectOptions& options, TSize size, bool unfiltered = false);

// The size of the active correction; before a region is set.
TSize SizeOf(const QX_KRLSDK::TBackgroundCorrection& object);

// Throws TToolError naming both sizes when the reader's page is not of the wanted one.
void RequireSize(const std::string& path, const TImageReader& reader, const TSize& wanted);

// Which images a run would correct, and which of them it could not. `size` is that of the correction's region.
void SayWhatWouldBeDone(TContext& context, const TCorrectOptions& options, const TCorrectionPlan& plan, TSize size,
                        const TCorrectionSetup& setup);

} // namespace workbench

#endif
