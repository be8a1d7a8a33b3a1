#include "commandline/TOptionText.h"

#include "commandline/Vocabulary.h"

#include <algorithm>
#include <list>

namespace workbench {

namespace {

const char* const kOfEveryVerb = "Help";

// The place in the vocabulary; behind its end for what is not in it.
std::size_t PlaceOf(const std::string& name)
{
    const std::vector<TWord>& words = Vocabulary();
    return static_cast<std::size_t>(
        std::find_if(words.begin(), words.end(), [&](const TWord& word) { return word.name == name; }) - words.begin());
}

// What the parser's checks say, behind the name of the type.
std::string RangeOf(const CLI::Option* option)
{
    const std::string type = option->get_type_name();
    const std::size_t colon = type.find(':');
    return colon == std::string::npos ? std::string() : type.substr(colon + 1);
}

std::string TypeOf(const CLI::Option* option)
{
    const std::string type = option->get_type_name();
    return type.substr(0, type.find(':'));
}

TOptionText TextOf(const TVerb& verb, const CLI::Option* option)
{
    TOptionText text;
    text.option = option;
    text.name = option->get_name();
    text.isArgument = option->get_positional();
    text.isRequired = option->get_required();
    text.help = option->get_description();
    text.range = RangeOf(option);
    text.defaultValue = option->get_default_str();
    if (text.defaultValue.size() > 1 && text.defaultValue.front() == '[')
        text.defaultValue = text.defaultValue.substr(1, text.defaultValue.size() - 2);
    // Further names are older ones, still understood but not told; only -o is for daily use.
    if (text.name == "--output" && !option->get_snames().empty())
        text.letter = "-" + option->get_snames().front();
    text.takesMany = option->get_expected_max() > 1 && (text.isArgument || option->get_allow_extra_args());
    const bool isFlag = option->get_expected_max() == 0;
    const std::size_t place = PlaceOf(text.name);
    text.heading = text.isArgument ? "Arguments" : "Options";
    if (place < Vocabulary().size()) {
        const TWord& word = Vocabulary()[place];
        text.value = word.value;
        if (!text.isArgument)
            text.heading = word.heading;
        text.choices.assign(word.choices.begin(), word.choices.end());
    }
    if (verb.PathOptionOf(option) != nullptr || (text.value.empty() && !isFlag))
        text.value = TypeOf(option);
    text.mayLackValue = isFlag && !text.value.empty();
    return text;
}

TOptionText Flag(const char* name, const char* letter, const char* help)
{
    TOptionText text;
    text.name = name;
    text.letter = letter;
    text.heading = kOfEveryVerb;
    text.help = help;
    return text;
}

} // namespace

std::string TOptionText::Synopsis() const
{
    if (isArgument)
        return name + (takesMany ? "..." : "");
    std::string text = (letter.empty() ? "" : letter + ", ") + name;
    if (mayLackValue)
        text += "[=" + value + "]";
    else if (!value.empty())
        text += " " + value + (takesMany ? "..." : "");
    return text;
}

std::string TOptionText::FullHelp() const
{
    std::string limits = range == "above 0" ? "" : range; // of exposures nobody expects anything else
    if (!defaultValue.empty() && !mayLackValue)
        limits += (limits.empty() ? "default " : "; default ") + defaultValue;
    if (limits.empty())
        return help;
    // What the text itself says of a default stands in the same brackets.
    const std::size_t bracket = help.rfind(" (");
    const bool goesOn =
        bracket != std::string::npos && help.back() == ')' && help.compare(bracket, 9, " (default") == 0;
    return goesOn ? help.substr(0, help.size() - 1) + "; " + limits + ")" : help + " (" + limits + ")";
}

std::vector<TOptionText> OptionTexts(const TVerb& verb)
{
    // Arguments first, as they are declared, then options by their places in the vocabulary.
    std::list<TOptionText> sorted;
    for (const CLI::Option* option : verb.Options())
        sorted.push_back(TextOf(verb, option));
    sorted.sort([](const TOptionText& one, const TOptionText& other) {
        if (one.isArgument || other.isArgument)
            return one.isArgument && !other.isArgument;
        return PlaceOf(one.name) < PlaceOf(other.name);
    });
    std::vector<TOptionText> texts(sorted.begin(), sorted.end());
    texts.push_back(Flag("--help", "-h", "Print this help and exit"));
    if (verb.Parent() == nullptr) {
        texts.push_back(Flag("--version", "", "Print the version and exit"));
        texts.push_back(Flag("--describe", "", "Print all verbs and options as JSON and exit"));
        texts.push_back(Flag("--man-page", "", "Print the manual page, for 'man -l', and exit"));
    }
    return texts;
}

std::string FullName(const TVerb& verb)
{
    return verb.Parent() == nullptr ? verb.get_name() : FullName(*verb.Parent()) + " " + verb.get_name();
}

std::vector<std::string> UsagePieces(const TVerb& verb)
{
    std::vector<std::string> pieces;
    if (!verb.Verbs().empty()) {
        pieces.emplace_back("VERB");
        pieces.emplace_back("...");
        return pieces;
    }
    const std::vector<TOptionText> texts = OptionTexts(verb);
    const auto addArguments = [&] {
        for (const TOptionText& text : texts) {
            if (text.isArgument)
                pieces.push_back(text.isRequired ? text.Synopsis() : "[" + text.Synopsis() + "]");
        }
    };
    // An option that takes many values would take what follows it as well; the output, which takes one, comes last.
    const bool takesLists = std::any_of(texts.begin(), texts.end(), [](const TOptionText& text) {
        return text.isRequired && !text.isArgument && text.takesMany;
    });
    if (!takesLists)
        addArguments();
    for (const TOptionText& text : texts) {
        if (text.isRequired && !text.isArgument)
            pieces.push_back((text.letter.empty() ? text.name : text.letter) + " " + text.value +
                             (text.takesMany ? "..." : ""));
    }
    if (takesLists)
        addArguments();
    if (std::any_of(texts.begin(), texts.end(),
                    [](const TOptionText& text) { return text.option != nullptr && !text.isArgument; }))
        pieces.emplace_back("[OPTIONS]");
    return pieces;
}

} // namespace workbench
