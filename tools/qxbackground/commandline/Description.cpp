#include "commandline/Description.h"

#include "base/JsonText.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "commandline/TOptionText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace workbench {

namespace {

const char* UseText(TPathUse use)
{
    switch (use) {
    case TPathUse::Reads:
        return "reads";
    case TPathUse::Creates:
        return "creates";
    case TPathUse::Changes:
    case TPathUse::Follows: // is of no option of its own
        return "changes";
    }
    return "";
}

const char* KindText(TPathKind kind)
{
    switch (kind) {
    case TPathKind::Image:
        return "image";
    case TPathKind::Picture:
        return "picture";
    case TPathKind::Page:
        return "page";
    case TPathKind::Table:
        return "table";
    case TPathKind::Calibration:
        return "calibration";
    case TPathKind::Store:
        return "store";
    case TPathKind::CalibrationOrStore:
        return "calibration or store";
    case TPathKind::Folder:
        return "folder";
    case TPathKind::Library:
        return "library";
    case TPathKind::PixelList:
        return "pixels";
    }
    return "";
}

// By what its values are for the parser: for a flag nothing, for a text a TEXT unless they are paths.
const char* TypeText(const CLI::Option* option, bool isPath)
{
    if (option->get_expected_max() == 0)
        return "flag";
    return isPath || option->get_type_name() == "TEXT" ? "text" : "number";
}

bool TakesMany(const CLI::Option* option)
{
    return option->get_expected_max() > 1;
}

nlohmann::json OptionsJson(const TVerb& verb)
{
    nlohmann::json options = nlohmann::json::array();
    for (const TOptionText& text : OptionTexts(verb)) {
        if (text.option == nullptr) // --help and its like
            continue;
        const TVerb::TPathOption* const path = verb.PathOptionOf(text.option);
        nlohmann::json option{{"name", text.name},
                              {"letter", text.letter},
                              {"positional", text.isArgument},
                              {"required", text.isRequired},
                              {"many", TakesMany(text.option)},
                              {"type", TypeText(text.option, path != nullptr)},
                              {"value", text.value},
                              {"range", text.range},
                              {"default", text.defaultValue},
                              {"choices", text.choices},
                              {"heading", text.heading},
                              {"help", text.help}};
        if (path != nullptr)
            option["path"] = {{"use", UseText(path->use)}, {"kind", KindText(path->kind)}};
        options.push_back(option);
    }
    return options;
}

nlohmann::json ExamplesJson(const TVerb& verb)
{
    nlohmann::json examples = nlohmann::json::array();
    for (const TVerb::TExample& example : verb.Examples())
        examples.push_back({{"what", example.what}, {"command", example.command}});
    return examples;
}

void AddVerbsJson(const TVerb& verb, const std::vector<std::string>& words, nlohmann::json& list)
{
    if (verb.Verbs().empty())
        list.push_back({{"verb", words},
                        {"help", verb.get_description()},
                        {"options", OptionsJson(verb)},
                        {"examples", ExamplesJson(verb)}});
    for (const TVerb* inner : verb.Verbs()) {
        std::vector<std::string> innerWords = words;
        innerWords.push_back(inner->get_name());
        AddVerbsJson(*inner, innerWords, list);
    }
}

nlohmann::json TermsJson(const std::vector<TProgramText::TTerm>& terms)
{
    nlohmann::json list = nlohmann::json::array();
    for (const TProgramText::TTerm& term : terms)
        list.push_back({{"term", term.term}, {"text", term.text}});
    return list;
}

std::vector<std::string> VerbNames(const TVerb& verb)
{
    std::vector<std::string> names;
    for (const TVerb* inner : verb.Verbs())
        names.push_back(inner->get_name());
    return names;
}

std::vector<std::string> OptionNames(const TVerb& verb)
{
    std::vector<std::string> names{"--help"};
    if (verb.Parent() == nullptr)
        names.emplace_back("--version");
    for (const CLI::Option* described : verb.Options()) {
        for (const std::string& name : described->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

std::string UnknownVerb(const TVerb& verb, const std::string& word)
{
    std::vector<std::string> names = VerbNames(verb);
    if (verb.Parent() == nullptr)
        names.emplace_back("help");
    const std::string nearest = Nearest(word, names);
    return "'" + word + "' is no verb" + (nearest.empty() ? "" : "; did you mean '" + nearest + "'?") + " ('" +
           FullName(verb) + " --help' lists them)";
}

std::string UnknownOption(const TVerb& root, const TVerb& verb, const std::string& word)
{
    const std::string name = word.substr(0, word.find('='));
    const std::string nearest = Nearest(name, OptionNames(verb));
    const std::string text = "'" + name + "' is no option of '" + FullName(verb) + "'";
    std::error_code error;
    if (std::filesystem::exists(word, error))
        return text + "; './" + word + "' is the file of that name";
    for (const std::string& known : OptionNames(verb)) {
        if (known == name) // the parser met it before it met the verb
            return "'" + name + "' belongs behind the verb: '" + FullName(verb) + " ... " + name + "'";
    }
    for (const std::string& known : OptionNames(root)) {
        if (known == name)
            return text + "; it belongs before the verb: '" + root.get_name() + " " + name + " ...'";
    }
    return text +
           (nearest.empty() ? " ('" + FullName(verb) + " --help' lists them)" : "; did you mean '" + nearest + "'?");
}

// An option that takes several values takes all words that follow; nothing may then be left for the last argument.
std::string SwallowedArguments(const TVerb& verb)
{
    for (const CLI::Option* missing : verb.Options()) {
        if (!missing->get_positional() || !missing->get_required() || missing->count() > 0)
            continue;
        for (const CLI::Option* greedy : verb.Options()) {
            if (greedy->get_positional() || !TakesMany(greedy) || greedy->count() < 2 ||
                !greedy->get_allow_extra_args())
                continue;
            std::string taken;
            for (const std::string& value : greedy->results())
                taken += (taken.empty() ? "" : " ") + value;
            return greedy->get_name() + " has taken all that follows it (" + taken + "), so that no " +
                   missing->get_name() + " are left; put the " + missing->get_name() + " before " + greedy->get_name() +
                   " or behind another option";
        }
    }
    return {};
}

// A value that was left out lets its option take the name of the next one.
std::string TakenOption(const TVerb& verb)
{
    const std::vector<std::string> names = OptionNames(verb);
    for (const CLI::Option* taker : verb.Options()) {
        for (const std::string& value : taker->results()) {
            if (std::find(names.begin(), names.end(), value) != names.end())
                return taker->get_name() + " needs a value behind it; '" + value + "' stands there";
        }
    }
    return {};
}

} // namespace

std::string DescriptionJson(const TVerb& root, const TProgramText& program)
{
    nlohmann::json verbs = nlohmann::json::array();
    AddVerbsJson(root, {}, verbs);
    return JsonText({{"version", program.version},
                     {"options", OptionsJson(root)},
                     {"verbs", verbs},
                     {"examples", ExamplesJson(root)},
                     {"exitStatus", TermsJson(program.exitStatus)},
                     {"environment", TermsJson(program.environment)}});
}

const TVerb& ParsedVerb(const TVerb& verb)
{
    for (const TVerb* inner : verb.Verbs()) {
        if (inner->parsed())
            return ParsedVerb(*inner);
    }
    return verb;
}

std::string ExplainRefusal(const TVerb& root, const std::vector<std::string>& unread, const std::string& complaint)
{
    const TVerb& verb = ParsedVerb(root);
    for (const std::string& word : unread) {
        if (word.size() > 1 && word.front() == '-' && word != "--")
            return UnknownOption(root, verb, word);
    }
    if (!verb.Verbs().empty())
        return unread.empty() ? "which verb? ('" + FullName(verb) + " --help' lists them)"
                              : UnknownVerb(verb, unread.front());
    const std::string takenOption = TakenOption(verb);
    if (!takenOption.empty())
        return takenOption;
    const std::string swallowed = SwallowedArguments(verb);
    if (!swallowed.empty())
        return swallowed;
    if (complaint.empty()) {
        for (const CLI::Option* missing : verb.Options()) {
            const std::string name = missing->get_name();
            if (missing->get_required() && missing->count() == 0)
                return (missing->get_positional() ? "the argument '" + name + "'" : name) + " is missing ('" +
                       FullName(verb) + " --help' explains it)";
        }
    }
    if (!unread.empty())
        return "'" + unread.front() + "' is one argument too many for '" + FullName(verb) + "'";
    return complaint;
}

void RequireVerb(const TVerb& root, const std::vector<std::string>& words)
{
    const TVerb* verb = &root;
    for (const std::string& word : words) {
        const TVerb* next = nullptr;
        for (const TVerb* inner : verb->Verbs()) {
            if (inner->get_name() == word)
                next = inner;
        }
        if (next == nullptr)
            throw TToolError(verb->Verbs().empty() ? "'" + word + "' is one word too many: '" + FullName(*verb) +
                                                         "' has no verbs of its own"
                                                   : UnknownVerb(*verb, word));
        verb = next;
    }
}

} // namespace workbench
