// A path as this system wants it.
#ifndef PLATFORM_POSIX_NATIVEPATH_H
#define PLATFORM_POSIX_NATIVEPATH_H

#include <algorithm>
#include <climits>
#include <cstring>

namespace Platform {

// A copy of a path with every "\" turned into "/". Not valid for a null path and for one that is longer than the system
// takes. Needs no memory: want of memory would look like a file that does not exist, and a store that believes so
// begins the file's group anew.
class TNativePath {
public:
    explicit TNativePath(const char* path) noexcept
    {
        const std::size_t length = path != nullptr ? std::strlen(path) : sizeof text;
        if (length < sizeof text) {
            std::replace_copy(path, path + length + 1, text, '\\', '/');
            valid = true;
        }
    }

    bool IsValid() const noexcept { return valid; }
    const char* Text() const noexcept { return text; }

private:
    char text[PATH_MAX]; // set while valid; the system's limit counts the terminator
    bool valid = false;
};

} // namespace Platform

#endif
