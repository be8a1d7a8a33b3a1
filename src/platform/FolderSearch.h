// Listing a folder, one name at a time.
#ifndef PLATFORM_FOLDERSEARCH_H
#define PLATFORM_FOLDERSEARCH_H

#include <string>

namespace Platform {

// A search that is open from construction to destruction. Names come in the order of the file system, folders, "." and
// ".." among them; they are 16-bit text (a byte of a narrow system's name becomes one character).
class TFolderSearch {
public:
    // `specification` is a folder, a "\" and "*"; only "*" means the current folder. A folder that cannot be searched
    // has no names. Throws std::bad_alloc.
    explicit TFolderSearch(const std::u16string& specification);
    ~TFolderSearch();
    TFolderSearch(const TFolderSearch&) = delete;
    TFolderSearch& operator=(const TFolderSearch&) = delete;

    bool HasName() const noexcept;
    // The name found, while HasName(); valid until Next.
    const char16_t* Name() const noexcept;
    void Next() noexcept;

private:
    struct TState;
    TState* state;
};

} // namespace Platform

#endif
