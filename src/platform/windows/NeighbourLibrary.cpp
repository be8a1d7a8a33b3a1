#include "platform/NeighbourLibrary.h"

#include <cstdio>
#include <new>
#include <string>

#include <windows.h>

namespace Platform {

namespace {

// The file of the module that holds this code, or an empty text.
std::wstring OwnPath()
{
    HMODULE own = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<const wchar_t*>(&LoadNeighbour), &own)) {
        return std::wstring();
    }
    std::wstring path(256, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(own, &path[0], static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(2 * path.size());
    }
}

HMODULE Load(const char* name)
{
    std::wstring path = OwnPath();
    while (!path.empty() && path.back() != L'\\' && path.back() != L'/') {
        path.pop_back();
    }
    for (const char* at = name; *at != '\0'; ++at) {
        path.push_back(static_cast<wchar_t>(*at));
    }
    path += L".dll";
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
}

} // namespace

void* LoadNeighbour(const char* name, char* reason, std::size_t size) noexcept
{
    try {
        const HMODULE library = Load(name);
        if (library == nullptr) {
            std::snprintf(reason, size, "%s.dll in the folder of this library cannot be loaded: error %lu.", name,
                          GetLastError());
        }
        return reinterpret_cast<void*>(library);
    } catch (const std::bad_alloc&) {
        std::snprintf(reason, size, "There is no memory for a path.");
        return nullptr;
    }
}

TFunction FindFunction(void* library, const char* name) noexcept
{
    return reinterpret_cast<TFunction>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

} // namespace Platform
