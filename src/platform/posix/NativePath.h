// A path as this system wants it.
#ifndef PLATFORM_POSIX_NATIVEPATH_H
#define PLATFORM_POSIX_NATIVEPATH_H

#include <algorithm>
#include <exception>
#include <string>

namespace Platform {

// A copy of a path with every "\" turned into "/". Not valid for a null path and when there is no memory for it.
class TNativePath {
public:
    explicit TNativePath(const char* path) noexcept
    {
        if (path == nullptr) {
            return;
        }
        try {
            text = path;
            std::replace(text.begin(), text.end(), '\\', '/');
            valid = true;
        } catch (const std::exception&) {
            valid = false;
        }
    }

    bool IsValid() const noexcept { return valid; }
    const char* Text() const noexcept { return text.c_str(); }

private:
    std::string text;
    bool valid = false;
};

} // namespace Platform

#endif
