#ifndef QXBACKGROUND_COMMANDLINE_TVERB_H
#define QXBACKGROUND_COMMANDLINE_TVERB_H

#include "commandline/TPathPlan.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace workbench {

// A verb, or the program, whose verbs are then the outermost ones: what the parser knows of it, and what becomes of the
// paths that its options name. Values are stored while the command line is parsed; then the verb runs.
class TVerb : public CLI::App {
public:
    // Adds to the plan what an option was given, told the option's name.
    using TFill = std::function<void(const std::string& option, TPathPlan& plan)>;

    struct TExample {
        std::string what, command;
    };

    struct TPathOption {
        const CLI::Option* option = nullptr;
        TPathUse use = TPathUse::Reads;
        TPathKind kind = TPathKind::Image;
        TFill fill;
    };

    TVerb(const std::string& help, const std::string& name, TVerb* parent);

    TVerb& AddVerb(const std::string& name, const std::string& help);

    // How a verb is added, by AddVerb, once it is wanted.
    struct TAdder {
        std::string name;
        std::function<void()> add;
    };
    // Adds the one that the command line names next, which SetWords has told, or all of them where it names none: to
    // set all verbs up with their options takes longer than most verbs take to run.
    void AddVerbs(const std::vector<TAdder>& adders);
    void SetWords(const std::vector<std::string>& behindThis) { words = behindThis; }

    // An option that names files says what becomes of them; all else follows from that: what is held against what
    // before the verb runs, what is locked while it runs, what --describe tells. `fill` is for files that do not simply
    // have the names that stand behind the option. Each returns the option.
    CLI::Option* Reads(TPathKind kind, CLI::Option* option, TFill fill = {});
    CLI::Option* Changes(TPathKind kind, CLI::Option* option, TFill fill = {});
    // Gives the verb the flag --overwrite, which goes to `overwrite`.
    CLI::Option* Creates(TPathKind kind, CLI::Option* option, bool& overwrite, TFill fill = {});

    // The values of the option are keys of corrections that the verb's calibration file or store has. Returns the
    // option.
    CLI::Option* NamesKey(CLI::Option* option);

    // For help and the manual page. A command stands in one line there and here; a note is a paragraph, and lines of it
    // that begin with two blanks stay as they are. What is noted twice is told once.
    void AddExample(const std::string& what, const std::string& command);
    void AddNote(const std::string& text);

    // Before `action`, the verb's paths are checked and what it changes is locked; see TPathPlan.
    void Run(std::function<void()> action);

    const TVerb* Parent() const { return parent; }
    // Of those that were added.
    std::vector<const TVerb*> Verbs() const { return {verbs.begin(), verbs.end()}; }
    // In the order in which they were added, without --help and --version.
    std::vector<const CLI::Option*> Options() const;
    // Null for an option that names no files.
    const TPathOption* PathOptionOf(const CLI::Option* option) const;
    bool IsKey(const CLI::Option* option) const;
    const std::vector<TExample>& Examples() const { return examples; }
    const std::vector<std::string>& Notes() const { return notes; }
    // The verb of these names, from the outermost on; null when there is none.
    TVerb* Find(const std::vector<std::string>& names);

private:
    // A value that was left out lets its option take the name of the next one, which may be none that has to be there.
    void RefuseTakenOptions() const;
    // "-o=name", which the parser takes for a name that begins with the sign.
    void RefuseSignsOfEquality() const;
    void RefuseOtherEndings() const;
    CLI::Option* Uses(TPathUse use, TPathKind kind, CLI::Option* option, TFill fill);

    const TVerb* parent;
    std::vector<TVerb*> verbs;
    std::vector<std::string> words; // of the command line, behind this verb
    std::vector<TPathOption> paths;
    std::vector<const CLI::Option*> keys;
    std::vector<TExample> examples;
    std::vector<std::string> notes;
    const bool* overwriteFlag = nullptr; // when the verb creates files
};

} // namespace workbench

#endif
