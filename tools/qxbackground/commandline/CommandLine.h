#ifndef QXBACKGROUND_COMMANDLINE_COMMANDLINE_H
#define QXBACKGROUND_COMMANDLINE_COMMANDLINE_H

#include "commandline/TPathPlan.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace workbench {

struct TDescribedOption;
struct TDescribedVerb;

// What may be said about an option of a verb; each returns the option for the next.
class TOption {
public:
    TOption(CLI::Option* given, std::shared_ptr<TDescribedVerb> verb);

    TOption Required();
    TOption AboveZero(); // as a single-precision number, which is what the library takes
    TOption Between(double lowest, double highest);
    TOption BetweenWhole(std::int64_t lowest, std::int64_t highest);
    TOption ShowDefault();
    TOption SplitAt(char delimiter);
    TOption OneAtATime(); // of a list: one value behind each use of the option

    // An option that names files says what becomes of them; all else follows from that: what is held against what
    // before the verb runs, what is locked while it runs, what --describe tells.
    TOption Reads(TPathKind kind);
    TOption Changes(TPathKind kind);
    // Gives the verb the flag --overwrite, which goes to `overwrite`.
    TOption Creates(TPathKind kind, bool& overwrite);
    // For options whose files follow from several options: `fill` adds them to the plan, told the option's name.
    TOption Expanded(std::function<void(const std::string&, TPathPlan&)> fill);

private:
    TOption Uses(TPathUse use, TPathKind kind);
    TDescribedOption& Described() const;

    CLI::Option* option;
    std::shared_ptr<TDescribedVerb> verb;
};

// The command line and its verbs. CLI11 stays behind this: it is large, and every file that sees it compiles slowly.
// Names without dashes are positional. Values are stored while the command line is parsed; then the verb runs.
class TVerb {
public:
    TVerb(CLI::App& given, std::shared_ptr<TDescribedVerb> description);

    TVerb Add(const std::string& name, const std::string& help) const;
    void Footer(const std::string& text) const;
    void NeedsOneVerb() const;
    // Before `action`, the verb's paths are checked and what it changes is locked; see TPathPlan.
    void Run(std::function<void()> action) const;

    TOption Option(const std::string& name, std::string& value, const std::string& help) const;
    TOption Option(const std::string& name, std::vector<std::string>& values, const std::string& help) const;
    TOption Option(const std::string& name, double& value, const std::string& help) const;
    TOption Option(const std::string& name, std::vector<double>& values, const std::string& help) const;
    TOption Option(const std::string& name, int& value, const std::string& help) const;
    TOption Option(const std::string& name, unsigned& value, const std::string& help) const;
    TOption Option(const std::string& name, std::uint64_t& value, const std::string& help) const;
    void Flag(const std::string& name, bool& value, const std::string& help) const;

private:
    template <class T> TOption Add(const std::string& name, T& value, const std::string& help, const char* type) const;

    CLI::App* app;
    std::shared_ptr<TDescribedVerb> description;
};

struct TProgramText {
    std::string name;
    std::string version;
    std::string help;
};

// Parses and runs. `addVerbs` fills the command line. Throws what a verb throws, and TToolError for a command line
// that makes no sense; returns false when only help, the version, or the description of all options was asked for
// (and has been printed).
bool RunCommandLine(int argumentCount, char** arguments, const TProgramText& program,
                    const std::function<void(const TVerb&)>& addVerbs);

} // namespace workbench

#endif
