#include "platform/FolderSearch.h"

#include <windows.h>

namespace Platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "wide names are passed on as they are");

struct TFolderSearch::TState {
    HANDLE handle;
    WIN32_FIND_DATAW data;
    bool hasName;
};

TFolderSearch::TFolderSearch(const std::u16string& specification) : state(new TState)
{
    state->handle = FindFirstFileW(reinterpret_cast<const wchar_t*>(specification.c_str()), &state->data);
    state->hasName = state->handle != INVALID_HANDLE_VALUE;
}

TFolderSearch::~TFolderSearch()
{
    FindClose(state->handle);
    delete state;
}

bool TFolderSearch::HasName() const noexcept
{
    return state->hasName;
}

const char16_t* TFolderSearch::Name() const noexcept
{
    return reinterpret_cast<const char16_t*>(state->data.cFileName);
}

void TFolderSearch::Next() noexcept
{
    state->hasName = FindNextFileW(state->handle, &state->data) != 0;
}

} // namespace Platform
