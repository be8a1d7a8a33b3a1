#include "base/Names.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace workbench {

namespace {

// Windows takes what stands before the first dot for the device, whatever the letter case.
bool NamesDeviceOfWindows(const std::string& name)
{
    static const std::set<std::string> kDevices = {"con", "prn", "aux", "nul", "conin$", "conout$"};
    std::string stem = name.substr(0, name.find('.'));
    std::transform(stem.begin(), stem.end(), stem.begin(),
                   [](char letter) { return static_cast<char>(std::tolower(static_cast<unsigned char>(letter))); });
    const bool isPort = stem.size() == 4 && (stem.compare(0, 3, "com") == 0 || stem.compare(0, 3, "lpt") == 0) &&
                        stem[3] >= '1' && stem[3] <= '9';
    return isPort || kDevices.count(stem) != 0;
}

} // namespace

// Names are bytes, for the system, for the library and here.

std::string LibraryName(const std::string& path)
{
    return path;
}

std::string TextOfLibrary(const std::string& bytes)
{
    return bytes;
}

bool SamePlace(const std::filesystem::path& one, const std::filesystem::path& other)
{
    return one == other;
}

std::string NameRefusal(const std::filesystem::path&)
{
    return {};
}

std::string NameRefusalElsewhere(const std::filesystem::path& path)
{
    const std::string name = path.filename().string();
    if (std::any_of(name.begin(), name.end(), [](char letter) { return letter >= 0 && letter < ' '; }) ||
        name.find_first_of("<>:\"\\|?*") != std::string::npos)
        return "holds a character that no file name on Windows may have (< > : \" | ? *)";
    if (!name.empty() && (name.back() == '.' || name.back() == ' '))
        return "ends in a character (dot or space) that Windows drops from file names";
    return NamesDeviceOfWindows(name) ? "names a device on Windows" : std::string();
}

} // namespace workbench
