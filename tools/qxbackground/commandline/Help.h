#ifndef QXBACKGROUND_COMMANDLINE_HELP_H
#define QXBACKGROUND_COMMANDLINE_HELP_H

#include "commandline/TProgramText.h"
#include "commandline/TVerb.h"

#include <string>

namespace workbench {

// What --help prints of a verb, or of the program.
std::string HelpText(const TVerb& verb, const TProgramText& program);

} // namespace workbench

#endif
