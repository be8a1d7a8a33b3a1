#ifndef QXBACKGROUND_CALIBRATION_DOUBTS_H
#define QXBACKGROUND_CALIBRATION_DOUBTS_H

#include "calibration/TCalibrationWalk.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

// Dark frames get brighter with their exposure x intensity. This tells of each pair of neighbours in a file of which
// the one with less of it is brighter all the same, by a sample of their pixels: one line each. With a `key`, only of
// that correction and its neighbours.
std::vector<std::string> HotterThanLonger(const std::string& path, const std::vector<TStoredCorrection>& corrections,
                                          const std::string& key = {});

// When a file was last changed, in days since 1970-01-01. Nothing when it is not there.
std::optional<std::int64_t> DayOfChange(const std::string& path);

} // namespace workbench

#endif
