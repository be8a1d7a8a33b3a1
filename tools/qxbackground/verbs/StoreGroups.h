#ifndef QXBACKGROUND_VERBS_STOREGROUPS_H
#define QXBACKGROUND_VERBS_STOREGROUPS_H

#include "calibration/GroupValues.h"
#include "commandline/TVerb.h"
#include "images/TShot.h"

#include <string>
#include <utility>
#include <vector>

namespace workbench {

// What headers say as groups of a store have it, and back.
TGroupConditions ConditionsOf(const TShot& shot);
TShot ShotOf(const TGroupConditions& conditions);

// Whether headers can say every value that `key` lacks.
bool MayBeCompleted(const TStorePlace& place, const std::string& key);
// The key with the values that it lacks in front of it, as the frames' headers say them; spelled as in a group that is
// there already and means the same. Throws TToolError when headers do not say one.
std::string CompletedKey(const TStorePlace& place, const std::string& key, const TShot& frames);

// --where NAME=VALUE, once for each.
CLI::Option* AddWhereOption(TVerb& verb, std::vector<std::pair<std::string, std::string>>& values,
                            const std::string& help);

} // namespace workbench

#endif
