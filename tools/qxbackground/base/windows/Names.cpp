#include "base/Names.h"

#include "base/TToolError.h"
#include "base/windows/WideText.h"

#include <windows.h>

#include <algorithm>

namespace workbench {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestName = 255;

// The name of eight letters and three that Windows gives every file on most disks, in letters of every code page.
std::wstring ShortName(const fs::path& path)
{
    std::wstring name(GetShortPathNameW(path.c_str(), nullptr, 0), L'\0');
    name.resize(GetShortPathNameW(path.c_str(), name.data(), static_cast<DWORD>(name.size())));
    return name;
}

} // namespace

std::string LibraryName(const std::string& path)
{
    const fs::path whole(path);
    std::string bytes;
    if (ToCodePage(whole.native(), bytes))
        return bytes;
    std::wstring name = ShortName(whole);
    if (name.empty() && whole.has_parent_path()) // a file that is to be made
        name = ShortName(whole.parent_path()) + L"\\" + whole.filename().native();
    if (name.empty() || !ToCodePage(name, bytes))
        throw TToolError(path, "the library cannot be given this name: the system's code page (" +
                                   std::to_string(GetACP()) + ") lacks some of its characters; choose another name");
    return bytes;
}

std::string TextOfLibrary(const std::string& bytes)
{
    std::wstring wide;
    if (!FromCodePage(bytes, wide))
        throw TToolError("'" + bytes + "'", "cannot be part of a file's name: the system's code page (" +
                                                std::to_string(GetACP()) + ") lacks some of its characters");
    return Narrow(wide);
}

bool SamePlace(const fs::path& one, const fs::path& other)
{
    const std::wstring left = fs::path(one).make_preferred().native();
    const std::wstring right = fs::path(other).make_preferred().native();
    return CompareStringOrdinal(left.c_str(), static_cast<int>(left.size()), right.c_str(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

std::string NameRefusal(const fs::path& path)
{
    const std::wstring name = path.filename().native();
    if (std::any_of(name.begin(), name.end(), [](wchar_t letter) { return letter < L' '; }) ||
        name.find_first_of(L"<>:\"|?*") != std::wstring::npos)
        return "holds a character that no file name on Windows may have (< > : \" | ? *)";
    if (name.size() > kLongestName)
        return "is longer than the 255 characters that a file's name may have on Windows";
    if (!name.empty() && (name.back() == L'.' || name.back() == L' '))
        return "ends in a character (dot or space) that Windows drops from file names";
    // "nul", "com1.tif": the full path of a device begins with \\.\ whatever the folder.
    std::wstring full(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
    GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (full.compare(0, 4, L"\\\\.\\") == 0)
        return "names a device";
    return {};
}

std::string NameRefusalElsewhere(const fs::path&)
{
    return {}; // what Windows takes the others take as well
}

} // namespace workbench
