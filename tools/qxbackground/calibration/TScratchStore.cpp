#include "calibration/TScratchStore.h"

#include "base/Names.h"
#include "base/TProgress.h"
#include "base/TReplacedFile.h"
#include "base/Wording.h"
#include "calibration/TCalibrationWalk.h"

#include <algorithm>
#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

TScratchStore::TScratchStore(const TStorePlace& where, const std::vector<std::string>& files)
    : place(where), folder(WorkNameFor(fs::absolute(where.Folder()) / where.base))
{
    if (place.base.find("_" + TextOfLibrary(place.names.front()) + "_") != std::string::npos)
        throw TToolError(place.Text(), "a base name with _" + place.names.front() +
                                           "_ in it could not be found again from its group files");
    std::error_code error;
    for (const std::string& file : files) {
        const fs::path path = place.PathOf(file);
        before.emplace_back(file, StateOf(path));
        if (!before.back().second.exists)
            continue;
        RequireWhole(path.string());
        RefuseWriteProtected(path, path.string());
    }
    fs::remove_all(folder, error); // what a killed process left
    if (!fs::create_directory(folder, error))
        throw TToolError(place.Text(), "its folder cannot be written to: " + error.message());
    for (const auto& [file, state] : before) {
        if (!state.exists)
            continue;
        if (!fs::copy_file(place.PathOf(file), folder / file, error)) {
            const std::string reason = Reason(error.message()); // the copy's own reason is "Input/output error"
            std::error_code ignored;
            fs::remove_all(folder, ignored); // no destructor runs for an object that was never finished
            throw TToolError(place.PathOf(file).string(),
                             "cannot be copied beside itself: " + reason + "; the store is unchanged");
        }
        copied = true;
    }
}

TScratchStore::~TScratchStore()
{
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

QX_KRLSDK::TBackgroundCorrection TScratchStore::Open(const TContext& context) const
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeStore(place.names);
    if (copied)
        Call(place.Text(), [&] { object.Load(LibraryName(place.base)); });
    return object;
}

void TScratchStore::Save(const std::function<void()>& save) const
{
    try {
        save();
    } catch (const QX_KRLSDK::TBackgroundCorrectionError& error) {
        throw TToolError(place.Text(), "cannot be written: " + Reason(error.what()) + "; the store is unchanged");
    }
}

std::string TScratchStore::Reason(const std::string& what) const
{
    try {
        const std::error_code error = TNewFile(folder / "more").CannotGrow();
        return error ? error.message() : what;
    } catch (const std::system_error& error) {
        return error.code().message();
    }
}

void TScratchStore::Write(const std::string& file, const std::vector<TCopiedCorrection>& corrections) const
{
    if (!WriteCorrections((folder / file).string(), place.names, corrections))
        throw TToolError(place.PathOf(file).string(),
                         "cannot be written: " + Reason("unknown error") + "; the store is unchanged");
}

void TScratchStore::SaveAndCommit(QX_KRLSDK::TBackgroundCorrection& object)
{
    Save([&] { object.Save(LibraryName(place.base)); });
    Commit(object.Count(), {});
}

void TScratchStore::Commit(std::size_t corrections, const std::vector<std::string>& doomed, const std::string& last)
{
    std::vector<std::string> written;
    std::size_t found = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const TCalibrationWalk walk = WalkCalibrationFile(entry.path().string());
        const std::string name = entry.path().filename().string();
        if (!walk.Whole())
            throw TToolError(place.PathOf(name).string(),
                             "cannot be written: " + Reason(walk.Complaint()) + "; the store is unchanged");
        if (const std::error_code failed = FlushFile(entry.path()))
            throw TToolError(place.PathOf(name).string(),
                             "cannot be written: " + failed.message() + "; the store is unchanged");
        found += walk.corrections.size();
        written.push_back(name);
    }
    if (found != corrections)
        throw TToolError(place.Text(), "only " + std::to_string(found) + " of " + Counted(corrections, "correction") +
                                           " could be written: " + Reason("the library gives no reason") +
                                           "; the store is unchanged");
    ThrowIfInterrupted();

    const fs::path home = fs::absolute(folder).parent_path();
    for (const std::string& name : doomed)
        RefuseWriteProtected(home / name, place.PathOf(name).string());
    for (const auto& [name, state] : before) {
        if (StateOf(home / name) != state)
            throw TToolError(place.PathOf(name).string(),
                             "was changed by another process meanwhile; the store is unchanged, try again");
    }
    // The new files first: whatever stops this half way, no correction is without a file.
    std::partition(written.begin(), written.end(), [&](const std::string& name) { return name != last; });
    std::error_code error;
    for (const std::string& name : written) {
        TakeAfter(folder / name, home / name);
        error = MoveOver(folder / name, home / name);
        if (error)
            throw TToolError(place.PathOf(name).string(), "cannot be replaced: " + error.message());
    }
    for (const std::string& name : doomed) {
        if (std::find(written.begin(), written.end(), name) == written.end() && !fs::remove(home / name, error))
            throw TToolError(place.PathOf(name).string(), "cannot be removed: " + error.message());
    }
}

} // namespace workbench
