#include "platform/NeighbourLibrary.h"

#include <climits>
#include <cstdio>
#include <cstring>

#include <dlfcn.h>
#include <unistd.h>

namespace Platform {

namespace {

// Known from the moment of loading: a library that was named by a relative path cannot be found by it once the program
// has gone to another folder.
class TOwnFolder {
public:
    TOwnFolder() noexcept
    {
        Dl_info info{};
        if (dladdr(static_cast<const void*>(this), &info) == 0 || info.dli_fname == nullptr) {
            return;
        }
        char current[PATH_MAX] = "";
        const bool isRelative = info.dli_fname[0] != '/';
        if (isRelative && getcwd(current, sizeof current) == nullptr) {
            return;
        }
        const int length = std::snprintf(path, sizeof path, "%s%s%s", current, isRelative ? "/" : "", info.dli_fname);
        if (length < 0 || static_cast<std::size_t>(length) >= sizeof path) {
            path[0] = '\0';
        }
        char* const lastSeparator = std::strrchr(path, '/');
        if (lastSeparator != nullptr) {
            lastSeparator[1] = '\0';
        }
    }

    const char* Path() const noexcept { return path; }

private:
    char path[2 * PATH_MAX] = ""; // ends in a separator; empty when it is not known
};

const TOwnFolder ownFolder;

} // namespace

void* LoadNeighbour(const char* name, char* reason, std::size_t size) noexcept
{
    char path[2 * PATH_MAX + 64];
    const int length = std::snprintf(path, sizeof path, "%slib%s.so", ownFolder.Path(), name);
    if (ownFolder.Path()[0] == '\0' || length < 0 || static_cast<std::size_t>(length) >= sizeof path) {
        std::snprintf(reason, size, "The folder of this library cannot be told.");
        return nullptr;
    }
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* const why = dlerror();
        std::snprintf(reason, size, "%s", why != nullptr ? why : path);
    }
    return library;
}

TFunction FindFunction(void* library, const char* name) noexcept
{
    return reinterpret_cast<TFunction>(dlsym(library, name));
}

} // namespace Platform
