#ifndef QXBACKGROUND_VERBS_STOREVERBS_H
#define QXBACKGROUND_VERBS_STOREVERBS_H

#include "calibration/TContext.h"
#include "calibration/TStorePlace.h"

#include "commandline/TVerb.h"

#include <functional>
#include <string>
#include <vector>

namespace workbench {

// Which store: shared by all its verbs.
struct TStoreOptions {
    std::string base;
    std::vector<std::string> groups;
};
// `use` says what the verb does with the store.
void AddStoreOptions(TVerb& verb, TStoreOptions& options, TPathUse use);

// Runs one step against the library. For a failure over a whole store it gives no text, so this looks for the file that
// causes it.
void CallOnStore(const TStorePlace& place, const std::function<void()>& step);

void AddStoreApplyVerb(TVerb& store, TContext& context);
void AddStoreChangeVerbs(TVerb& store, const TContext& context);

} // namespace workbench

#endif
