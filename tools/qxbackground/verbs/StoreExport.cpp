// qxbackground store export: corrections of a store as one calibration file, for hosts that know no stores.
#include "base/JsonText.h"
#include "base/TReplacedFile.h"
#include "base/Wording.h"
#include "calibration/CorrectionCopy.h"
#include "calibration/Keys.h"
#include "calibration/SteadyRead.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/StoreVerbs.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace workbench {

namespace {

struct TStoreExportOptions {
    TStoreOptions store;
    std::vector<std::string> keys;
    std::vector<std::string> where; // NAME=VALUE
    std::string output;
    bool overwrite = false;
    bool json = false;
    bool noProvenance = false;
};

// The values that are wanted of each grouping name; any for a name that is not there.
using TWantedValues = std::map<std::string, std::set<std::string>>;

TWantedValues WantedValues(const TStorePlace& place, const std::vector<std::string>& where)
{
    TWantedValues wanted;
    for (const std::string& text : where) {
        const auto name = std::find_if(place.names.begin(), place.names.end(), [&text](const std::string& known) {
            return text.compare(0, known.size() + 1, known + "=") == 0;
        });
        if (name == place.names.end()) {
            std::string names;
            for (const std::string& known : place.names)
                names += (names.empty() ? "" : " ") + known;
            throw TToolError("--where: '" + text + "' is not NAME=VALUE with a grouping name of " + place.Text() +
                             " (" + names + ")");
        }
        wanted[*name].insert(text.substr(name->size() + 1));
    }
    return wanted;
}

bool HasWantedValues(const std::string& key, const TWantedValues& wanted)
{
    return std::all_of(wanted.begin(), wanted.end(),
                       [&key](const auto& name) { return name.second.count(GroupValueOf(key, name.first)) != 0; });
}

// All corrections of the store's own group files, group by group.
std::vector<TCopiedCorrection> CorrectionsOfStore(const TStorePlace& place)
{
    std::vector<TCopiedCorrection> corrections;
    bool hasFile = false;
    for (const TClaimedFile& file : ClaimedFiles(place)) {
        if (!IsExactName(place, file.name)) // of a store whose base name begins with this one's
            continue;
        const std::string path = place.PathOf(file.name).string();
        const std::vector<TCopiedCorrection> found = CopiesOf(path, RequireWhole(path).corrections);
        corrections.insert(corrections.end(), found.begin(), found.end());
        hasFile = true;
    }
    if (!hasFile)
        throw TToolError(place.Text(), "there is no group file of this store");
    return corrections;
}

std::vector<TCopiedCorrection> ChosenByKeys(const TStorePlace& place, const std::vector<TCopiedCorrection>& all,
                                            const std::vector<std::string>& keys)
{
    std::vector<TCopiedCorrection> chosen;
    for (const std::string& key : keys) {
        const std::string file = place.PathOf(GroupFileOf(place, key)).string();
        const auto found = std::find_if(all.begin(), all.end(), [&](const TCopiedCorrection& correction) {
            return correction.file == file && IsSameKey(correction.key, key);
        });
        if (found == all.end())
            throw TToolError(file, "there is no correction '" + Printable(key) + "'");
        chosen.push_back(*found);
    }
    return chosen;
}

std::vector<TCopiedCorrection> Chosen(const TStorePlace& place, const TStoreExportOptions& options)
{
    const TWantedValues wanted = WantedValues(place, options.where);
    std::vector<TCopiedCorrection> chosen = CorrectionsOfStore(place);
    if (!options.keys.empty()) {
        chosen = ChosenByKeys(place, chosen, options.keys);
    } else {
        chosen.erase(std::remove_if(chosen.begin(), chosen.end(),
                                    [&wanted](const TCopiedCorrection& correction) {
                                        return !HasWantedValues(correction.key, wanted);
                                    }),
                     chosen.end());
    }
    if (chosen.empty())
        throw TToolError(place.Text(), options.where.empty() ? "holds no correction"
                                                             : "holds no correction with these values; 'qxbackground "
                                                               "store list' shows what there is");
    std::map<std::string, std::string> spelled;
    for (const TCopiedCorrection& correction : chosen) {
        const auto [other, isNew] = spelled.emplace(FoldedKey(correction.key), correction.key);
        if (!isNew)
            throw TToolError(correction.file, "'" + Printable(correction.key) + "' and '" + Printable(other->second) +
                                                  "' are one key in a single file, which ignores letter case; choose "
                                                  "by --key or --where, or rename one");
    }
    return chosen;
}

void ExportStore(const TStoreExportOptions& options)
{
    const TStorePlace place = FindStore(options.store.base, options.store.groups);
    TReplacedFile replaced(options.output, ExistingFor(options.overwrite));
    std::vector<TCopiedCorrection> chosen;
    ReadStoreSteadily(place, [&] {
        chosen = Chosen(place, options);
        if (!WriteCorrections(replaced.Temporary(), {}, chosen))
            throw TToolError(options.output, "cannot be written: " + replaced.Reason("unknown error"));
    });
    const TCalibrationWalk walk = WalkCalibrationFile(replaced.Temporary());
    if (!walk.Whole() || walk.corrections.size() != chosen.size())
        throw TToolError(options.output, "was not written correctly (" + walk.Complaint() + ")");
    replaced.Commit();
    std::vector<std::string> keys;
    for (const TCopiedCorrection& correction : chosen)
        keys.push_back(correction.key);
    const TProvenanceOutcome provenance = CopyProvenance(TCalibrationPlace(place), TCalibrationPlace(options.output),
                                                         keys, TCopyInto::InPlaceOfAll, options.noProvenance);
    std::set<std::string> groups;
    for (const TCopiedCorrection& correction : chosen)
        groups.insert(correction.file);
    if (options.json) {
        nlohmann::json json{{"base", place.Text()}, {"keys", keys}, {"files", groups}, {"output", options.output}};
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Exported " << Counted(chosen.size(), "correction") << " of " << Counted(groups.size(), "group")
              << " of " << place.Text() << ": " << options.output << '\n';
    provenance.Print();
}

} // namespace

void AddStoreExportVerb(TVerb& store)
{
    TVerb& verb =
        store.AddVerb("export", "Write corrections of a store into one calibration file; all, or those chosen");
    const auto options = std::make_shared<TStoreExportOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Reads);
    CLI::Option* const keys =
        verb.NamesKey(verb.add_option("--key", options->keys, "Which correction; one --key for each (default: all)"))
            ->allow_extra_args(false);
    verb.add_option("--where", options->where,
                    "Only of groups with this value of a grouping name: Gain=4. Several of one name: any of them; of "
                    "several names: all of them")
        ->allow_extra_args(false)
        ->excludes(keys);
    verb.Creates(TPathKind::Calibration,
                 verb.add_option("-o,--output", options->output, "Calibration file (structure version 1)")->required(),
                 options->overwrite);
    AddJsonOption(verb, options->json);
    AddProvenanceOption(verb, options->noProvenance);
    verb.Run([options] { ExportStore(*options); });
}

} // namespace workbench
