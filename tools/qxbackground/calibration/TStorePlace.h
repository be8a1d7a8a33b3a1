#ifndef QXBACKGROUND_CALIBRATION_TSTOREPLACE_H
#define QXBACKGROUND_CALIBRATION_TSTOREPLACE_H

#include <filesystem>
#include <string>
#include <vector>

namespace workbench {

// Where an offline store lies: its group files are FOLDER/BASE_NAME_VALUE_NAME_VALUE..., one pair per grouping name.
struct TStorePlace {
    std::filesystem::path folder; // as it was written: empty for the current folder
    std::string base;             // without the folder
    std::vector<std::string> names;

    std::filesystem::path Folder() const { return folder.empty() ? std::filesystem::path(".") : folder; }

    std::filesystem::path PathOf(const std::string& file) const { return folder / file; }
    std::string Text() const { return (folder / base).string(); } // as it is named in messages
};

// `path` is a base name, or any one of the store's group files; `groups` are the grouping names, which may be left out
// for a group file because it records them. Throws TToolError when the two do not make a store.
TStorePlace FindStore(const std::string& path, const std::vector<std::string>& groups);

// The value that `key` has for a grouping name; empty when it has none.
std::string GroupValueOf(const std::string& key, const std::string& name);

// The name of the group file that holds `key`. Throws TToolError when the key lacks a value for a grouping name, or
// has one that could not be read back out of a file's name.
std::string GroupFileOf(const TStorePlace& place, const std::string& key);

// The library's rule for the names of a store's files, and the strict form of that rule: nothing between the base
// and the first pair, no empty value.
bool IsClaimed(const TStorePlace& place, const std::string& file);
bool IsExactName(const TStorePlace& place, const std::string& file);

// A file that the library takes for one of the store's, because its name fits the naming rule.
struct TClaimedFile {
    std::string name;
    bool own = false; // it is a group file of this store: its name is exact and it records these names
};

// All of them, sorted by name. The rule is generous: characters between the base and the first "_" are ignored, so a
// base that begins another base's name claims the other store's files, too.
std::vector<TClaimedFile> ClaimedFiles(const TStorePlace& place);

// The store's own group files among them.
std::vector<std::string> OwnFiles(const TStorePlace& place);

} // namespace workbench

#endif
