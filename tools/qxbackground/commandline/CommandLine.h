#ifndef QXBACKGROUND_COMMANDLINE_COMMANDLINE_H
#define QXBACKGROUND_COMMANDLINE_COMMANDLINE_H

#include "commandline/TVerb.h"

#include <functional>
#include <string>

namespace workbench {

struct TProgramText {
    std::string name;
    std::string version;
    std::string help;
};

// Parses and runs. `arguments` begin with the name of the program. `addVerbs` fills the command line. Throws what a
// verb throws, and TToolError for a command line that makes no sense; returns false when only help, the version, or the
// description of all options was asked for (and has been printed).
bool RunCommandLine(const std::vector<std::string>& arguments, const TProgramText& program,
                    const std::function<void(TVerb&)>& addVerbs);

} // namespace workbench

#endif
