#ifndef QXBACKGROUND_CALIBRATION_KEYS_H
#define QXBACKGROUND_CALIBRATION_KEYS_H

#include "calibration/TCalibrationWalk.h"

#include <string>
#include <vector>

namespace workbench {

// The library takes two keys for one that differ only in the case of the letters A to Z. What such keys have in common.
std::string FoldedKey(std::string key);
bool IsSameKey(const std::string& one, const std::string& other);

// The correction of that key, or null.
const TStoredCorrection* FindKey(const std::vector<TStoredCorrection>& corrections, const std::string& key);

// For a key that is to be made. `whose` is how the command line calls it: "--key". Throws TToolError when the key is
// empty, has control characters, or is so long that the library's files would cut it.
void CheckKey(const std::string& key, const std::string& whose);

} // namespace workbench

#endif
