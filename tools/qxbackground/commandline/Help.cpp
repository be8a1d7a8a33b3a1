#include "commandline/Help.h"

#include "base/Color.h"
#include "commandline/TOptionText.h"
#include "commandline/TextLayout.h"

#include <algorithm>

namespace workbench {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kUsageIndent = 8;
constexpr std::size_t kTextColumn = 27; // of options
constexpr std::size_t kVerbColumn = 15;

std::string HeadingLine(const std::string& text)
{
    return "\n" + Heading(text + ":") + "\n";
}

std::string ExamplesText(const TVerb& verb)
{
    if (verb.Examples().empty())
        return {};
    std::string text = HeadingLine(verb.Examples().size() == 1 ? "Example" : "Examples");
    for (const TVerb::TExample& example : verb.Examples())
        text += WrappedText(example.what + ":", kIndent) + WrappedCommand(example.command, 2 * kIndent);
    return text;
}

std::string VerbsText(const TVerb& verb)
{
    std::vector<std::string> headings;
    for (const TVerb* inner : verb.Verbs()) {
        if (std::find(headings.begin(), headings.end(), inner->get_group()) == headings.end())
            headings.push_back(inner->get_group());
    }
    std::string text;
    for (const std::string& heading : headings) {
        text += HeadingLine(heading == "Subcommands" ? "Verbs" : heading);
        for (const TVerb* inner : verb.Verbs()) {
            if (inner->get_group() == heading)
                text += WrappedText("  " + inner->get_name(), inner->get_description(), kVerbColumn);
        }
    }
    return text;
}

std::string OptionsText(const TVerb& verb)
{
    std::string text, heading;
    for (const TOptionText& option : OptionTexts(verb)) {
        if (option.heading != heading)
            text += HeadingLine(option.heading);
        heading = option.heading;
        text +=
            WrappedText("  " + option.Synopsis(),
                        (option.isRequired && !option.isArgument ? "Required. " : "") + option.FullHelp(), kTextColumn);
    }
    return text;
}

std::string TermsText(const std::string& heading, const std::vector<TProgramText::TTerm>& terms)
{
    std::string text = HeadingLine(heading);
    for (const TProgramText::TTerm& term : terms)
        text += WrappedText("  " + term.term, term.text, kVerbColumn);
    return text;
}

} // namespace

std::string HelpText(const TVerb& verb, const TProgramText& program)
{
    const bool isProgram = verb.Parent() == nullptr;
    std::string text =
        WrappedText(isProgram ? program.version + " - " + program.summary + "." : verb.get_description() + ".", 0);
    const std::string usage = "Usage:";
    const std::string first = usage + " " + FullName(verb) + " ";
    text += "\n" + Heading(usage) + WrappedPieces(first, UsagePieces(verb), kUsageIndent).substr(usage.size());
    for (const std::string& about : isProgram ? program.about : std::vector<std::string>())
        text += "\n" + WrappedText(about, 0);
    text += ExamplesText(verb) + VerbsText(verb) + OptionsText(verb);
    for (const std::string& note : verb.Notes())
        text += "\n" + WrappedText(note, 0);
    if (isProgram)
        text += TermsText("Exit status", program.exitStatus) + TermsText("Environment", program.environment);
    if (!verb.Verbs().empty())
        text += "\n" + WrappedText("'" + FullName(verb) + " VERB --help' or '" + program.name + " help" +
                                       FullName(verb).substr(program.name.size()) + " VERB' explains a verb" +
                                       (isProgram ? ", 'man " + program.name + "' everything." : "."),
                                   0);
    return text;
}

} // namespace workbench
