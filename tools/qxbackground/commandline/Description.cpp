#include "commandline/Description.h"

#include "base/TToolError.h"
#include "base/Wording.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

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
    }
    return "";
}

nlohmann::json OptionsJson(const TDescribedVerb& verb)
{
    nlohmann::json options = nlohmann::json::array();
    for (const TDescribedOption& described : verb.options) {
        nlohmann::json option{{"name", described.option->get_name()},
                              {"positional", described.option->get_positional()},
                              {"required", described.option->get_required()},
                              {"many", described.many},
                              {"type", described.type},
                              {"help", described.option->get_description()}};
        if (described.isPath)
            option["path"] = {{"use", UseText(described.use)}, {"kind", KindText(described.kind)}};
        options.push_back(option);
    }
    return options;
}

void AddVerbsJson(const TDescribedVerb& verb, const std::vector<std::string>& words, nlohmann::json& list)
{
    if (verb.verbs.empty())
        list.push_back({{"verb", words}, {"help", verb.app->get_description()}, {"options", OptionsJson(verb)}});
    for (const auto& inner : verb.verbs) {
        std::vector<std::string> innerWords = words;
        innerWords.push_back(inner->app->get_name());
        AddVerbsJson(*inner, innerWords, list);
    }
}

std::vector<std::string> VerbNames(const TDescribedVerb& verb)
{
    std::vector<std::string> names;
    for (const auto& inner : verb.verbs)
        names.push_back(inner->app->get_name());
    return names;
}

std::vector<std::string> OptionNames(const TDescribedVerb& verb)
{
    std::vector<std::string> names{"--help"};
    if (verb.parent == nullptr)
        names.emplace_back("--version");
    for (const TDescribedOption& described : verb.options) {
        for (const std::string& name : described.option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

std::string FullName(const TDescribedVerb& verb)
{
    return verb.parent == nullptr ? verb.app->get_name() : FullName(*verb.parent) + " " + verb.app->get_name();
}

std::string UnknownVerb(const TDescribedVerb& verb, const std::string& word)
{
    std::vector<std::string> names = VerbNames(verb);
    if (verb.parent == nullptr)
        names.emplace_back("help");
    const std::string nearest = Nearest(word, names);
    return "'" + word + "' is no verb" + (nearest.empty() ? "" : "; did you mean '" + nearest + "'?") + " ('" +
           FullName(verb) + " --help' lists them)";
}

std::string UnknownOption(const TDescribedVerb& root, const TDescribedVerb& verb, const std::string& word)
{
    const std::string name = word.substr(0, word.find('='));
    const std::string nearest = Nearest(name, OptionNames(verb));
    const std::string text = "'" + name + "' is no option of '" + FullName(verb) + "'";
    for (const std::string& known : OptionNames(root)) {
        if (known == name)
            return text + "; it belongs before the verb: '" + root.app->get_name() + " " + name + " ...'";
    }
    return text +
           (nearest.empty() ? " ('" + FullName(verb) + " --help' lists them)" : "; did you mean '" + nearest + "'?");
}

// The verb that was asked for: the innermost one that the parser came to.
const TDescribedVerb& ParsedVerb(const TDescribedVerb& verb)
{
    for (const auto& inner : verb.verbs) {
        if (inner->app->parsed())
            return ParsedVerb(*inner);
    }
    return verb;
}

// An option that takes several values takes all words that follow; nothing may then be left for the last argument.
std::string SwallowedArguments(const TDescribedVerb& verb)
{
    for (const TDescribedOption& missing : verb.options) {
        if (!missing.option->get_positional() || !missing.option->get_required() || missing.option->count() > 0)
            continue;
        for (const TDescribedOption& greedy : verb.options) {
            if (greedy.option->get_positional() || !greedy.many || greedy.option->count() < 2 ||
                !greedy.option->get_allow_extra_args())
                continue;
            std::string taken;
            for (const std::string& value : greedy.option->results())
                taken += (taken.empty() ? "" : " ") + value;
            return greedy.option->get_name() + " has taken all that follows it (" + taken + "), so that no " +
                   missing.option->get_name() + " are left; put the " + missing.option->get_name() + " before " +
                   greedy.option->get_name() + " or behind another option";
        }
    }
    return {};
}

} // namespace

std::string DescriptionJson(const TDescribedVerb& root)
{
    nlohmann::json verbs = nlohmann::json::array();
    AddVerbsJson(root, {}, verbs);
    return nlohmann::json{{"options", OptionsJson(root)}, {"verbs", verbs}}.dump(2) + "\n";
}

std::string ExplainRefusal(const TDescribedVerb& root, const std::vector<std::string>& unread,
                           const std::string& complaint)
{
    const TDescribedVerb& verb = ParsedVerb(root);
    for (const std::string& word : unread) {
        if (word.size() > 1 && word.front() == '-' && word != "--")
            return UnknownOption(root, verb, word);
    }
    if (!verb.verbs.empty())
        return unread.empty() ? "which verb? ('" + FullName(verb) + " --help' lists them)"
                              : UnknownVerb(verb, unread.front());
    const std::string swallowed = SwallowedArguments(verb);
    if (!swallowed.empty())
        return swallowed;
    if (complaint.empty()) {
        for (const TDescribedOption& missing : verb.options) {
            const std::string name = missing.option->get_name();
            if (missing.option->get_required() && missing.option->count() == 0)
                return (missing.option->get_positional() ? "the argument '" + name + "'" : name) + " is missing ('" +
                       FullName(verb) + " --help' explains it)";
        }
    }
    if (!unread.empty())
        return "'" + unread.front() + "' is one argument too many for '" + FullName(verb) + "'";
    return complaint;
}

void RequireVerb(const TDescribedVerb& root, const std::vector<std::string>& words)
{
    const TDescribedVerb* verb = &root;
    for (const std::string& word : words) {
        const TDescribedVerb* next = nullptr;
        for (const auto& inner : verb->verbs) {
            if (inner->app->get_name() == word)
                next = inner.get();
        }
        if (next == nullptr)
            throw TToolError(verb->verbs.empty() ? "'" + word + "' is one word too many: '" + FullName(*verb) +
                                                       "' has no verbs of its own"
                                                 : UnknownVerb(*verb, word));
        verb = next;
    }
}

} // namespace workbench
