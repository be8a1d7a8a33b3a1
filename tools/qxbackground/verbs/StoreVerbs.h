#ifndef QXBACKGROUND_VERBS_STOREVERBS_H
#define QXBACKGROUND_VERBS_STOREVERBS_H

#include "calibration/TContext.h"

#include "commandline/TVerb.h"

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

void AddStoreChangeVerbs(TVerb& store, const TContext& context);

} // namespace workbench

#endif
