#include "platform/FolderSearch.h"

#include "platform/posix/NativePath.h"

#include <cstddef>

#include <dirent.h>

namespace Platform {

struct TFolderSearch::TState {
    DIR* folder;
    char16_t name[sizeof(dirent::d_name)];
    bool hasName;
};

TFolderSearch::TFolderSearch(const std::u16string& specification) : state(nullptr)
{
    std::string folder; // what is searched for without its "*", every character by its low byte
    for (std::size_t i = 0; i + 1 < specification.size(); ++i) {
        folder.push_back(static_cast<char>(static_cast<unsigned char>(specification[i] & 0xFF)));
    }
    const TNativePath native(folder.empty() ? "." : folder.c_str());
    state = new TState;
    state->folder = native.IsValid() ? opendir(native.Text()) : nullptr;
    Next();
}

TFolderSearch::~TFolderSearch()
{
    if (state->folder != nullptr) {
        closedir(state->folder);
    }
    delete state;
}

bool TFolderSearch::HasName() const noexcept
{
    return state->hasName;
}

const char16_t* TFolderSearch::Name() const noexcept
{
    return state->name;
}

void TFolderSearch::Next() noexcept
{
    const dirent* const entry = state->folder != nullptr ? readdir(state->folder) : nullptr;
    state->hasName = entry != nullptr;
    if (entry != nullptr) {
        std::size_t length = 0;
        do {
            state->name[length] = static_cast<unsigned char>(entry->d_name[length]);
        } while (entry->d_name[length++] != '\0');
    }
}

} // namespace Platform
