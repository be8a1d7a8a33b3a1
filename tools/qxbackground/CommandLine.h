#ifndef QXBACKGROUND_COMMANDLINE_H
#define QXBACKGROUND_COMMANDLINE_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace workbench {

// What may be said about an option of a verb; each returns the option for the next.
class TOption {
public:
    explicit TOption(CLI::Option* given) : option(given) {}

    TOption Required();
    TOption AboveZero(); // as a single-precision number, which is what the library takes
    TOption Between(double lowest, double highest);
    TOption BetweenWhole(std::int64_t lowest, std::int64_t highest);
    TOption ShowDefault();
    TOption SplitAt(char delimiter);
    TOption OneAtATime(); // of a list: one value behind each use of the option

private:
    CLI::Option* option;
};

// The command line and its verbs. CLI11 stays behind this: it is large, and every file that sees it compiles slowly.
// Names without dashes are positional. Values are stored while the command line is parsed; then the verb runs.
class TVerb {
public:
    explicit TVerb(CLI::App& given) : app(&given) {}

    TVerb Add(const std::string& name, const std::string& help) const;
    void Footer(const std::string& text) const;
    void NeedsOneVerb() const;
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
    CLI::App* app;
};

// Parses and runs. `addVerbs` fills the command line. Throws what a verb throws, and TToolError for a command line
// that makes no sense; returns false when only help was asked for (and has been printed).
bool RunCommandLine(int argumentCount, char** arguments, const std::string& name, const std::string& help,
                    const std::function<void(const TVerb&)>& addVerbs);

} // namespace workbench

#endif
