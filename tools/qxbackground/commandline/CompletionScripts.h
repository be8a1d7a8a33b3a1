#ifndef QXBACKGROUND_COMMANDLINE_COMPLETIONSCRIPTS_H
#define QXBACKGROUND_COMMANDLINE_COMPLETIONSCRIPTS_H

namespace workbench {

// The files of commandline/completion, put into the program by CMake.
extern const char* const kBashCompletion;
extern const char* const kZshCompletion;
extern const char* const kFishCompletion;

} // namespace workbench

#endif
