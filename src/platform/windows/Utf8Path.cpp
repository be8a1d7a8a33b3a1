#include "platform/Utf8Path.h"

#include <climits>

#include <windows.h>

namespace Platform {

TUtf8Path::TUtf8Path(const char* utf8) : text(utf8)
{
    // "Too long for an int" is too long for the system as well.
    const std::size_t size = utf8 != nullptr ? std::char_traits<char>::length(utf8) : 0;
    if (size == 0 || size > static_cast<std::size_t>(INT_MAX)) {
        isSpelled = size == 0;
        return;
    }
    const int length = static_cast<int>(size);
    const int wideLength = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8, length, nullptr, 0);
    if (wideLength == 0) {
        return;
    }
    const UINT codePage = AreFileApisANSI() ? GetACP() : GetOEMCP();
    if (codePage == CP_UTF8) {
        isSpelled = true;
        return;
    }
    std::wstring wide(static_cast<std::size_t>(wideLength), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8, length, &wide[0], wideLength);

    // A character that only looks like the one that was meant would name another file.
    BOOL isReplaced = FALSE;
    const int narrowLength =
        WideCharToMultiByte(codePage, WC_NO_BEST_FIT_CHARS, wide.data(), wideLength, nullptr, 0, nullptr, &isReplaced);
    if (narrowLength == 0 || isReplaced) {
        return;
    }
    converted.resize(static_cast<std::size_t>(narrowLength));
    WideCharToMultiByte(codePage, WC_NO_BEST_FIT_CHARS, wide.data(), wideLength, &converted[0], narrowLength, nullptr,
                        nullptr);
    text = converted.c_str();
    isSpelled = true;
}

} // namespace Platform
