#ifndef QXBACKGROUND_COMMANDLINE_COMPLETION_H
#define QXBACKGROUND_COMMANDLINE_COMPLETION_H

#include "commandline/TVerb.h"

#include <string>
#include <vector>

namespace workbench {

// What may stand in place of the last word of a command line, for the scripts that complete it in shells. `words` are
// those behind the program's name, the last one as far as it is typed.
//
// The first line says what is meant: "words", and then a line for each, with a tab and its meaning behind it where
// there is one to tell; "folders"; "files" and the endings of those that are meant, none for all; or "value", a tab,
// and what value is wanted. Files and folders stand behind the "=" of a word that begins with "--".
std::string CompletionText(const TVerb& root, const std::vector<std::string>& words);

// The script for "bash", "zsh" or "fish".
std::string CompletionScript(const std::string& shell);

} // namespace workbench

#endif
