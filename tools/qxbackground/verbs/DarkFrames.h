#ifndef QXBACKGROUND_VERBS_DARKFRAMES_H
#define QXBACKGROUND_VERBS_DARKFRAMES_H

#include "batch/TFrameStack.h"
#include "stacks/TStackOptions.h"
#include "verbs/Options.h"

#include <string>
#include <vector>

namespace workbench {

// Which dark frames make a correction, and how.
struct TDarkOptions {
    std::vector<std::string> files;
    TStackOptions stack;
};

// For the verbs that make a correction: --reject, --combine, --stack-memory.
void AddDarkOptions(TVerb& verb, TDarkOptions& options);

// The frame that the library gets.
TFrameStack ReadDarks(const TDarkOptions& options, const TInputOptions& input);

// "10 dark frames", and how they were combined where that is not the plain average.
std::string DarksText(const TFrameStack& stack, const TDarkOptions& options);

// One line each on the standard output, and on the standard error stream.
void PrintNotes(const std::vector<std::string>& notes);
void PrintWarnings(const std::vector<std::string>& warnings);

} // namespace workbench

#endif
