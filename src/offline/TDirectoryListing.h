// The names in a folder.
#ifndef OFFLINE_TDIRECTORYLISTING_H
#define OFFLINE_TDIRECTORYLISTING_H

#include <string>
#include <vector>

// A wide path in two spellings, one with forward slashes and one with backslashes.
class TWidePath {
public:
    TWidePath() = default;
    explicit TWidePath(const std::u16string& path);

    const std::u16string& ForwardForm() const noexcept { return forward; }
    const std::u16string& BackslashForm() const noexcept { return backslash; }

    TWidePath operator+(const std::u16string& text) const { return TWidePath(forward + text); }
    // Appends a separator unless there is one at the end; an empty path stays empty.
    void EnsureTrailingSeparator();

private:
    std::u16string forward;
    std::u16string backslash;
};

// A folder and, once listed, its names in the order of the file system: files, folders, "." and "..", unfiltered.
struct TDirectoryListing {
    TWidePath folder;
    int count = 0;
    std::vector<std::u16string> names; // `count` names, without the folder
};

// Lists the folder (an empty one is the current folder). A folder that cannot be listed has no names. The folder is
// read twice, to count and to fetch. When it changes in between, the second reading decides: a new name may come before
// the old ones, and none of those may be missing. Throws std::bad_alloc.
void ListDirectory(TDirectoryListing& listing);

// Releases the names and the folder.
void FreeDirectoryListing(TDirectoryListing& listing);

#endif
