#ifndef QXBACKGROUND_VERBS_H
#define QXBACKGROUND_VERBS_H

#include "Library.h"

#include <CLI/CLI.hpp>

namespace workbench {

// Each adds one verb to the command line. The verb runs while the command line is parsed, with `context` filled.
void AddCorrectVerb(CLI::App& app, const TContext& context);
void AddSimulateVerb(CLI::App& app);
void AddBuildVerb(CLI::App& app, const TContext& context);
void AddListVerb(CLI::App& app, const TContext& context);
void AddShowVerb(CLI::App& app, const TContext& context);
void AddApplyVerb(CLI::App& app, const TContext& context);
void AddImportVerb(CLI::App& app, const TContext& context);
void AddDeleteVerb(CLI::App& app, const TContext& context);
void AddCheckVerb(CLI::App& app, TContext& context);
void AddStoreVerb(CLI::App& app, const TContext& context);
void AddStatisticsVerb(CLI::App& app);

} // namespace workbench

#endif
