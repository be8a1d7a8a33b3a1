#ifndef QXBACKGROUND_COMMANDLINE_TOPTIONTEXT_H
#define QXBACKGROUND_COMMANDLINE_TOPTIONTEXT_H

#include "commandline/TVerb.h"

#include <string>
#include <vector>

namespace workbench {

// An option or an argument as help, manual page, description and completion tell of it.
struct TOptionText {
    const CLI::Option* option = nullptr; // null for those that every command has
    std::string name;                    // "--output", or of an argument "images"
    std::string letter;                  // "-o", or empty
    std::string value;                   // "FILE"; empty for a flag
    std::string heading;
    std::string help;         // as the verb gives it
    std::string range;        // "0 to 100", or empty
    std::string defaultValue; // or empty
    std::vector<std::string> choices;
    bool isArgument = false, isRequired = false;
    bool takesMany = false;    // values
    bool mayLackValue = false; // a flag that also takes one, behind "="

    std::string Synopsis() const; // "-o, --output FILE", "images..."
    std::string FullHelp() const; // with range and default
};

// Arguments first, in their order; then options in the order of the vocabulary, --help at last.
std::vector<TOptionText> OptionTexts(const TVerb& verb);

// "qxbackground store add".
std::string FullName(const TVerb& verb);
// What a command line of the verb consists of, piece by piece, behind its name: what is required, "[OPTIONS]",
// arguments.
std::vector<std::string> UsagePieces(const TVerb& verb);

} // namespace workbench

#endif
