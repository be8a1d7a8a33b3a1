#ifndef QXBACKGROUND_STOREVERBS_H
#define QXBACKGROUND_STOREVERBS_H

#include "Library.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace workbench {

// Which store: shared by all its verbs.
struct TStoreOptions {
    std::string base;
    std::vector<std::string> groups;
};
void AddStoreOptions(CLI::App& verb, TStoreOptions& options);

void AddStoreChangeVerbs(CLI::App& store, const TContext& context);

} // namespace workbench

#endif
