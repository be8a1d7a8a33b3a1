#ifndef QXBACKGROUND_COMMANDLINE_VOCABULARY_H
#define QXBACKGROUND_COMMANDLINE_VOCABULARY_H

#include <string>
#include <vector>

namespace workbench {

// What is the same of an option for every verb that has it.
struct TWord {
    const char* name;
    const char* value; // what its value is called, with the unit; empty: it has none, or a path's
    const char* heading;
    std::vector<const char*> choices; // beginnings of values, where there are few
};

// All options, in the order in which every verb's help has them.
const std::vector<TWord>& Vocabulary();

} // namespace workbench

#endif
