#ifndef QXBACKGROUND_CALIBRATION_TSCRATCHSTORE_H
#define QXBACKGROUND_CALIBRATION_TSCRATCHSTORE_H

#include "base/TFileState.h"
#include "calibration/CorrectionCopy.h"
#include "calibration/TContext.h"
#include "calibration/TStorePlace.h"

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace workbench {

// Changes a store without risking its files: the groups concerned are copied to a folder beside them, the library works
// there, and what it wrote takes the old files' places only when it is known to be whole. (The library itself writes
// group files in place, and does not tell when writing back a group on a switch failed.)
class TScratchStore {
public:
    // `files` are names of group files; those that exist are copied. Throws when one of them does not load whole or is
    // write-protected.
    TScratchStore(const TStorePlace& place, const std::vector<std::string>& files);
    ~TScratchStore();
    TScratchStore(const TScratchStore&) = delete;
    TScratchStore& operator=(const TScratchStore&) = delete;

    const std::filesystem::path& Folder() const { return folder; }
    // The object over the copied groups (an empty store when there were none). The current folder is the scratch
    // folder while it is used.
    QX_KRLSDK::TBackgroundCorrection Open(const TContext& context) const;
    // Runs `save`, which is to write here; an error names the system's reason.
    void Save(const std::function<void()>& save) const;
    // Writes a group file here without the library.
    void Write(const std::string& file, const std::vector<TCopiedCorrection>& corrections) const;
    // Saves `object` here, checks every file, and moves all of them into the store's folder.
    void SaveAndCommit(QX_KRLSDK::TBackgroundCorrection& object);
    // Checks that exactly `corrections` corrections were written, all whole, and removes those `doomed` files of
    // the store's folder that no new one replaces. The file `last` takes its place after all others.
    void Commit(std::size_t corrections, const std::vector<std::string>& doomed, const std::string& last = {});

private:
    std::string Reason(const std::string& what) const; // the system's, or `what` when it has none

    TStorePlace place;
    std::filesystem::path folder;                           // absolute
    std::vector<std::pair<std::string, TFileState>> before; // of the files that were asked for, there or not
    bool copied = false;
};

} // namespace workbench

#endif
