// qxbackground store rename: gives a correction of a store another key, and with it another group where the key says
// so.
#include "base/JsonText.h"
#include "base/Wording.h"
#include "calibration/CorrectionCopy.h"
#include "calibration/Keys.h"
#include "calibration/NewGroups.h"
#include "calibration/TScratchStore.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/StoreVerbs.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>
#include <vector>

namespace workbench {

namespace {

struct TStoreRenameOptions {
    TStoreOptions store;
    std::string key;
    std::string newKey;
    bool newGroup = false;
    bool json = false;
    bool noProvenance = false;
};

// The corrections of a group; none when it has no file.
std::vector<TStoredCorrection> CorrectionsOf(const TStorePlace& place, const std::string& file)
{
    std::error_code ignored;
    const std::filesystem::path path = place.PathOf(file);
    return std::filesystem::exists(path, ignored) ? RequireWhole(path.string()).corrections
                                                  : std::vector<TStoredCorrection>();
}

void RenameInStore(const TStoreRenameOptions& options)
{
    CheckKey(options.newKey, "new-key");
    const TStorePlace place = FindStore(options.store.base, options.store.groups);
    const std::string from = GroupFileOf(place, options.key), to = GroupFileOf(place, options.newKey);
    const std::string fromPath = place.PathOf(from).string(), toPath = place.PathOf(to).string();
    if (!std::filesystem::exists(std::filesystem::path(fromPath)))
        throw TToolError(fromPath, "the group of key '" + options.key +
                                       "' has no file; 'store list' shows the groups that there are");
    AgreeOnNewGroups(place, {options.newKey}, options.newGroup);

    TScratchStore scratch(place, from == to ? std::vector<std::string>{from} : std::vector<std::string>{from, to});
    const std::vector<TStoredCorrection> old = CorrectionsOf(place, from);
    const std::vector<TStoredCorrection> other = from == to ? old : CorrectionsOf(place, to);
    const TStoredCorrection* const renamed = FindKey(old, options.key);
    if (renamed == nullptr)
        throw TToolError(fromPath, "has no correction '" + Printable(options.key) + "'; 'list' shows its keys");
    const TStoredCorrection* const taken = FindKey(other, options.newKey);
    const auto index = renamed - old.data();
    if (taken != nullptr && (from != to || taken - other.data() != index))
        throw TToolError(toPath, "has a correction '" + Printable(taken->key) +
                                     "' already (letter case is ignored); choose another key");

    std::vector<TCopiedCorrection> left = CopiesOf(fromPath, old);
    if (from == to) {
        left[static_cast<std::size_t>(index)].key = options.newKey;
    } else {
        std::vector<TCopiedCorrection> joined = CopiesOf(toPath, other);
        joined.push_back({fromPath, *renamed, options.newKey});
        scratch.Write(to, joined);
        left.erase(left.begin() + index);
    }
    scratch.Write(from, left);
    // Whatever stops this half way, the correction is in its new group before it leaves the old one.
    scratch.Commit(old.size() + (from == to ? 0 : other.size()), {}, from);
    const TProvenanceOutcome provenance =
        RenameProvenance(TCalibrationPlace(place), renamed->key, options.newKey, options.noProvenance);
    if (options.json) {
        nlohmann::json json{{"file", toPath}, {"renamed", renamed->key}, {"key", options.newKey}, {"from", fromPath}};
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Renamed '" << Printable(renamed->key) << "' to '" << Printable(options.newKey) << "' in " << toPath;
    if (from != to)
        std::cout << "; " << fromPath << " holds " << Counted(left.size(), "correction");
    std::cout << '\n';
    provenance.Print();
}

} // namespace

void AddStoreRenameVerb(TVerb& store)
{
    TVerb& verb = store.AddVerb("rename", "Give a correction another key; it goes to the group that the key names");
    const auto options = std::make_shared<TStoreRenameOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Changes);
    AddKeyOption(verb, options->key)->required();
    verb.add_option("new-key", options->newKey, std::string(kKeyHelp) + ". It names its group: A,1,B,2")->required();
    verb.add_flag("--new-group", options->newGroup, kNewGroupHelp);
    AddJsonOption(verb, options->json);
    AddProvenanceOption(verb, options->noProvenance);
    verb.Run([options] { RenameInStore(*options); });
}

} // namespace workbench
