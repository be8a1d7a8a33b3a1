#ifndef QXBACKGROUND_VERBS_SHOWCORRECTION_H
#define QXBACKGROUND_VERBS_SHOWCORRECTION_H

#include "calibration/TContext.h"
#include "commandline/TVerb.h"

#include <string>

namespace workbench {

// What is shown of one correction; shared by the verbs that show one of a file and one of a store.
struct TShowOptions {
    std::string key;
    std::string picture;
    bool overwrite = false;
    bool json = false;
};
void AddShowOptions(TVerb& verb, TShowOptions& options);

// Shows the active correction, which comes from `file`.
void ShowCorrection(QX_KRLSDK::TBackgroundCorrection& object, const std::string& file, const TShowOptions& options);

} // namespace workbench

#endif
