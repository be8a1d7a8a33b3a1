#include "commandline/Completion.h"

#include "calibration/TCalibrationWalk.h"
#include "calibration/TStorePlace.h"
#include "commandline/CompletionScripts.h"
#include "commandline/TOptionText.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <set>

namespace workbench {

namespace {

// What the words before the last one say.
struct TTypedWords {
    const TVerb* verb = nullptr;
    std::vector<TOptionText> texts;       // of the verb
    std::vector<std::string> names;       // of the options that are given
    const TOptionText* pending = nullptr; // an option that wants a value
    bool pendingMayEnd = false;           // it has one, but takes more
    std::vector<std::string> arguments;
    std::vector<std::string> groups;
    bool onlyArguments = false; // behind "--"
};

const TOptionText* Named(const TTypedWords& typed, const std::string& name)
{
    for (const TOptionText& text : typed.texts) {
        if (text.isArgument)
            continue;
        bool isName = name == text.name || (!text.letter.empty() && name == text.letter);
        if (text.option != nullptr) // older names as well
            isName = isName || (name.compare(0, 2, "--") == 0 && text.option->check_lname(name.substr(2)));
        if (isName)
            return &text;
    }
    return nullptr;
}

void TakeOption(TTypedWords& typed, const std::string& word)
{
    const std::size_t equals = word.find('=');
    const TOptionText* const option = Named(typed, word.substr(0, equals));
    typed.pending = nullptr;
    if (option == nullptr)
        return;
    typed.names.push_back(option->name);
    if (equals == std::string::npos && !option->value.empty() && !option->mayLackValue)
        typed.pending = option;
    else if (equals != std::string::npos && option->name == "--group")
        typed.groups.push_back(word.substr(equals + 1));
    typed.pendingMayEnd = false;
}

void TakeVerb(TTypedWords& typed, const TVerb& verb)
{
    typed.verb = &verb;
    typed.texts = OptionTexts(verb);
    typed.names.clear();
    typed.pending = nullptr;
}

TTypedWords Read(const TVerb& root, std::vector<std::string> words)
{
    TTypedWords typed;
    TakeVerb(typed, root);
    words.pop_back();
    if (!words.empty() && words.front() == "help")
        words.erase(words.begin());
    for (const std::string& word : words) {
        if (typed.onlyArguments) {
            typed.arguments.push_back(word);
        } else if (word == "--") {
            typed.onlyArguments = true;
            typed.pending = nullptr;
        } else if (word.size() > 1 && word.front() == '-' && (typed.pending == nullptr || typed.pendingMayEnd)) {
            TakeOption(typed, word);
        } else if (typed.pending != nullptr) {
            if (typed.pending->name == "--group")
                typed.groups.push_back(word);
            typed.pendingMayEnd = true;
            if (!typed.pending->takesMany)
                typed.pending = nullptr;
        } else {
            const std::vector<const TVerb*> inner = typed.verb->Verbs();
            const auto found =
                std::find_if(inner.begin(), inner.end(), [&](const TVerb* verb) { return verb->get_name() == word; });
            if (found != inner.end())
                TakeVerb(typed, **found);
            else
                typed.arguments.push_back(word);
        }
    }
    return typed;
}

// A path as a shell would give it: with its home folder.
std::string Expanded(const std::string& path)
{
    const char* const home = std::getenv("HOME");
    return path.compare(0, 2, "~/") == 0 && home != nullptr ? home + path.substr(1) : path;
}

// Of the calibration file or store that the words name; none where that cannot be read.
std::vector<std::string> Keys(const TTypedWords& typed)
{
    std::vector<std::string> keys;
    const auto take = [&keys](const std::string& path) {
        for (const TStoredCorrection& correction : WalkCalibrationFile(path).corrections)
            keys.push_back(correction.key);
    };
    if (typed.arguments.empty())
        return keys;
    const std::string path = Expanded(typed.arguments.front());
    bool isStore = false;
    for (const TOptionText& text : typed.texts)
        isStore = isStore || (text.isArgument && typed.verb->PathOptionOf(text.option) != nullptr &&
                              typed.verb->PathOptionOf(text.option)->kind == TPathKind::Store);
    try {
        std::error_code ignored;
        if (!isStore && std::filesystem::is_regular_file(path, ignored)) {
            take(path);
            return keys;
        }
        const TStorePlace place = FindStore(path, typed.groups);
        for (const TClaimedFile& file : ClaimedFiles(place)) {
            if (file.own)
                take(place.PathOf(file.name).string());
        }
    } catch (const std::exception&) {
        // Then there is nothing to be offered.
    }
    return keys;
}

const char* Endings(TPathKind kind)
{
    switch (kind) {
    case TPathKind::Image:
        return "files tif tiff fit fits fts fz png pgm ser raw";
    case TPathKind::Picture:
        return "files png";
    case TPathKind::Page:
        return "files html";
    case TPathKind::Table:
        return "files csv";
    case TPathKind::Calibration:
        return "files qxb";
    case TPathKind::PixelList:
        return "files txt";
    case TPathKind::Library:
        return "files so dll";
    case TPathKind::Folder:
        return "folders";
    case TPathKind::Store: // whose files have no ending
    case TPathKind::CalibrationOrStore:
        return "files";
    }
    return "files";
}

// A line for each word that begins with what is typed already.
class TWords {
public:
    explicit TWords(const std::string& typedPart) : begun(typedPart) {}

    void Add(const std::string& word, const std::string& meaning = {})
    {
        const bool isPrintable = std::none_of(
            word.begin(), word.end(), [](char character) { return static_cast<unsigned char>(character) < ' '; });
        if (isPrintable && word.compare(0, begun.size(), begun) == 0 && there.insert(word).second)
            text += word + (meaning.empty() ? "" : "\t" + meaning) + "\n";
    }
    const std::string& Text() const { return text; }

private:
    std::string begun, text = "words\n";
    std::set<std::string> there;
};

std::string Values(const TTypedWords& typed, const TOptionText& wanted, const std::string& before,
                   const std::string& begun)
{
    if (const TVerb::TPathOption* const path = typed.verb->PathOptionOf(wanted.option))
        return Endings(path->kind) + std::string("\n");
    const bool isKey = typed.verb->IsKey(wanted.option);
    if (!isKey && wanted.choices.empty())
        return "value\t" + wanted.value + ": " + wanted.FullHelp() + "\n";
    TWords words(before + begun);
    for (const std::string& choice : wanted.choices)
        words.Add(before + choice);
    if (isKey) {
        for (const std::string& key : Keys(typed))
            words.Add(before + key);
    }
    return words.Text();
}

// Options that may still be given.
void AddOptions(const TTypedWords& typed, TWords& words)
{
    const auto isGiven = [&](const std::string& name) {
        return std::find(typed.names.begin(), typed.names.end(), name) != typed.names.end();
    };
    for (const TOptionText& text : typed.texts) {
        bool isInPlace = !text.isArgument && (!isGiven(text.name) || text.takesMany || text.name == "--group");
        if (text.option != nullptr) {
            for (const CLI::Option* other : text.option->get_excludes())
                isInPlace = isInPlace && !isGiven(other->get_name());
        }
        if (isInPlace)
            words.Add(text.name, text.help);
    }
}

// The argument that comes next; null when there is none.
const TOptionText* NextArgument(const TTypedWords& typed)
{
    std::size_t number = 0;
    for (const TOptionText& text : typed.texts) {
        if (text.isArgument && (text.takesMany || number++ == typed.arguments.size()))
            return &text;
    }
    return nullptr;
}

} // namespace

std::string CompletionText(const TVerb& root, const std::vector<std::string>& given)
{
    const std::vector<std::string> all = given.empty() ? std::vector<std::string>{""} : given;
    const std::string& last = all.back();
    const TTypedWords typed = Read(root, all);
    const bool isOption = !typed.onlyArguments && !last.empty() && last.front() == '-' &&
                          (typed.pending == nullptr || typed.pendingMayEnd);
    TWords words(last);
    if (isOption) {
        const std::size_t equals = last.find('=');
        const TOptionText* const option = equals == std::string::npos ? nullptr : Named(typed, last.substr(0, equals));
        if (option != nullptr && option->option != nullptr)
            return Values(typed, *option, last.substr(0, equals + 1), last.substr(equals + 1));
        AddOptions(typed, words);
        return words.Text();
    }
    if (typed.pending != nullptr)
        return Values(typed, *typed.pending, "", last);
    if (!typed.verb->Verbs().empty()) {
        for (const TVerb* inner : typed.verb->Verbs())
            words.Add(inner->get_name(), inner->get_description());
        if (typed.verb == &root && all.size() == 1)
            words.Add("help", "Explain a verb");
        return words.Text();
    }
    if (const TOptionText* const argument = NextArgument(typed))
        return Values(typed, *argument, "", last);
    AddOptions(typed, words);
    return words.Text();
}

std::string CompletionScript(const std::string& shell)
{
    return shell == "bash" ? kBashCompletion : shell == "zsh" ? kZshCompletion : kFishCompletion;
}

} // namespace workbench
