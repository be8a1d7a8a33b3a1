#ifndef QXBACKGROUND_VERBS_VERBS_H
#define QXBACKGROUND_VERBS_VERBS_H

#include "calibration/TContext.h"

#include "commandline/CommandLine.h"

namespace workbench {

// Each adds one verb to the command line. The verb runs while the command line is parsed, with `context` filled.
void AddCorrectVerb(const TVerb& app, const TContext& context);
void AddSimulateVerb(const TVerb& app);
void AddBuildVerb(const TVerb& app, const TContext& context);
void AddListVerb(const TVerb& app, const TContext& context);
void AddShowVerb(const TVerb& app, const TContext& context);
void AddApplyVerb(const TVerb& app, const TContext& context);
void AddImportVerb(const TVerb& app, const TContext& context);
void AddDeleteVerb(const TVerb& app, const TContext& context);
void AddCheckVerb(const TVerb& app, TContext& context);
void AddStoreVerb(const TVerb& app, const TContext& context);
void AddStatisticsVerb(const TVerb& app);

} // namespace workbench

#endif
