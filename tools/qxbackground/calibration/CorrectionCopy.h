#ifndef QXBACKGROUND_CALIBRATION_CORRECTIONCOPY_H
#define QXBACKGROUND_CALIBRATION_CORRECTIONCOPY_H

#include "calibration/TCalibrationWalk.h"

#include <string>
#include <vector>

namespace workbench {

// A correction that goes from one calibration file into another.
struct TCopiedCorrection {
    std::string file; // where it stands
    TStoredCorrection stored;
    std::string key; // what it is called from now on
};

// The corrections of a file, under the keys that they have.
std::vector<TCopiedCorrection> CopiesOf(const std::string& file, const std::vector<TStoredCorrection>& corrections);

// Makes `path` a calibration file of these corrections, byte for byte as they stand where they are but for their keys:
// a group file where there are grouping names. False when it cannot be written. Throws TToolError when a correction
// cannot be read any more.
bool WriteCorrections(const std::string& path, const std::vector<std::string>& groupingNames,
                      const std::vector<TCopiedCorrection>& corrections);

} // namespace workbench

#endif
