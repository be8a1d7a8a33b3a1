#ifndef QXBACKGROUND_CALIBRATION_GROUPVALUES_H
#define QXBACKGROUND_CALIBRATION_GROUPVALUES_H

#include "calibration/TStorePlace.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

// What a grouping name stands for, by what people call it: Gain; Binning, Bin; Temperature, Temp, CCD-TEMP, SET-TEMP;
// Exposure, EXPTIME. Letter case, blanks and hyphens do not matter.
enum class TGroupMeaning { Gain, Binning, Temperature, Exposure, Other };
TGroupMeaning MeaningOf(const std::string& groupingName);

struct TBinning {
    int x = 1, y = 1;
    bool operator==(const TBinning& other) const { return x == other.x && y == other.y; }
};

// How frames were taken, as groups tell them apart; as far as it is known.
struct TGroupConditions {
    std::optional<double> exposureSeconds, gain, celsius;
    std::optional<TBinning> binning;
    std::map<TGroupMeaning, std::string> unusable; // what is said where that cannot be a value; may be empty
};

// "-10", "-10 C", "60s": the number that a value begins with, when only a unit follows.
std::optional<double> NumberOfValue(const std::string& value);
// "2", "2x2", "1 x 2".
std::optional<TBinning> BinningOfValue(const std::string& value);

// What the values in `key` say.
TGroupConditions ConditionsOfKey(const TStorePlace& place, const std::string& key);

// The value that a group of these conditions has: "120", "2x2", "-10" (whole degrees), "60". Nothing when they do not
// say it, or the name stands for something else.
std::optional<std::string> ValueFor(const std::string& groupingName, const TGroupConditions& conditions);

// What they say where that cannot be one, "GAIN is 'high', not a number"; or an empty text.
std::string InsteadOfValueFor(const std::string& groupingName, const TGroupConditions& conditions);

// Whether a value means the same as that; a text is compared as such.
bool MeansSame(TGroupMeaning meaning, const std::string& one, const std::string& other);

} // namespace workbench

#endif
