#include "calibration/TStorePlace.h"

#include "base/Names.h"
#include "base/TReplacedFile.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "calibration/TCalibrationWalk.h"

#include "file/CalibrationFormat.h"

#include <algorithm>
#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

namespace {

// What follows `text`'s first "_", or nothing and false.
bool DropThroughUnderscore(std::string& text)
{
    const std::size_t underscore = text.find('_');
    if (underscore == std::string::npos)
        return false;
    text.erase(0, underscore + 1);
    return true;
}

bool DropPrefix(std::string& text, const std::string& prefix)
{
    if (text.compare(0, prefix.size(), prefix) != 0)
        return false;
    text.erase(0, prefix.size());
    return true;
}

void CheckName(const std::string& name)
{
    const std::string about = "--group '" + name + "': ";
    if (name.empty())
        throw TToolError("--group: a grouping name is empty");
    if (name.size() > CalibrationFormat::kGroupingNameLength)
        throw TToolError(about + "files keep only " + std::to_string(CalibrationFormat::kGroupingNameLength) +
                         " bytes of a grouping name");
    if (name.find_first_of("_,/\\") != std::string::npos)
        throw TToolError(about + "a grouping name with _ , / or \\ could not be read back from a file's name");
    if (HasControlCharacter(name))
        throw TToolError(about + "it has a control character (a tab, a line feed); grouping names are printable text");
}

void CheckNames(const std::vector<std::string>& names)
{
    for (const std::string& name : names) {
        CheckName(name);
        if (std::count(names.begin(), names.end(), name) > 1)
            throw TToolError("--group '" + name + "': is given twice; one --group for each grouping name");
    }
}

// The key's fields; runs of commas count as one.
std::vector<std::string> Fields(const std::string& key)
{
    std::vector<std::string> fields;
    std::size_t from = 0;
    while ((from = key.find_first_not_of(',', from)) != std::string::npos) {
        const std::size_t to = std::min(key.find(',', from), key.size());
        fields.push_back(key.substr(from, to - from));
        from = to;
    }
    return fields;
}

// A field of the key that was probably meant to be the grouping name: "; did you mean ..."; empty when there is none.
std::string MeantName(const std::string& key, const std::string& name)
{
    const std::vector<std::string> fields = Fields(key);
    for (std::size_t index = 0; index < fields.size(); index += 2) {
        if (fields[index] != name && WithoutSlips(fields[index]) == WithoutSlips(name))
            return "; '" + fields[index] + "' is another name: letter case and blanks count";
    }
    return {};
}

} // namespace

bool IsClaimed(const TStorePlace& place, const std::string& file)
{
    std::string rest = file;
    if (file == place.base)
        return true;
    if (!DropPrefix(rest, place.base))
        return false;
    for (const std::string& name : place.names) {
        if (!DropThroughUnderscore(rest) || !DropPrefix(rest, TextOfLibrary(name) + "_"))
            return false;
    }
    return rest.find('_') == std::string::npos;
}

bool IsExactName(const TStorePlace& place, const std::string& file)
{
    std::string rest = file;
    if (!DropPrefix(rest, place.base))
        return false;
    for (const std::string& name : place.names) {
        if (!DropPrefix(rest, "_" + TextOfLibrary(name) + "_") || rest.empty() || rest.front() == '_')
            return false;
        rest.erase(0, std::min(rest.find('_'), rest.size()));
    }
    return rest.empty();
}

TStorePlace FindStore(const std::string& path, const std::vector<std::string>& groups)
{
    CheckNames(groups);
    TStorePlace place;
    place.names = groups;
    place.folder = fs::path(path).parent_path();
    place.base = fs::path(path).filename().string();
    std::error_code error;
    if (place.base.empty() || place.base == "." || place.base == ".." || place.base.find('\\') != std::string::npos)
        throw TToolError("'" + path + "'", "is no base name of a store");
    RefuseImpossible(path, path);
    if (!fs::is_directory(place.Folder(), error))
        throw TToolError(path, "its folder does not exist; make it first");
    if (fs::is_directory(path, error))
        throw TToolError(path, "is a folder; a store is named by the base name of its files");

    if (fs::exists(path, error)) {
        const TCalibrationWalk walk = WalkCalibrationFile(path);
        if (walk.structureVersion == CalibrationFormat::kUngroupedVersion)
            throw TToolError(path, "is a single calibration file, not a store");
        if (walk.groupingNames.empty())
            throw TToolError(path, "is no group file of a store");
        if (!groups.empty() && groups != walk.groupingNames)
            throw TToolError(path, "records other grouping names than those given with --group");
        place.names = walk.groupingNames;
        const std::size_t pairs = place.base.find("_" + TextOfLibrary(place.names.front()) + "_");
        if (pairs == std::string::npos || pairs == 0)
            throw TToolError(path, "records the grouping name '" + place.names.front() +
                                       "', which its own name does not carry");
        place.base.erase(pairs);
    }
    if (place.names.empty())
        throw TToolError(path, "there is no such group file; a base name needs its grouping names (--group)");
    return place;
}

std::string GroupValueOf(const std::string& key, const std::string& name)
{
    const std::vector<std::string> fields = Fields(key);
    for (std::size_t index = 0; index + 1 < fields.size(); index += 2) {
        if (fields[index] == name)
            return fields[index + 1];
    }
    return {};
}

std::string GroupFileOf(const TStorePlace& place, const std::string& key)
{
    std::string file = place.base;
    for (const std::string& name : place.names) {
        const std::string value = GroupValueOf(key, name);
        const std::string about = place.Text() + ": key '" + key + "': ";
        if (value.empty())
            throw TToolError(about + "there is no value for the grouping name '" + name + "' (keys read " + name +
                             ",value,...)" + MeantName(key, name));
        if (value.find_first_of("_/\\") != std::string::npos)
            throw TToolError(about + "the value '" + value + "' of '" + name +
                             "' holds _ / or \\ and could not be read back from a file's name");
        file += "_" + TextOfLibrary(name) + "_" + TextOfLibrary(value);
    }
    return file;
}

std::vector<TClaimedFile> ClaimedFiles(const TStorePlace& place)
{
    std::vector<TClaimedFile> files;
    std::error_code error;
    fs::directory_iterator entries(place.Folder(), error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        const fs::directory_entry& entry = *entries;
        const std::string name = entry.path().filename().string();
        std::error_code nowhere; // a link in a circle
        if (!IsClaimed(place, name) || entry.is_directory(nowhere))
            continue;
        TClaimedFile file{name, false};
        if (IsExactName(place, name) && entry.is_regular_file(nowhere))
            file.own = WalkCalibrationFile(entry.path().string()).groupingNames == place.names;
        files.push_back(file);
    }
    if (error)
        throw TToolError(place.Folder().string(), "cannot be listed: " + error.message());
    std::sort(files.begin(), files.end(), [](const auto& one, const auto& other) { return one.name < other.name; });
    return files;
}

std::vector<std::string> OwnFiles(const TStorePlace& place)
{
    std::vector<std::string> names;
    for (const TClaimedFile& file : ClaimedFiles(place)) {
        if (file.own)
            names.push_back(file.name);
    }
    return names;
}

} // namespace workbench
