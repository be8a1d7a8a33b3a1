#include "commandline/TVerb.h"

#include "base/Endings.h"
#include "base/TToolError.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace workbench {

namespace {

// How the help calls the values of an option.
const char* PathType(TPathKind kind)
{
    switch (kind) {
    case TPathKind::Store:
        return "BASE";
    case TPathKind::CalibrationOrStore:
        return "FILE|BASE";
    case TPathKind::Folder:
        return "FOLDER";
    default:
        return "FILE";
    }
}

} // namespace

TVerb::TVerb(const std::string& help, const std::string& name, TVerb* outer)
    : CLI::App(help, name, outer), parent(outer)
{}

TVerb& TVerb::AddVerb(const std::string& name, const std::string& help)
{
    const auto inner = std::make_shared<TVerb>(help, name, this);
    add_subcommand(inner);
    verbs.push_back(inner.get());
    if (!words.empty() && words.front() == name)
        inner->SetWords({words.begin() + 1, words.end()});
    return *inner;
}

void TVerb::AddVerbs(const std::vector<TAdder>& adders)
{
    // Options of this verb may stand before the next one's name.
    while (words.size() >= 2) {
        const CLI::Option* const option = get_option_no_throw(words.front());
        if (option == nullptr || option->get_expected_max() == 0)
            break;
        words.erase(words.begin(), words.begin() + 2);
    }
    for (const TAdder& adder : adders) {
        if (!words.empty() && adder.name == words.front()) {
            adder.add();
            return;
        }
    }
    for (const TAdder& adder : adders)
        adder.add();
}

CLI::Option* TVerb::Uses(TPathUse use, TPathKind kind, CLI::Option* option, TFill fill)
{
    option->type_name(PathType(kind));
    if (!fill) {
        fill = [option, use, kind](const std::string& name, TPathPlan& plan) {
            for (const std::string& path : option->results()) {
                // A library's plain name is no path: it is looked for where the system's loader looks.
                if (kind != TPathKind::Library || std::filesystem::path(path).has_parent_path())
                    plan.AddFile(name, use, path);
                if (kind == TPathKind::Calibration)
                    plan.AddProvenance(name, use, TCalibrationPlace(path));
            }
        };
    }
    paths.push_back({option, use, kind, std::move(fill)});
    return option;
}

CLI::Option* TVerb::Reads(TPathKind kind, CLI::Option* option, TFill fill)
{
    return Uses(TPathUse::Reads, kind, option, std::move(fill));
}

CLI::Option* TVerb::Changes(TPathKind kind, CLI::Option* option, TFill fill)
{
    return Uses(TPathUse::Changes, kind, option, std::move(fill));
}

CLI::Option* TVerb::Creates(TPathKind kind, CLI::Option* option, bool& overwrite, TFill fill)
{
    if (overwriteFlag == nullptr) {
        overwriteFlag = &overwrite;
        add_flag("--overwrite", overwrite, "Replace what exists already under the names of the output");
    }
    return Uses(TPathUse::Creates, kind, option, std::move(fill));
}

CLI::Option* TVerb::NamesKey(CLI::Option* option)
{
    keys.push_back(option);
    return option;
}

void TVerb::AddExample(const std::string& what, const std::string& command)
{
    examples.push_back({what, command});
}

void TVerb::AddNote(const std::string& text)
{
    if (std::find(notes.begin(), notes.end(), text) == notes.end())
        notes.push_back(text);
}

void TVerb::RefuseTakenOptions() const
{
    for (const CLI::Option* taker : Options()) {
        for (const std::string& value : taker->results()) {
            if (value.compare(0, 2, "--") == 0 && get_option_no_throw(value) != nullptr)
                throw TToolError(taker->get_name() + " needs a value behind it; '" + value + "' stands there");
        }
    }
}

void TVerb::RefuseSignsOfEquality() const
{
    for (const CLI::Option* option : Options()) {
        for (const std::string& value : option->results()) {
            if (!option->get_snames().empty() && value.compare(0, 1, "=") == 0)
                throw TToolError("'" + value + "' stands behind -" + option->get_snames().front() + "; write '-" +
                                 option->get_snames().front() + " " + value.substr(1) + "', or './" + value +
                                 "' for a file of that name");
        }
    }
}

void TVerb::RefuseOtherEndings() const
{
    const CLI::Option* const format = get_option_no_throw("--format");
    for (const TPathOption& path : paths) {
        std::error_code error;
        if (path.use != TPathUse::Creates || path.option->count() == 0 ||
            std::filesystem::is_directory(path.option->results().front(), error))
            continue;
        const std::string name = path.option->results().front();
        if (path.kind == TPathKind::Image && (format == nullptr || format->count() == 0))
            RefuseOtherEndingOfImage(name);
        if (path.kind == TPathKind::Picture)
            RefuseOtherEnding(name, {".png"}, "a PNG");
        if (path.kind == TPathKind::Page)
            RefuseOtherEnding(name, {".html", ".htm"}, "an HTML page");
        if (path.kind == TPathKind::PixelList)
            RefuseOtherEnding(name, {".txt", ".csv"}, "a list as text");
    }
}

void TVerb::Run(std::function<void()> action)
{
    callback([this, action = std::move(action)] {
        RefuseTakenOptions();
        RefuseSignsOfEquality();
        TPathPlan plan;
        for (const TVerb* verb = this; verb != nullptr; verb = verb->parent) {
            for (const TPathOption& path : verb->paths) {
                if (path.option->count() > 0)
                    path.fill(path.option->get_name(), plan);
            }
        }
        plan.Check(overwriteFlag != nullptr && *overwriteFlag);
        RefuseOtherEndings();
        plan.Lock();
        action();
    });
}

std::vector<const CLI::Option*> TVerb::Options() const
{
    return get_options(
        [this](const CLI::Option* option) { return option != get_help_ptr() && option != get_version_ptr(); });
}

const TVerb::TPathOption* TVerb::PathOptionOf(const CLI::Option* option) const
{
    for (const TPathOption& path : paths) {
        if (path.option == option)
            return &path;
    }
    return nullptr;
}

bool TVerb::IsKey(const CLI::Option* option) const
{
    return std::find(keys.begin(), keys.end(), option) != keys.end();
}

TVerb* TVerb::Find(const std::vector<std::string>& names)
{
    TVerb* verb = this;
    for (const std::string& name : names) {
        const auto found = std::find_if(verb->verbs.begin(), verb->verbs.end(),
                                        [&](const TVerb* inner) { return inner->get_name() == name; });
        if (found == verb->verbs.end())
            return nullptr;
        verb = *found;
    }
    return verb;
}

} // namespace workbench
