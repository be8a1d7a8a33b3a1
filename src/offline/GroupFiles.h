// The group files of a store on disk.
#ifndef OFFLINE_GROUPFILES_H
#define OFFLINE_GROUPFILES_H

#include "offline/TDualString.h"

#include <string>
#include <vector>

namespace GroupFiles {

// Appends to `paths` everything in the base's folder whose path passes GroupNaming::IsGroupFileOf, in the order of the
// file system. A folder that cannot be listed holds none.
void ListGroupFiles(const TTextList& names, const TDualString& base, TTextList& paths);

// The narrow texts alone, as the calibration files want grouping names.
std::vector<std::string> NarrowTexts(const TTextList& texts);

// The other way round.
TTextList DualTexts(const std::vector<std::string>& texts);

} // namespace GroupFiles

#endif
