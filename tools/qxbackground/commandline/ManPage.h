#ifndef QXBACKGROUND_COMMANDLINE_MANPAGE_H
#define QXBACKGROUND_COMMANDLINE_MANPAGE_H

#include "commandline/TProgramText.h"
#include "commandline/TVerb.h"

#include <string>

namespace workbench {

// The manual page, in the language of man. Each option is told once, with the verbs that have it.
std::string ManPage(const TVerb& root, const TProgramText& program);

} // namespace workbench

#endif
