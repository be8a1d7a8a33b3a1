#include "base/Names.h"

namespace workbench {

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

} // namespace workbench
