#include "base/windows/WideText.h"

#include <windows.h>

namespace workbench {

namespace {

std::wstring ToWide(UINT codePage, DWORD flags, const std::string& bytes)
{
    const int given = static_cast<int>(bytes.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(codePage, flags, bytes.data(), given, nullptr, 0)),
                      L'\0');
    MultiByteToWideChar(codePage, flags, bytes.data(), given, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string FromWide(UINT codePage, DWORD flags, const std::wstring& wide)
{
    const int given = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(codePage, flags, wide.data(), given, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(codePage, flags, wide.data(), given, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

} // namespace

std::string Narrow(const std::wstring& wide)
{
    return FromWide(CP_UTF8, 0, wide);
}

std::wstring Widen(const std::string& narrow)
{
    return ToWide(CP_UTF8, 0, narrow);
}

bool ToCodePage(const std::wstring& wide, std::string& bytes)
{
    // Without the flag a letter that the code page lacks becomes one that looks like it, and names another file.
    const bool isUtf8 = GetACP() == CP_UTF8;
    bytes = FromWide(CP_ACP, isUtf8 ? 0 : WC_NO_BEST_FIT_CHARS, wide);
    std::wstring back;
    return FromCodePage(bytes, back) && back == wide;
}

bool FromCodePage(const std::string& bytes, std::wstring& wide)
{
    wide = ToWide(CP_ACP, MB_ERR_INVALID_CHARS, bytes);
    return bytes.empty() || !wide.empty();
}

} // namespace workbench
