// The literal store's groups: what keys and file names mean, which files belong to a store, switching, splitting.
#include "model/LiteralStore.h"

#include <algorithm>
#include <utility>

namespace Literal {

namespace {

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

} // namespace

// Runs of delimiters count as one, empty fields vanish.
TTexts Tokens(const std::string& text, char delimiter)
{
    TTexts tokens;
    std::string token;
    for (const char character : text + delimiter) {
        if (character != delimiter) {
            token += character;
        } else if (!token.empty()) {
            tokens.push_back(token);
            token.clear();
        }
    }
    return tokens;
}

std::string FindValueForName(const std::string& list, const std::string& name, char delimiter)
{
    const TTexts tokens = Tokens(list, delimiter);
    for (std::size_t i = 0; i < tokens.size(); i += 2) {
        if (tokens[i] == name) {
            return i + 1 < tokens.size() ? tokens[i + 1] : std::string();
        }
    }
    return std::string();
}

bool IsGroupFileOf(const std::string& candidate, const TTexts& names, const std::string& base)
{
    if (candidate == base) {
        return true;
    }
    if (!StartsWith(candidate, base)) {
        return false;
    }
    std::string rest = candidate.substr(base.size());
    for (const std::string& name : names) {
        const std::size_t underscore = rest.find('_');
        if (underscore == std::string::npos) {
            return false;
        }
        rest = rest.substr(underscore + 1);
        if (!StartsWith(rest, name + "_")) {
            return false;
        }
        rest = rest.substr(name.size() + 1);
    }
    return rest.find('_') == std::string::npos;
}

unsigned int TStore::ExtractGroupValues(const std::string& key, TTexts& found) const
{
    found.clear();
    for (const std::string& name : groupingNames) {
        const std::string value = FindValueForName(key, name, ',');
        if (value.empty()) {
            return 513;
        }
        found.push_back(value);
    }
    return 0;
}

bool TStore::IsCurrentGroup(const TTexts& others) const
{
    return base.empty() || others == values;
}

unsigned int TStore::BuildGroupFileName(const std::string& start, const TTexts& groupValues, std::string& path) const
{
    path.clear();
    if (groupValues.size() != groupingNames.size()) {
        return 513;
    }
    path = start;
    for (std::size_t i = 0; i < groupValues.size(); ++i) {
        path += "_" + groupingNames[i] + "_" + groupValues[i];
    }
    return 0;
}

unsigned int TStore::ParseGroupValuesFromFileName(const std::string& path, const std::string& start,
                                                  TTexts& found) const
{
    found.clear();
    std::string text = path;
    const std::size_t position = text.find(start);
    if (!start.empty() && position != std::string::npos) {
        text = text.substr(position + start.size());
    }
    const std::size_t backslash = text.find_last_of('\\');
    if (backslash != std::string::npos) {
        text = text.substr(backslash + 1);
    }
    for (const std::string& name : groupingNames) {
        const std::string value = FindValueForName(text, name, '_');
        if (value.empty()) {
            return 513;
        }
        found.push_back(value);
    }
    return 0;
}

void TStore::ApplyPendingSettings(TProcessor& target) const
{
    if (exposure != -1.0f && intensity != -1.0f) {
        target.SetExposureAndIntensity(exposure, intensity);
    }
    if (left != -1 && top != -1 && width != -1 && height != -1) {
        target.SetRegion(left, top, width, height);
    }
    if (level != -1) {
        target.SetCorrectionLevel(level);
    }
}

unsigned int TStore::SelectGroup(const std::string& key)
{
    TTexts newValues;
    unsigned int result = ExtractGroupValues(key, newValues);
    if (result != 0) {
        return result;
    }
    if (!IsCurrentGroup(newValues)) {
        std::string path;
        const bool exists = BuildGroupFileName(base, newValues, path) == 0 && disk.Read(path).has_value();
        if (exists || !headerOnly) {
            auto fresh = std::make_unique<TProcessor>();
            if (exists) {
                TTexts ignoredNames;
                std::uint32_t ignoredVersion = 0;
                result = fresh->LoadGroupedFile(disk.Open(path), ignoredNames, ignoredVersion, headerOnly);
                if (result != 0) {
                    return result;
                }
            }
            ApplyPendingSettings(*fresh);
            if (processor != nullptr && !headerOnly && processor->modified) {
                std::string oldPath;
                result = BuildGroupFileName(base, values, oldPath);
                if (result != 0) {
                    return result;
                }
                processor->SaveGroupedFile(disk, oldPath, groupingNames);
            }
            processor = std::move(fresh);
            values = newValues;
        }
    }
    if (processor == nullptr) {
        processor = std::make_unique<TProcessor>();
        ApplyPendingSettings(*processor);
    }
    return 0;
}

const TEntry* TStore::FindEntryForKey(const std::string& key)
{
    if (SelectGroup(key) != 0) {
        return nullptr;
    }
    for (const auto& entry : processor->entries) {
        if (entry->key == key) {
            return entry.get();
        }
    }
    return nullptr;
}

unsigned int TStore::DeriveBaseFileName(const std::string& path, TTexts& names, std::string& found,
                                        std::uint32_t& version)
{
    if (!disk.Exists(path)) {
        found = path;
        version = 0;
        return 771;
    }
    TProcessor scratch;
    const unsigned int result = scratch.LoadGroupedFile(disk.Open(path), names, version, true);
    if (result != 0 && result != 772) {
        return result;
    }
    if (names.empty()) {
        found = path;
        return result;
    }
    const std::size_t position = path.find("_" + names[0] + "_");
    if (position == std::string::npos) {
        return Fail(768, "Incorrect file name.");
    }
    found = path.substr(0, position);
    return result;
}

TTexts TStore::ListGroupFiles(const TTexts& names, const std::string& start) const
{
    const std::size_t backslash = start.find_last_of('\\');
    const std::string folder = backslash == std::string::npos ? std::string() : start.substr(0, backslash + 1);
    TTexts paths;
    for (const std::string& name : disk.List(folder)) {
        if (IsGroupFileOf(folder + name, names, start)) {
            paths.push_back(folder + name);
        }
    }
    return paths;
}

unsigned int TStore::RemoveStoreFiles(const std::string& path)
{
    TTexts names;
    std::string found;
    std::uint32_t version = 0;
    const unsigned int result = DeriveBaseFileName(path, names, found, version);
    if (result == 771) {
        return 0;
    }
    if (result == 0 || (result == 772 && version == 1)) {
        for (const std::string& file : ListGroupFiles(names, found)) {
            disk.Remove(file);
        }
    }
    return result;
}

// A full copy of everything for each group, cut down to the group's keys.
unsigned int TStore::SaveSplit(const std::string& target, const std::string& fileName)
{
    std::vector<std::pair<TTexts, TTexts>> buckets; // values and keys, as they first appear
    for (const std::string& key : keys) {
        TTexts keyValues;
        const unsigned int result = ExtractGroupValues(key, keyValues);
        if (result != 0) {
            return result;
        }
        const auto bucket = std::find_if(buckets.begin(), buckets.end(),
                                         [&keyValues](const auto& each) { return each.first == keyValues; });
        if (bucket != buckets.end()) {
            bucket->second.push_back(key);
        } else {
            buckets.push_back({keyValues, {key}});
        }
    }
    unsigned int result = 0;
    TProcessor scratch;
    for (std::size_t i = 0; i < buckets.size() && result == 0; ++i) {
        std::string path;
        result = BuildGroupFileName(target, buckets[i].first, path);
        if (result != 0) {
            break;
        }
        scratch.ClearCorrections();
        scratch.ImportCorrections({processor.get(), nullptr}, true);
        const TTexts& kept = buckets[i].second;
        std::size_t index = 0;
        while (index < scratch.entries.size() && result == 0) {
            const std::string key = scratch.entries[index]->key;
            if (std::find(kept.begin(), kept.end(), key) != kept.end()) {
                ++index;
            } else {
                result = scratch.DeleteCorrection(key);
            }
        }
        if (result == 0) {
            result = scratch.SaveGroupedFile(disk, path, groupingNames);
        }
    }
    LoadFile(fileName); // its result is ignored
    return result;
}

unsigned int TStore::SaveCopy(const std::string& target)
{
    unsigned int result = 0;
    TProcessor scratch;
    for (const std::string& file : ListGroupFiles(groupingNames, base)) {
        TTexts ignoredNames;
        std::uint32_t ignoredVersion = 0;
        result = scratch.LoadGroupedFile(disk.Open(file), ignoredNames, ignoredVersion, false);
        TTexts fileValues;
        std::string path;
        if (result == 0) {
            result = ParseGroupValuesFromFileName(file, base, fileValues);
        }
        if (result == 0) {
            result = BuildGroupFileName(target, fileValues, path);
        }
        if (result == 0) {
            result = scratch.SaveGroupedFile(disk, path, groupingNames);
        }
        if (result != 0) {
            break;
        }
    }
    return result;
}

} // namespace Literal
