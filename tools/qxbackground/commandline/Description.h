#ifndef QXBACKGROUND_COMMANDLINE_DESCRIPTION_H
#define QXBACKGROUND_COMMANDLINE_DESCRIPTION_H

#include "commandline/TProgramText.h"
#include "commandline/TVerb.h"

#include <string>
#include <vector>

namespace workbench {

// All verbs and options as JSON, with what becomes of every path.
std::string DescriptionJson(const TVerb& root, const TProgramText& program);

// The verb that was asked for: the innermost one that the parser came to.
const TVerb& ParsedVerb(const TVerb& verb);

// Why the command line made no sense: names what was misspelt and what was probably meant, as far as that can be told.
// `unread` is what the parser could not place, `complaint` what is wrong; empty when something is missing.
std::string ExplainRefusal(const TVerb& root, const std::vector<std::string>& unread, const std::string& complaint);

// For "help VERB...": throws TToolError when there is no such verb.
void RequireVerb(const TVerb& root, const std::vector<std::string>& words);

} // namespace workbench

#endif
