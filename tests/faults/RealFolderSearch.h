// The system's own folder search (platform/FolderSearch.h), compiled a second time under another namespace.
#ifndef TESTS_FAULTS_REALFOLDERSEARCH_H
#define TESTS_FAULTS_REALFOLDERSEARCH_H

#include <string>

namespace RealPlatform {

class TFolderSearch {
public:
    explicit TFolderSearch(const std::u16string& specification);
    ~TFolderSearch();
    TFolderSearch(const TFolderSearch&) = delete;
    TFolderSearch& operator=(const TFolderSearch&) = delete;

    bool HasName() const noexcept;
    const char16_t* Name() const noexcept;
    void Next() noexcept;

private:
    struct TState;
    TState* state;
};

} // namespace RealPlatform

#endif
