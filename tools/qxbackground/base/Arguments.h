#ifndef QXBACKGROUND_BASE_ARGUMENTS_H
#define QXBACKGROUND_BASE_ARGUMENTS_H

#include <string>
#include <vector>

namespace workbench {

// What main was given, in this program's encoding of names, the program's own name first. Makes the standard streams
// take that encoding as well, and lets an exception that no C++ of this program can catch end it with one line.
std::vector<std::string> TakeArguments(int argumentCount, char** arguments);

} // namespace workbench

#endif
