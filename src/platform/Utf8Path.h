// A path in UTF-8, as the C runtime of this system opens it.
#ifndef PLATFORM_UTF8PATH_H
#define PLATFORM_UTF8PATH_H

#include <string>

namespace Platform {

class TUtf8Path {
public:
    // `utf8` may be null, and then Text() is; it has to live as long as this object.
    explicit TUtf8Path(const char* utf8);

    // False when the system's narrow paths cannot spell it.
    bool IsSpelled() const noexcept { return isSpelled; }

    const char* Text() const noexcept { return text; }

    TUtf8Path(const TUtf8Path&) = delete;
    TUtf8Path& operator=(const TUtf8Path&) = delete;

private:
    std::string converted; // empty where paths stay as they are
    const char* text = nullptr;
    bool isSpelled = false;
};

} // namespace Platform

#endif
