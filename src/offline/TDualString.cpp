#include "offline/TDualString.h"

TDualString TDualString::FromWide(const char16_t* text)
{
    TDualString result;
    for (; (*text & 0xFF) != 0; ++text) {
        result.narrow.push_back(static_cast<char>(static_cast<unsigned char>(*text & 0xFF)));
    }
    return result;
}

const std::u16string& TDualString::Wide()
{
    std::u16string twin;
    twin.reserve(narrow.size());
    for (const char byte : narrow) {
        twin.push_back(static_cast<char16_t>(static_cast<signed char>(byte)));
    }
    wide.swap(twin);
    return wide;
}
