#ifndef QXBACKGROUND_VERBS_PROVENANCECHECK_H
#define QXBACKGROUND_VERBS_PROVENANCECHECK_H

#include "calibration/TCalibrationWalk.h"

#include <string>

namespace workbench {

// Prints, one line each, in what the record beside a calibration file or group file differs from it, and from the
// frames as far as they are found; nothing where there is no record. False when something differs, or the record cannot
// be read. `walk` is of the file.
bool CheckProvenance(const std::string& file, const TCalibrationWalk& walk);

} // namespace workbench

#endif
