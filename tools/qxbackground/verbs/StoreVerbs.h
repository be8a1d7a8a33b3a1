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

// The store with the correction of `key` active; no file is read after that.
QX_KRLSDK::TBackgroundCorrection OpenInStore(const TContext& context, const TStorePlace& place, const std::string& key);

// Each adds one verb to those of `store`.
void AddStoreApplyVerb(TVerb& store, TContext& context);
void AddStoreAddVerb(TVerb& store, const TContext& context);
void AddStoreDeleteVerb(TVerb& store, const TContext& context);
void AddStoreImportVerb(TVerb& store, const TContext& context);
void AddStoreCopyVerb(TVerb& store, const TContext& context);
void AddStoreShowVerb(TVerb& store, const TContext& context);
void AddStoreExportVerb(TVerb& store);
void AddStoreRenameVerb(TVerb& store);

} // namespace workbench

#endif
