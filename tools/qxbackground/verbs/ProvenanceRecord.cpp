#include "verbs/ProvenanceRecord.h"

#include "base/TToolError.h"
#include "calibration/Keys.h"
#include "calibration/TCalibrationWalk.h"
#include "verbs/DarkFrames.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace workbench {

namespace {

// What a calibration file holds, by key.
struct TGroup {
    explicit TGroup(const std::string& file) : walk(WalkCalibrationFile(file))
    {
        for (const TStoredCorrection& correction : walk.corrections)
            stored.emplace(correction.key, &correction);
    }
    TGroup(const TGroup&) = delete;
    TGroup& operator=(const TGroup&) = delete;

    TCalibrationWalk walk;
    std::unordered_map<std::string, const TStoredCorrection*> stored;
};

} // namespace

void TProvenanceOutcome::Print() const
{
    if (isNews)
        std::cout << "Recorded in " << file << '\n';
    PrintWarnings(warnings);
}

void TProvenanceOutcome::AddTo(nlohmann::json& json) const
{
    json["provenance"] = nullptr;
    if (!file.empty())
        json["provenance"] = file;
    for (const std::string& warning : warnings)
        json["warnings"].push_back(warning);
}

TProvenanceOutcome ChangeProvenance(const TCalibrationPlace& place, const std::function<void(TProvenance&)>& change)
{
    TProvenanceOutcome outcome;
    const auto warn = [&outcome](const std::string& why) {
        outcome.warnings.push_back(why + "; what was done here is not recorded");
    };
    try {
        TProvenance provenance(place.ProvenanceFile());
        change(provenance);
        provenance.Write();
        if (!provenance.Entries().empty())
            outcome.file = place.ProvenanceFile();
    } catch (const TToolError& error) {
        warn(error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        warn(place.ProvenanceFile() + ": " + error.code().message());
    }
    return outcome;
}

void AddProvenanceOption(TVerb& verb, bool& left)
{
    verb.add_flag("--no-provenance", left,
                  "Leave the file beside it alone, FILE.json (of a store BASE.json), which says what corrections were "
                  "built from and how");
}

TProvenanceOutcome DropProvenance(const TCalibrationPlace& place, const std::string& group, bool left)
{
    if (left)
        return {};
    return ChangeProvenance(place, [&](TProvenance& provenance) {
        if (!provenance.Entries().empty())
            provenance.Keep(WalkCalibrationFile(place.FileOf(group)).corrections, group);
    });
}

TProvenanceOutcome RenameProvenance(const TCalibrationPlace& place, const std::string& key, const std::string& newKey,
                                    bool left)
{
    if (left)
        return {};
    return ChangeProvenance(place, [&](TProvenance& provenance) {
        const TProvenanceEntry* const found = provenance.Find(key, place.GroupOf(key));
        if (found == nullptr)
            return;
        TProvenanceEntry entry = *found;
        provenance.Remove(key, entry.group);
        entry.key = newKey;
        entry.group = place.GroupOf(newKey);
        provenance.Put(entry);
    });
}

std::vector<std::string> CopiedKeys(const QX_KRLSDK::TBackgroundCorrection& source,
                                    const QX_KRLSDK::TBackgroundCorrection& destination, bool overwrite)
{
    std::vector<std::string> keys = source.Keys();
    if (overwrite)
        return keys;
    std::unordered_set<std::string> there;
    for (const std::string& key : destination.Keys())
        there.insert(FoldedKey(key));
    keys.erase(std::remove_if(keys.begin(), keys.end(),
                              [&there](const std::string& key) { return there.count(FoldedKey(key)) > 0; }),
               keys.end());
    return keys;
}

TProvenanceOutcome CopyProvenance(const TCalibrationPlace& from, const TCalibrationPlace& to,
                                  const std::vector<std::string>& keys, TCopyInto into, bool left)
{
    if (left)
        return {};
    std::string unknown;
    TProvenanceOutcome outcome = ChangeProvenance(to, [&](TProvenance& provenance) {
        std::optional<TProvenance> source;
        try {
            source.emplace(from.ProvenanceFile());
        } catch (const TToolError& error) {
            unknown = std::string(error.what()) + "; it is not known what the corrections of " + from.Text() +
                      " were built from";
        }
        if (into == TCopyInto::InPlaceOfAll)
            provenance.Clear();
        std::map<std::string, TGroup> groups;
        for (const std::string& key : keys) {
            const std::string name = to.GroupOf(key);
            const TGroup& group = groups.try_emplace(name, to.FileOf(name)).first->second;
            TProvenanceEntry entry;
            const TProvenanceEntry* const found = source ? source->Find(key, from.GroupOf(key)) : nullptr;
            const auto stored = group.stored.find(key);
            if (found != nullptr)
                entry = provenance.Moved(*found, *source);
            else if (stored != group.stored.end())
                entry.Describe(to.FileOf(name), *stored->second);
            else
                continue;
            entry.key = key;
            entry.group = name;
            entry.importedFrom = provenance.NameOf(from.Text());
            provenance.Put(entry);
        }
        for (const auto& [name, group] : groups)
            provenance.Keep(group.walk.corrections, name);
    });
    outcome.isNews = !outcome.file.empty();
    if (!unknown.empty())
        outcome.warnings.push_back(unknown);
    return outcome;
}

} // namespace workbench
