#ifndef QXBACKGROUND_CALIBRATION_CALIBRATIONFILE_H
#define QXBACKGROUND_CALIBRATION_CALIBRATIONFILE_H

#include "base/TFileState.h"
#include "calibration/TCalibrationWalk.h"
#include "calibration/TContext.h"

#include <string>

namespace workbench {

// Loads a calibration file with all its pixels. Throws TToolError naming the file when it does not load whole, or
// belongs to an offline store.
void LoadWhole(QX_KRLSDK::TBackgroundCorrection& object, const std::string& path);

// Saves all corrections of `object` beside `path`, checks what was written, and only then takes the old file's place.
// Throws TToolError when that file is no longer as it was `before`, when its content was read.
void SaveReplacing(QX_KRLSDK::TBackgroundCorrection& object, const std::string& path, const TFileState& before);

// Throws TToolError when `path` is no calibration file at all, or a group file of an offline store, which the verbs of
// single files leave alone.
void RefuseOtherFiles(const std::string& path, const TCalibrationWalk& walk);

} // namespace workbench

#endif
