#ifndef QXBACKGROUND_CALIBRATION_NEWGROUPS_H
#define QXBACKGROUND_CALIBRATION_NEWGROUPS_H

#include "calibration/TStorePlace.h"

#include <string>
#include <vector>

namespace workbench {

// To be called before corrections of these keys go into the store. A new group whose grouping names or values differ
// from those of another one only by slips of the keyboard, or whose file could not be carried to Windows, is asked
// about, and refused with a TToolError that names the other one where nobody can be asked. `insists` makes it without a
// word. What this system cannot have at all is refused whatever is said.
void AgreeOnNewGroups(const TStorePlace& place, const std::vector<std::string>& keys, bool insists);

extern const char* const kNewGroupHelp; // of --new-group

} // namespace workbench

#endif
