#ifndef QXBACKGROUND_BASE_TERMINAL_H
#define QXBACKGROUND_BASE_TERMINAL_H

#include <string>

namespace workbench {

bool StandardErrorIsTerminal();
bool StandardInputIsTerminal();

// What is typed at the terminal up to the end of the line, which is part of it. Less when the input ends before, or
// when an interrupt comes.
std::string LineFromTerminal();

} // namespace workbench

#endif
