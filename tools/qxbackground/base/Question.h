#ifndef QXBACKGROUND_BASE_QUESTION_H
#define QXBACKGROUND_BASE_QUESTION_H

#include <string>

namespace workbench {

// Whether somebody is there to be asked: the standard input and the standard error stream are a terminal.
bool SomebodyCanBeAsked();

// Asks for a yes; whatever else is answered is a no. Throws TToolError when the user asked to stop (Ctrl-C).
bool AnswersYes(const std::string& question);

} // namespace workbench

#endif
