#ifndef QXBACKGROUND_COMMANDLINE_DESCRIPTION_H
#define QXBACKGROUND_COMMANDLINE_DESCRIPTION_H

#include "commandline/TPathPlan.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace workbench {

// One option, as the parser does not know it.
struct TDescribedOption {
    CLI::Option* option = nullptr;
    std::string type; // text, number or flag
    bool many = false;
    bool isPath = false;
    TPathUse use = TPathUse::Reads;
    TPathKind kind = TPathKind::Image;
    std::function<void(TPathPlan&)> fill; // adds what was given to the plan
};

struct TDescribedVerb {
    CLI::App* app = nullptr;
    std::shared_ptr<TDescribedVerb> parent;
    std::vector<std::shared_ptr<TDescribedVerb>> verbs;
    std::vector<TDescribedOption> options;
    bool* overwrite = nullptr; // where its flag --overwrite goes, when the verb creates files
};

// All verbs and options as JSON, with what becomes of every path.
std::string DescriptionJson(const TDescribedVerb& root);

// Why the command line made no sense: names what was misspelt and what was probably meant, as far as that can be told.
// `unread` is what the parser could not place, `complaint` what is wrong; empty when something is missing.
std::string ExplainRefusal(const TDescribedVerb& root, const std::vector<std::string>& unread,
                           const std::string& complaint);

// For "help VERB...": throws TToolError when there is no such verb.
void RequireVerb(const TDescribedVerb& root, const std::vector<std::string>& words);

} // namespace workbench

#endif
