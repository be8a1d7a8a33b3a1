#ifndef QXBACKGROUND_COMMANDLINE_COMMANDLINE_H
#define QXBACKGROUND_COMMANDLINE_COMMANDLINE_H

#include "commandline/TProgramText.h"
#include "commandline/TVerb.h"

#include <functional>
#include <string>

namespace workbench {

// Parses and runs. `arguments` begin with the name of the program. `addVerbs` fills the command line, and
// `addGuide` puts in what only those see who ask about it. Throws what a verb throws, and TToolError for a command line
// that makes no sense; what only help, the version, the description of all options, the manual page or a completion
// asks for is printed.
void RunCommandLine(const std::vector<std::string>& arguments, const TProgramText& program,
                    const std::function<void(TVerb&)>& addVerbs, const std::function<void(TVerb&)>& addGuide);

} // namespace workbench

#endif
