// qxbackground store add, import, delete, copy: everything that changes the files of a store.
#include "base/JsonText.h"
#include "base/Names.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Doubts.h"
#include "calibration/Keys.h"
#include "calibration/NewGroups.h"
#include "calibration/SteadyRead.h"
#include "calibration/TCalibrationWalk.h"
#include "calibration/TScratchStore.h"
#include "calibration/TWorkingFolder.h"
#include "verbs/DarkFrames.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/StoreGroups.h"
#include "verbs/StoreVerbs.h"
#include "verbs/TBuildProvenance.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <iostream>
#include <memory>
#include <set>

namespace workbench {

namespace fs = std::filesystem;

namespace {

using QX_KRLSDK::TBackgroundCorrection;

std::string About(const TStorePlace& place, const std::string& key)
{
    return place.PathOf(GroupFileOf(place, key)).string() + ": key '" + key + "'";
}

struct TStoreAddOptions {
    bool newGroup = false;
    TStoreOptions store;
    std::string key;
    TConditions conditions;
    TDarkOptions darks;
    TInputOptions input;
    bool noProvenance = false;
    bool json = false;
};

void AddInStore(const TContext& context, const TStoreAddOptions& options)
{
    CheckKey(options.key, "--key");
    const TStorePlace place = FindStore(options.store.base, options.store.groups);
    const bool isOpen = MayBeCompleted(place, options.key); // by the frames' headers, which are read with the frames
    if (!isOpen)
        AgreeOnNewGroups(place, {options.key}, options.newGroup);
    TConditions conditions = options.conditions;
    TBuildProvenance recorder(options.darks, options.input, options.noProvenance);
    TFrameStack stack = ReadDarks(options.darks, options.input, "--exposure", conditions, nullptr, recorder.Digests());
    const std::string key = isOpen ? CompletedKey(place, options.key, stack.shot) : options.key;
    CheckKey(key, "--key");
    const std::string file = GroupFileOf(place, key);
    if (isOpen)
        AgreeOnNewGroups(place, {key}, options.newGroup);
    TScratchStore scratch(place, {file});
    {
        const TWorkingFolder working(scratch.Folder());
        TBackgroundCorrection object = scratch.Open(context);
        Call(About(place, key), [&] {
            object.Add(key, stack.Pointers(), stack.Size().width, stack.Size().height,
                       static_cast<float>(conditions.exposureSeconds),
                       static_cast<float>(conditions.lightIntensityPercent));
        });
        scratch.SaveAndCommit(object);
    }
    const std::string path = place.PathOf(file).string();
    const std::vector<std::string> doubts = HotterThanLonger(path, WalkCalibrationFile(path).corrections, key);
    stack.warnings.insert(stack.warnings.end(), doubts.begin(), doubts.end());
    const TProvenanceOutcome provenance = recorder.Record(TCalibrationPlace(place), key, stack);
    if (options.json) {
        nlohmann::json json = DarksJson(stack, options.darks, conditions);
        json["file"] = path;
        json["key"] = key;
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Added '" << Printable(key) << "' from " << DarksText(stack, options.darks) << " of "
              << stack.Size().Text() << " pixels (" << conditions.Text() << ") to the group file " << path << '\n';
    PrintNotes(stack.notes);
    PrintWarnings(stack.warnings);
    provenance.Print();
}

struct TStoreKeyOptions {
    TStoreOptions store;
    std::string key;
    bool noProvenance = false;
    bool json = false;
};

void DeleteInStore(const TContext& context, const TStoreKeyOptions& options)
{
    const TStorePlace place = FindStore(options.store.base, options.store.groups);
    const std::string file = GroupFileOf(place, options.key);
    if (!fs::exists(place.PathOf(file)))
        throw TToolError(place.PathOf(file).string(),
                         "the group of key '" + options.key +
                             "' has no file; 'store list' shows the groups that there are");
    TScratchStore scratch(place, {file});
    std::size_t left = 0;
    {
        const TWorkingFolder working(scratch.Folder());
        TBackgroundCorrection object = scratch.Open(context);
        left = object.Count() - 1; // now, because the store may keep the key in another spelling
        Call(About(place, options.key), [&] { object.Delete(options.key); });
        scratch.Save([&] { object.Save(LibraryName(place.base)); });
        scratch.Commit(left, {});
    }
    const TProvenanceOutcome provenance = DropProvenance(TCalibrationPlace(place), file, options.noProvenance);
    if (options.json) {
        nlohmann::json json{{"file", place.PathOf(file).string()}, {"deleted", options.key}, {"corrections", left}};
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Deleted '" << Printable(options.key) << "': " << place.PathOf(file).string() << " holds "
              << Counted(left, "correction") << '\n';
    provenance.Print();
}

struct TStoreImportOptions {
    TStoreOptions store;
    std::string source;
    bool overwrite = false;
    bool newGroup = false;
    bool noProvenance = false;
    bool json = false;
};

bool IsSingleFile(const std::string& path)
{
    return fs::is_regular_file(path) && WalkCalibrationFile(path).groupingNames.empty();
}

TStorePlace SourceStore(const TStoreImportOptions& options)
{
    return FindStore(options.source, fs::exists(options.source)
                                         ? std::vector<std::string>()
                                         : FindStore(options.store.base, options.store.groups).names);
}

// The corrections of a single calibration file or of another store.
TBackgroundCorrection OpenSource(const TContext& context, const TStoreImportOptions& options)
{
    if (IsSingleFile(options.source)) {
        TBackgroundCorrection file = context.Library().MakeProcessor();
        LoadWhole(file, options.source);
        return file;
    }
    const TStorePlace from = SourceStore(options);
    TBackgroundCorrection store = context.Library().MakeStore(from.names);
    ReadStoreSteadily(from, [&] {
        for (const std::string& file : OwnFiles(from))
            RequireWhole(from.PathOf(file).string());
        // By its full name, because its groups are read while the other store is worked on in another folder.
        Call(from.Text(), [&] { store.Load(LibraryName(fs::absolute(from.folder / from.base).string())); });
    });
    return store;
}

void ImportInStore(const TContext& context, const TStoreImportOptions& options)
{
    const TStorePlace place = FindStore(options.store.base, options.store.groups);
    const TBackgroundCorrection source = OpenSource(context, options);
    std::set<std::string> files;
    const std::vector<std::string> keys = source.Keys();
    for (const std::string& key : keys)
        files.insert(GroupFileOf(place, key));
    AgreeOnNewGroups(place, keys, options.newGroup);
    TScratchStore scratch(place, std::vector<std::string>(files.begin(), files.end()));
    std::size_t added = 0;
    std::vector<std::string> copied;
    {
        const TWorkingFolder working(scratch.Folder());
        TBackgroundCorrection object = scratch.Open(context);
        const std::size_t before = object.Count();
        copied = CopiedKeys(source, object, options.overwrite);
        Call(place.Text() + ": importing " + options.source, [&] { object.Import(source, options.overwrite); });
        added = object.Count() - before;
        scratch.SaveAndCommit(object);
    }
    const TProvenanceOutcome provenance = CopyProvenance(
        IsSingleFile(options.source) ? TCalibrationPlace(options.source) : TCalibrationPlace(SourceStore(options)),
        TCalibrationPlace(place), copied, TCopyInto::Among, options.noProvenance);
    if (options.json) {
        nlohmann::json written = nlohmann::json::array();
        for (const std::string& file : files)
            written.push_back(place.PathOf(file).string());
        nlohmann::json json{{"base", place.Text()},
                            {"source", options.source},
                            {"added", added},
                            {options.overwrite ? "overwritten" : "kept", keys.size() - added},
                            {"files", written}};
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Imported into " << place.Text() << ": " << added << " added, " << keys.size() - added
              << (options.overwrite ? " overwritten" : " already there and kept") << ", in "
              << Counted(files.size(), "group file") << '\n';
    provenance.Print();
}

struct TStoreCopyOptions {
    TStoreOptions store;
    std::string newBase;
    bool overwrite = false;
    bool force = false;
    bool noProvenance = false;
    bool json = false;
};

// The files of the target that the copy removes or replaces. Refuses when that was not asked for.
std::vector<std::string> FilesThatGo(const TStorePlace& to, const TStoreCopyOptions& options)
{
    std::vector<std::string> doomed;
    std::string list;
    bool own = false, foreign = false;
    for (const TClaimedFile& file : ClaimedFiles(to)) {
        list += "  " + to.PathOf(file.name).string() + (file.own ? "\n" : "   (no group file of this store)\n");
        doomed.push_back(file.name);
        (file.own ? own : foreign) = true;
    }
    if (!list.empty()) // the standard output is for the one document alone, when that is asked for
        (options.json ? std::cerr : std::cout) << "Files that have to go:\n" << list << std::flush;
    if (foreign && !options.force)
        throw TToolError(to.Text(), "its base name claims files that are none of its group files (listed above); "
                                    "nothing was removed; --force removes them");
    if (own && !options.overwrite)
        throw TToolError(to.Text(), "there is a store of that name (listed above); nothing was removed; --overwrite "
                                    "replaces it");
    return doomed;
}

void CopyInStore(const TContext& context, const TStoreCopyOptions& options)
{
    const TStorePlace from = FindStore(options.store.base, options.store.groups);
    const TStorePlace to = FindStore(options.newBase, from.names);
    const TFileStates before = StatesOfStore(from);
    const std::vector<std::string> files = OwnFiles(from);
    if (files.empty())
        throw TToolError(from.Text(), "there is no group file of this store");
    std::size_t corrections = 0;
    std::vector<std::string> keys;
    for (const std::string& file : files) {
        const TCalibrationWalk walk = RequireWhole(from.PathOf(file).string());
        corrections += walk.corrections.size();
        for (const TStoredCorrection& correction : walk.corrections)
            keys.push_back(correction.key);
    }
    for (const TClaimedFile& file : ClaimedFiles(from)) {
        if (!file.own)
            throw TToolError(from.PathOf(file.name).string(),
                             "is claimed by the base name '" + from.base + "' but is no group file of that store");
    }
    for (const std::string& file : files) {
        const fs::path copy = to.PathOf(to.base + file.substr(from.base.size()));
        if (const std::string refusal = NameRefusal(copy); !refusal.empty())
            throw TToolError(copy.string(), refusal + "; choose another base name");
    }
    const std::vector<std::string> doomed = FilesThatGo(to, options);
    TScratchStore scratch(to, {});
    {
        const TWorkingFolder working(from.folder);
        TBackgroundCorrection object = context.Library().MakeStore(from.names);
        Call(from.Text(), [&] { object.Load(LibraryName(from.base)); });
        scratch.Save([&] { object.Save(LibraryName((scratch.Folder() / to.base).string())); });
    }
    if (StatesOfStore(from) != before)
        throw TToolError(from.Text(), "was changed by another process meanwhile; nothing was copied, try again");
    scratch.Commit(corrections, doomed);
    const TProvenanceOutcome provenance = CopyProvenance(TCalibrationPlace(from), TCalibrationPlace(to), keys,
                                                         TCopyInto::InPlaceOfAll, options.noProvenance);
    if (options.json) {
        nlohmann::json written = nlohmann::json::array(), removed = nlohmann::json::array();
        for (const std::string& file : files)
            written.push_back(to.PathOf(to.base + file.substr(from.base.size())).string());
        for (const std::string& file : doomed)
            removed.push_back(to.PathOf(file).string());
        nlohmann::json json{
            {"base", to.Text()}, {"corrections", corrections}, {"files", written}, {"removed", removed}};
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Copied " << Counted(corrections, "correction") << " in " << Counted(files.size(), "group file")
              << " to " << to.Text() << '\n';
    provenance.Print();
}

} // namespace

void AddStoreAddVerb(TVerb& store, const TContext& context)
{
    TVerb& verb = store.AddVerb("add", "Build a correction from dark frames and add it to its group");
    const auto options = std::make_shared<TStoreAddOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Changes);
    verb.add_option("--key", options->key,
                    std::string(kKeyHelp) + ". It names its group: A,1,B,2. Values of Gain, "
                                            "Binning, Temperature and Exposure may be left "
                                            "out where the frames' headers say them")
        ->required();
    AddConditions(verb, "", "the dark frames", options->conditions);
    AddInputOptions(verb, options->input);
    AddDarkOptions(verb, options->darks);
    AddBiasOption(verb, options->darks.bias);
    verb.add_flag("--new-group", options->newGroup, kNewGroupHelp);
    AddFrames(verb, "darks", options->darks.files, "Dark frames; all pages form the stack")->required();
    AddProvenanceOption(verb, options->noProvenance);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { AddInStore(context, *options); });
}

void AddStoreDeleteVerb(TVerb& store, const TContext& context)
{
    TVerb& verb = store.AddVerb("delete", "Delete a correction from its group file");
    const auto options = std::make_shared<TStoreKeyOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Changes);
    AddKeyOption(verb, options->key)->required();
    AddProvenanceOption(verb, options->noProvenance);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { DeleteInStore(context, *options); });
}

void AddStoreImportVerb(TVerb& store, const TContext& context)
{
    TVerb& verb = store.AddVerb("import", "Copy corrections from a calibration file or another store into this one");
    const auto options = std::make_shared<TStoreImportOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Changes);
    verb.Reads(TPathKind::CalibrationOrStore,
               verb.add_option("source", options->source, "Calibration file, base name or group file; not changed")
                   ->required(),
               [options](const std::string& name, TPathPlan& plan) {
                   if (IsSingleFile(options->source))
                       plan.AddFile(name, TPathUse::Reads, options->source);
                   else
                       plan.AddStore(name, TPathUse::Reads, SourceStore(*options));
               });
    verb.add_flag("--overwrite", options->overwrite, "Replace corrections whose key is there already");
    verb.add_flag("--new-group", options->newGroup, kNewGroupHelp);
    AddProvenanceOption(verb, options->noProvenance);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { ImportInStore(context, *options); });
}

void AddStoreCopyVerb(TVerb& store, const TContext& context)
{
    TVerb& verb = store.AddVerb("copy", "Copy a store to another base name");
    const auto options = std::make_shared<TStoreCopyOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Reads);
    verb.Creates(TPathKind::Store, verb.add_option("new-base", options->newBase, "Base name of the copy")->required(),
                 options->overwrite, [options](const std::string& name, TPathPlan& plan) {
                     const TStorePlace from = FindStore(options->store.base, options->store.groups);
                     plan.AddStore(name, TPathUse::Creates, FindStore(options->newBase, from.names));
                 });
    verb.add_flag("--force", options->force,
                  "Also remove files that the new base name claims though they are none of its group files");
    AddProvenanceOption(verb, options->noProvenance);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { CopyInStore(context, *options); });
}

} // namespace workbench
