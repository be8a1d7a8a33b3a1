#include "calibration/NewGroups.h"

#include "base/Names.h"
#include "base/Question.h"
#include "base/TToolError.h"
#include "base/Wording.h"

#include <map>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

namespace workbench {

namespace fs = std::filesystem;

namespace {

// A group's file name in its parts.
struct TGroupName {
    std::string file, base;
    std::vector<std::string> names, values;
};

// Names and values hold no "_", bases may.
std::optional<TGroupName> Split(const std::string& file, std::size_t pairs)
{
    TGroupName group;
    group.file = group.base = file;
    group.names.resize(pairs);
    group.values.resize(pairs);
    for (std::size_t pair = pairs; pair-- > 0;) {
        for (std::string* const part : {&group.values[pair], &group.names[pair]}) {
            const std::size_t underscore = group.base.rfind('_');
            if (underscore == std::string::npos)
                return std::nullopt;
            *part = group.base.substr(underscore + 1);
            group.base.erase(underscore);
        }
    }
    return group;
}

std::vector<std::string> AllWithoutSlips(std::vector<std::string> texts)
{
    for (std::string& text : texts)
        text = WithoutSlips(text);
    return texts;
}

// What the store's folder has of groups whose names are those of the store, or would be but for slips.
class TKnownGroups {
public:
    explicit TKnownGroups(const TStorePlace& store) : place(store), values(store.names.size())
    {
        std::error_code error;
        for (fs::directory_iterator entry(place.Folder(), error); !error && entry != fs::directory_iterator();
             entry.increment(error)) {
            const std::optional<TGroupName> group = Split(entry->path().filename().string(), place.names.size());
            if (group && WithoutSlips(group->base) == WithoutSlips(place.base))
                Add(*group);
        }
    }

    void Add(const TGroupName& group)
    {
        files.insert(group.file);
        const std::vector<std::string> names = Exact();
        if (group.base != place.base || group.names != names) {
            if (AllWithoutSlips(group.names) == AllWithoutSlips(names))
                others.push_back(group);
            return;
        }
        hasOwn = true;
        for (std::size_t pair = 0; pair < values.size(); ++pair)
            values[pair][WithoutSlips(group.values[pair])].emplace(group.values[pair], group.file);
    }

    bool Has(const std::string& file) const { return files.count(file) != 0; }

    // How the group, which is new, differs from another one by slips only, and what was probably meant: "'Fast' differs
    // from ..."; nothing when it does not.
    std::optional<std::pair<std::string, std::string>> Slip(const TGroupName& group) const
    {
        const auto text = [](const std::string& given, const std::string& known, const std::string& file) {
            return std::pair("'" + given + "' differs from the '" + known + "' of " + file +
                                 " only by letter case or blanks",
                             known);
        };
        if (!hasOwn && !others.empty()) {
            const TGroupName& other = others.front();
            for (std::size_t pair = 0; pair < group.names.size(); ++pair) {
                if (group.names[pair] != other.names[pair])
                    return text(group.names[pair], other.names[pair], PathOf(other.file));
            }
            return text(group.base, other.base, PathOf(other.file));
        }
        for (std::size_t pair = 0; pair < values.size(); ++pair) {
            const auto alike = values[pair].find(WithoutSlips(group.values[pair]));
            if (alike == values[pair].end() || alike->second.count(group.values[pair]) != 0)
                continue;
            const auto& [known, file] = *alike->second.begin();
            return text(group.values[pair], known, PathOf(file));
        }
        return std::nullopt;
    }

private:
    std::vector<std::string> Exact() const
    {
        std::vector<std::string> names;
        for (const std::string& name : place.names)
            names.push_back(TextOfLibrary(name));
        return names;
    }
    std::string PathOf(const std::string& file) const { return place.PathOf(file).string(); }

    const TStorePlace& place;
    std::set<std::string> files;
    bool hasOwn = false;
    std::vector<TGroupName> others; // of a store whose base or grouping names differ from this one's by slips
    // For each grouping name the values of the store's own groups, without slips, and how and where they are spelled.
    std::vector<std::map<std::string, std::map<std::string, std::string>>> values;
};

void Ask(const std::string& path, const std::string& why, const std::string& remedy)
{
    if (!SomebodyCanBeAsked())
        throw TToolError(path, "would be a new group: " + why + "; " + remedy + "--new-group if it is meant");
    if (!AnswersYes(Printable(path + " would be a new group: " + why) + ". Make it?"))
        throw TToolError(path, "the new group was not wanted; nothing was changed");
}

} // namespace

const char* const kNewGroupHelp =
    "Make a new group also where it differs from another one only by letter case or blanks, or cannot be the name of a "
    "file on Windows. Without this a terminal is asked, and else the group is refused";

void AgreeOnNewGroups(const TStorePlace& place, const std::vector<std::string>& keys, bool insists)
{
    TKnownGroups known(place);
    for (const std::string& key : keys) {
        const std::string file = GroupFileOf(place, key);
        if (known.Has(file))
            continue;
        const fs::path path = place.PathOf(file);
        const std::optional<TGroupName> group = Split(file, place.names.size());
        const auto slip = group ? known.Slip(*group) : std::nullopt;
        std::error_code error;
        if (fs::exists(path, error))
            throw TToolError(path.string(), "would be a new group, but is one file with another one of that name here, "
                                            "where letter case makes no difference" +
                                                (slip ? "; write '" + slip->second + "'" : std::string()));
        if (HasControlCharacter(file))
            throw TToolError(path.string(), "would be a new group with a control character (a tab, a line feed) in "
                                            "the name of its file");
        if (const std::string refusal = NameRefusal(path); !refusal.empty())
            throw TToolError(path.string(), "would be a new group, but the name of its file " + refusal);
        if (insists)
            continue;
        if (slip)
            Ask(path.string(), slip->first, "write '" + slip->second + "', or ");
        if (const std::string refusal = NameRefusalElsewhere(path); !refusal.empty())
            Ask(path.string(), "the name of its file " + refusal, {});
        if (group)
            known.Add(*group);
    }
}

} // namespace workbench
