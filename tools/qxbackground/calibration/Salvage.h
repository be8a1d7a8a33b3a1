#ifndef QXBACKGROUND_CALIBRATION_SALVAGE_H
#define QXBACKGROUND_CALIBRATION_SALVAGE_H

#include "calibration/TContext.h"

#include <string>
#include <vector>

namespace workbench {

struct TSalvaged {
    unsigned corrections = 0;
    std::vector<std::string> losses; // one line each: where the file is damaged, what did not load
};

// Loads into `object`, which is empty, every correction of a damaged file that is whole in itself, also behind the
// damage, also of a group file. Throws TToolError when there is none.
TSalvaged LoadWhatIsWhole(const TContext& context, QX_KRLSDK::TBackgroundCorrection& object, const std::string& path);

} // namespace workbench

#endif
