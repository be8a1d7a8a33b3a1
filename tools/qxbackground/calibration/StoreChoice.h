#ifndef QXBACKGROUND_CALIBRATION_STORECHOICE_H
#define QXBACKGROUND_CALIBRATION_STORECHOICE_H

#include "calibration/Choice.h"
#include "calibration/GroupValues.h"

#include <string>
#include <utility>
#include <vector>

namespace workbench {

// From which groups of a store the correction of images may come.
struct TWantedGroup {
    TGroupConditions images;     // as their headers say
    double toleranceCelsius = 0; // between their sensor and the group's
    std::vector<std::pair<std::string, std::string>>
        values; // grouping name and value; these count, whatever headers say
};

// All corrections of a store's own group files. Throws TToolError when one of them does not load whole.
std::vector<TCandidate> CandidatesOf(const TStorePlace& place);

// The corrections of the groups that fit: of exactly that gain and binning, of a temperature within the tolerance, of
// the values that were said. Throws TToolError about `image` when there is none, when its header does not say what the
// store is grouped by, and when groups are left that headers do not tell apart.
std::vector<TCandidate> InFittingGroups(const TStorePlace& place, const std::vector<TCandidate>& all,
                                        const TWantedGroup& wanted, const std::string& image);

// Throws TToolError when a value is for something that the store is not grouped by.
void RequireGroupingNames(const TStorePlace& place, const TWantedGroup& wanted);

} // namespace workbench

#endif
