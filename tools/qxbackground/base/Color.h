#ifndef QXBACKGROUND_BASE_COLOR_H
#define QXBACKGROUND_BASE_COLOR_H

#include <string>

namespace workbench {

// Texts that stand out where they go to a terminal that knows colours and nobody has asked for none (NO_COLOR);
// elsewhere they stay as they are.
std::string ErrorMark(const std::string& text);   // for the standard error stream
std::string WarningMark(const std::string& text); // these two for the standard output
std::string Heading(const std::string& text);

} // namespace workbench

#endif
