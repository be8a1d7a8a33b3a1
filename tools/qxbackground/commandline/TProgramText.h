#ifndef QXBACKGROUND_COMMANDLINE_TPROGRAMTEXT_H
#define QXBACKGROUND_COMMANDLINE_TPROGRAMTEXT_H

#include <string>
#include <vector>

namespace workbench {

// What help and the manual page tell of the program as a whole; what they tell of verbs and options, those say.
struct TProgramText {
    struct TTerm {
        std::string term, text;
    };

    std::string name;
    std::string version;
    std::string summary; // in one line, without a full stop
    std::vector<std::string> about;
    std::vector<TTerm> exitStatus;
    std::vector<TTerm> environment;
    std::vector<TTerm> files;
};

} // namespace workbench

#endif
