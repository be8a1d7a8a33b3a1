#ifndef QXBACKGROUND_VERBS_VERBS_H
#define QXBACKGROUND_VERBS_VERBS_H

#include "calibration/TContext.h"

#include "commandline/TProgramText.h"
#include "commandline/TVerb.h"

namespace workbench {

// Each adds one verb to the command line. The verb runs while the command line is parsed, with `context` filled.
void AddCorrectVerb(TVerb& app, TContext& context);
void AddSimulateVerb(TVerb& app);
void AddBuildVerb(TVerb& app, const TContext& context);
void AddListVerb(TVerb& app, const TContext& context);
void AddShowVerb(TVerb& app, const TContext& context);
void AddApplyVerb(TVerb& app, TContext& context);
void AddImportVerb(TVerb& app, const TContext& context);
void AddDeleteVerb(TVerb& app, const TContext& context);
void AddCheckVerb(TVerb& app, TContext& context);
void AddStoreVerb(TVerb& app, TContext& context);
void AddStatisticsVerb(TVerb& app);
void AddReportVerb(TVerb& app, const TContext& context);
void AddHotPixelsVerb(TVerb& app);
void AddExportVerb(TVerb& app, const TContext& context);
void AddDiffVerb(TVerb& app, TContext& context);
void AddConvertVerb(TVerb& app);
void AddRenameVerb(TVerb& app, const TContext& context);
void AddCompletionVerb(TVerb& app);

// What help and the manual page tell beyond what the verbs say of themselves: the program as a whole, under which
// headings the verbs stand, and examples, of the verbs that were added.
TProgramText ProgramText();
void AddGuide(TVerb& app);

} // namespace workbench

#endif
