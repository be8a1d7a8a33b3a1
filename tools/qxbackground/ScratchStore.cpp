#include "ScratchStore.h"

#include "CalibrationWalk.h"
#include "Progress.h"
#include "ReplacedFile.h"

#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

TScratchStore::TScratchStore(const TStorePlace& where, const std::vector<std::string>& files)
    : place(where), folder(UnusedName(fs::absolute(where.Folder())))
{
    if (place.base.find("_" + place.names.front() + "_") != std::string::npos)
        throw TToolError(place.Text(), "a base name with _" + place.names.front() +
                                           "_ in it could not be found again from its group files");
    std::error_code error;
    for (const std::string& file : files) {
        if (fs::exists(place.PathOf(file), error))
            RequireWhole(place.PathOf(file).string());
    }
    if (!fs::create_directory(folder, error))
        throw TToolError(place.Text(), "its folder cannot be written to: " + error.message());
    for (const std::string& file : files) {
        if (!fs::exists(place.PathOf(file), error))
            continue;
        if (!fs::copy_file(place.PathOf(file), folder / file, error)) {
            std::error_code ignored;
            fs::remove_all(folder, ignored); // no destructor runs for an object that was never finished
            throw TToolError(place.PathOf(file).string(), "cannot be copied: " + error.message());
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
        Call(place.Text(), [&] { object.Load(place.base); });
    return object;
}

void TScratchStore::SaveAndCommit(QX_KRLSDK::TBackgroundCorrection& object)
{
    Call(place.Text(), [&] { object.Save(place.base); });
    Commit(object.Get().GetNumberOfCorrections(), {});
}

void TScratchStore::Commit(std::size_t corrections, const std::vector<std::string>& doomed)
{
    std::vector<std::string> written;
    std::size_t found = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const TCalibrationWalk walk = WalkCalibrationFile(entry.path().string());
        const std::string name = entry.path().filename().string();
        if (!walk.Whole())
            throw TToolError(place.PathOf(name).string(),
                             "was not written correctly (" + walk.Complaint() + "); the store is unchanged");
        found += walk.corrections.size();
        written.push_back(name);
    }
    if (found != corrections)
        throw TToolError(place.Text(), std::to_string(found) + " of " + std::to_string(corrections) +
                                           " corrections were written; the store is unchanged");
    ThrowIfInterrupted();

    const fs::path home = fs::absolute(folder).parent_path();
    std::error_code error;
    for (const std::string& name : doomed) {
        if (!fs::remove(home / name, error))
            throw TToolError(place.PathOf(name).string(), "cannot be removed: " + error.message());
    }
    for (const std::string& name : written) {
        const fs::file_status old = fs::status(home / name, error);
        if (fs::exists(old))
            fs::permissions(folder / name, old.permissions(), error);
        fs::rename(folder / name, home / name, error);
        if (error)
            throw TToolError(place.PathOf(name).string(), "cannot be replaced: " + error.message());
    }
}

} // namespace workbench
