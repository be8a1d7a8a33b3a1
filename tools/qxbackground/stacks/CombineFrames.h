#ifndef QXBACKGROUND_STACKS_COMBINEFRAMES_H
#define QXBACKGROUND_STACKS_COMBINEFRAMES_H

#include "batch/TFrameStack.h"
#include "stacks/TDarkNoise.h"
#include "stacks/TStackOptions.h"

namespace workbench {

// Every page of every file, in order, made into one frame as `how` says. Plain averaging is ReadFrames; all else looks
// at a pixel's values in all frames at once, band by band, in the memory that `how` allows. Throws as ReadFrames does,
// and when there are too few frames for what is to be rejected. `noise` sees every page.
TFrameStack CombineFrames(const TFrameFiles& files, const TStackOptions& how, TDarkNoise* noise = nullptr);

} // namespace workbench

#endif
