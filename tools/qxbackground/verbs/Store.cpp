// qxbackground store: the verbs over an offline store; those that only read it are here.
#include "base/JsonText.h"
#include "base/Names.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Listing.h"
#include "calibration/SteadyRead.h"
#include "calibration/TStorePlace.h"
#include "calibration/TWorkingFolder.h"
#include "verbs/StoreVerbs.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>

namespace workbench {

namespace {

using QX_KRLSDK::TBackgroundCorrection;

// For a failure over a whole store the library gives no text, so this looks for the file that causes it.
void CallOnStore(const TStorePlace& place, const std::function<void()>& step)
{
    try {
        Call(place.Text(), step);
    } catch (const TToolError&) {
        for (const TClaimedFile& file : ClaimedFiles(place)) {
            const std::string path = place.PathOf(file.name).string();
            const TCalibrationWalk walk = WalkCalibrationFile(path);
            if (!walk.Whole())
                throw TToolError(path, "does not load whole (" + walk.Complaint() + ")");
        }
        throw;
    }
}

struct TStoreListOptions {
    TStoreOptions store;
    bool json = false;
};

struct TStoreListing {
    std::string text;
    nlohmann::json groups = nlohmann::json::array();
    std::size_t corrections = 0, files = 0;
};

TStoreListing ReadListing(const TContext& context, const TStorePlace& place)
{
    const TWorkingFolder working(place.folder);
    const TStorePlace here{{}, place.base, place.names};
    TBackgroundCorrection object = context.Library().MakeStore(place.names);
    CallOnStore(here, [&] { object.LoadHeaderOnly(LibraryName(place.base)); });
    const std::vector<std::string> keys = object.Keys();

    TStoreListing listing;
    for (const TClaimedFile& claimed : ClaimedFiles(here)) {
        ++listing.files;
        const TCalibrationWalk walk = WalkCalibrationFile(claimed.name);
        std::vector<TListedCorrection> listed;
        for (const TStoredCorrection& stored : walk.corrections)
            listed.push_back(
                {stored.key, stored.exposureSeconds, stored.lightIntensityPercent, stored.width, stored.height});
        listing.corrections += listed.size();
        listing.groups.push_back({{"file", place.PathOf(claimed.name).string()},
                                  {"own", claimed.own},
                                  {"corrections", ListingJson(listed)}});
        listing.text += place.PathOf(claimed.name).string() + ": " + Counted(listed.size(), "correction") +
                        (claimed.own ? "" : "   (no group file of this store, but its name fits)") + "\n" +
                        ListingTable(listed);
    }
    if (listing.corrections != keys.size())
        throw TToolError(place.Text(), "the library finds " + Counted(keys.size(), "correction") + ", the files hold " +
                                           std::to_string(listing.corrections));
    return listing;
}

void ListStore(const TContext& context, const TStoreListOptions& options)
{
    const TStorePlace place = FindStore(options.store.base, options.store.groups);
    TStoreListing listing;
    ReadStoreSteadily(place, [&] { listing = ReadListing(context, place); });
    if (options.json) {
        std::cout << JsonText({{"base", place.Text()}, {"groupingNames", place.names}, {"groups", listing.groups}});
        return;
    }
    std::cout << "Store " << place.Text() << ", grouped by";
    for (const std::string& name : place.names)
        std::cout << ' ' << name;
    std::cout << ": " << Counted(listing.corrections, "correction") << " in " << Counted(listing.files, "file") << '\n'
              << listing.text;
}

void AddStoreListVerb(TVerb& store, const TContext& context)
{
    TVerb& verb = store.AddVerb("list", "List a store's groups and corrections (reads no pixels)");
    const auto options = std::make_shared<TStoreListOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Reads);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { ListStore(context, *options); });
}

} // namespace

TBackgroundCorrection OpenInStore(const TContext& context, const TStorePlace& place, const std::string& key)
{
    const std::string file = place.PathOf(GroupFileOf(place, key)).string();
    TBackgroundCorrection object = context.Library().MakeStore(place.names);
    ReadStoreSteadily(place, [&] {
        if (!std::filesystem::exists(file))
            throw TToolError(file, "the group of key '" + key +
                                       "' has no file; 'store list' shows the groups that there are");
        RequireWhole(file);
        const TWorkingFolder working(place.folder);
        CallOnStore({{}, place.base, place.names}, [&] { object.Load(LibraryName(place.base)); });
        Call(file, [&] { object.SetActive(key); });
    });
    return object;
}

void AddStoreOptions(TVerb& verb, TStoreOptions& options, TPathUse use)
{
    const TVerb::TFill fill = [&options, use](const std::string& name, TPathPlan& plan) {
        plan.AddStore(name, use, FindStore(options.base, options.groups));
    };
    CLI::Option* const base =
        verb.add_option("base", options.base,
                        "Base name of the store's files, with their folder; or any one of the files")
            ->required();
    if (use == TPathUse::Changes)
        verb.Changes(TPathKind::Store, base, fill);
    else
        verb.Reads(TPathKind::Store, base, fill);
    verb.add_option("--group", options.groups, kGroupHelp)->allow_extra_args(false);
}

void AddStoreVerb(TVerb& app, TContext& context)
{
    TVerb& store = app.AddVerb("store", "Work with an offline store: one calibration file per group");
    store.AddNote("A store spreads its corrections over files named BASE_NAME_VALUE_NAME_VALUE..., one per combination "
                  "of the values of its grouping names. A key carries them: with --group Gain --group Mode the key "
                  "Gain,2,Mode,fast,flat belongs to the file BASE_Gain_2_Mode_fast.");
    store.require_subcommand(1);
    store.AddVerbs({
        {"add", [&] { AddStoreAddVerb(store, context); }},
        {"delete", [&] { AddStoreDeleteVerb(store, context); }},
        {"import", [&] { AddStoreImportVerb(store, context); }},
        {"copy", [&] { AddStoreCopyVerb(store, context); }},
        {"rename", [&] { AddStoreRenameVerb(store); }},
        {"show", [&] { AddStoreShowVerb(store, context); }},
        {"export", [&] { AddStoreExportVerb(store); }},
        {"list", [&] { AddStoreListVerb(store, context); }},
        {"apply", [&] { AddStoreApplyVerb(store, context); }},
    });
}

} // namespace workbench
