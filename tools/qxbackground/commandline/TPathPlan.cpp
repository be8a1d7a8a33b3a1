#include "commandline/TPathPlan.h"

#include "base/Names.h"
#include "base/TReplacedFile.h"
#include "base/TToolError.h"

#include <algorithm>
#include <cctype>
#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

namespace {

fs::path CanonicalFolder(const fs::path& folder)
{
    std::error_code error;
    fs::path canonical = fs::weakly_canonical(folder.empty() ? fs::path(".") : folder, error);
    return error ? fs::absolute(folder, error) : canonical;
}

// What paths to one file have in common however they are spelled and whatever a system makes of letters: the digits and
// signs of the name.
std::string Signature(const fs::path& target)
{
    std::string signature;
    for (const char character : target.filename().string()) {
        if (character > ' ' && character < 127 && std::isalpha(static_cast<unsigned char>(character)) == 0)
            signature += character;
    }
    return signature;
}

// Whether two paths that led to one file still do. Another process may have replaced a file between the two looks, and
// a new file often gets the number of one that has just gone: only a look at the one on both sides of a look at the
// other tells.
bool AreStillOneFile(const std::string& one, const std::string& other)
{
    constexpr int kTries = 100;
    TFileState before = StateOf(one);
    for (int tries = 0; tries < kTries; ++tries) {
        const TFileState between = StateOf(other);
        const TFileState after = StateOf(one);
        if (before == after)
            return between.SameFile(after);
        before = after;
    }
    return true; // changed all the time: to refuse loses nothing
}

} // namespace

fs::path TPathPlan::CanonicalTarget(const std::string& path)
{
    const fs::path target = TargetOf(path);
    fs::path& folder = folders[target.parent_path()];
    if (folder.empty())
        folder = CanonicalFolder(target.parent_path());
    return folder / target.filename();
}

void TPathPlan::Add(TItem item)
{
    item.target = CanonicalTarget(item.path);
    item.state = StateOf(item.path);
    bySignature[Signature(item.target)].push_back(items.size());
    if (item.state.exists)
        byFile[{item.state.device, item.state.inode}].push_back(items.size());
    items.push_back(item);
}

void TPathPlan::AddFile(const std::string& option, TPathUse use, const std::string& path)
{
    TItem item;
    item.option = option;
    item.use = use;
    item.path = path;
    item.argument = ++arguments;
    Add(item);
}

void TPathPlan::AddFileInNewFolder(const std::string& option, TPathUse use, const std::string& path)
{
    AddFile(option, use, path);
    items.back().folderMayBeMissing = true;
}

void TPathPlan::AddProvenance(const std::string& option, TPathUse use, const TCalibrationPlace& place)
{
    AddFile("what is recorded beside " + option, use == TPathUse::Reads ? use : TPathUse::Follows,
            place.ProvenanceFile());
}

void TPathPlan::AddStore(const std::string& option, TPathUse use, const TStorePlace& place)
{
    stores.push_back({option, use, place, CanonicalFolder(place.Folder()), ++arguments});
    for (const TClaimedFile& file : ClaimedFiles(place)) {
        // A change touches the store's own files; a copy onto a name removes all that the name claims.
        if (use == TPathUse::Changes && !IsExactName(place, file.name))
            continue;
        TItem item;
        item.option = option;
        item.use = use;
        item.path = place.PathOf(file.name).string();
        item.argument = arguments;
        item.ofStore = true;
        Add(item);
    }
    AddProvenance(option, use, TCalibrationPlace(place));
}

void TPathPlan::RefuseShared(const TItem& written) const
{
    // Of thousands of items only those that can be meant.
    std::vector<std::size_t> candidates = bySignature.at(Signature(written.target));
    if (written.state.exists) {
        const std::vector<std::size_t>& same = byFile.at({written.state.device, written.state.inode});
        candidates.insert(candidates.end(), same.begin(), same.end());
    }
    std::sort(candidates.begin(), candidates.end()); // the first one on the command line is named
    for (const std::size_t candidate : candidates) {
        const TItem& item = items[candidate];
        if (item.argument == written.argument)
            continue;
        if (!SamePlace(item.target, written.target) &&
            !(item.state.SameFile(written.state) && AreStillOneFile(item.path, written.path)))
            continue;
        if (item.use == TPathUse::Reads)
            throw TToolError(written.path,
                             "is an input as well (" + item.option + "); choose another name for " + written.option);
        const std::string also = item.option == written.option ? item.path : item.option;
        throw TToolError(written.path, "is written by " + also + " as well; choose another name for " + written.option);
    }
    for (const TStoreItem& store : stores) {
        // Also where no group of that name exists yet: the store would take the file for one of its own.
        if (store.argument != written.argument && !written.ofStore &&
            SamePlace(written.target.parent_path(), store.folder) &&
            IsClaimed(store.place, written.target.filename().string()))
            throw TToolError(written.path, "is a name of the store " + store.place.Text() + " (" + store.option +
                                               "); choose another name for " + written.option);
    }
}

void TPathPlan::Check(bool overwrite) const
{
    for (const TItem& item : items) {
        if (item.use == TPathUse::Reads) {
            if (item.path == "-" && !item.state.exists)
                throw TToolError("'-': the standard input is not read; give a file name");
            if (item.path.empty())
                throw TToolError("''", "is not a file name");
            continue;
        }
        if (item.use == TPathUse::Follows)
            continue; // where it cannot be written, the rest is done all the same
        std::error_code error;
        if (item.path == "-" || !item.folderMayBeMissing || fs::exists(item.target.parent_path(), error))
            RefuseUnwritable(item.path);
        else
            RefuseImpossible(TargetOf(item.path), item.path);
    }
    for (const TItem& item : items) {
        if (item.use != TPathUse::Reads)
            RefuseShared(item);
    }
    for (const TItem& item : items) {
        if (item.use == TPathUse::Creates && item.state.exists && !item.ofStore && !overwrite)
            throw TToolError(item.path, "exists already; --overwrite replaces it");
    }
}

void TPathPlan::Lock()
{
    for (const TStoreItem& store : stores) {
        if (store.use != TPathUse::Reads)
            locks.push_back(
                std::make_unique<TFileLock>(LockFileOf(store.folder / store.place.base), store.place.Text()));
    }
    for (const TItem& item : items) {
        if (item.use == TPathUse::Changes && !item.ofStore)
            locks.push_back(std::make_unique<TFileLock>(LockFileOf(item.target), item.path));
    }
}

} // namespace workbench
