#ifndef QXBACKGROUND_COMMANDLINE_TPATHPLAN_H
#define QXBACKGROUND_COMMANDLINE_TPATHPLAN_H

#include "base/TFileLock.h"
#include "base/TFileState.h"
#include "calibration/TCalibrationPlace.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace workbench {

// What a command does with a path that it is given.
enum class TPathUse {
    Reads,
    Creates, // a file of its own: an older one of that name is in the way
    Changes, // adds to or takes from what is there
    Follows  // changes, when it can, together with what it belongs to, by whose lock it is protected
};

// What is meant to lie there.
enum class TPathKind {
    Image,
    Picture,
    Page,
    Table,
    Calibration,
    Store,
    CalibrationOrStore,
    Folder,
    Library,
    PixelList
};

// Everything that one command reads and writes. Made from the options before the command runs, so that no slip on the
// command line costs a file: nothing is opened for writing until Check has held every written path against all others.
class TPathPlan {
public:
    // `option` is how the command line names it, `path` what stands there.
    void AddFile(const std::string& option, TPathUse use, const std::string& path);
    // A file in a folder that the command makes when it is missing.
    void AddFileInNewFolder(const std::string& option, TPathUse use, const std::string& path);
    void AddStore(const std::string& option, TPathUse use, const TStorePlace& place);

    // What is recorded beside a calibration file or a store, see TProvenance: read, or changed where the place is.
    void AddProvenance(const std::string& option, TPathUse use, const TCalibrationPlace& place);

    // Throws TToolError when a path that is written is also read, or written otherwise, under whatever name; when it
    // cannot be written; or when a file is there already and `overwrite` is not set.
    void Check(bool overwrite) const;
    // Locks what is changed, until the plan goes.
    void Lock();

private:
    struct TItem {
        std::string option;
        TPathUse use = TPathUse::Reads;
        std::string path;             // as it was given
        std::filesystem::path target; // behind links, the folder in its canonical spelling
        TFileState state;
        std::size_t argument = 0; // counts what was given on the command line; a store has many items
        bool folderMayBeMissing = false;
        bool ofStore = false;
    };
    struct TStoreItem {
        std::string option;
        TPathUse use = TPathUse::Reads;
        TStorePlace place;
        std::filesystem::path folder; // canonical
        std::size_t argument = 0;
    };

    void Add(TItem item);
    std::filesystem::path CanonicalTarget(const std::string& path);
    void RefuseShared(const TItem& written) const;

    std::vector<TItem> items;
    // Places in `items`, so that thousands of files are held against each other at once: by what no spelling of a path
    // changes, and by the file that is there.
    std::unordered_map<std::string, std::vector<std::size_t>> bySignature;
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::vector<std::size_t>> byFile;
    std::map<std::filesystem::path, std::filesystem::path> folders; // canonical, by their spelling
    std::vector<TStoreItem> stores;
    std::size_t arguments = 0;
    std::vector<std::unique_ptr<TFileLock>> locks;
};

} // namespace workbench

#endif
