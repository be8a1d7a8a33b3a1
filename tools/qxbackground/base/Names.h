#ifndef QXBACKGROUND_BASE_NAMES_H
#define QXBACKGROUND_BASE_NAMES_H

#include <filesystem>
#include <string>

namespace workbench {

// Names are UTF-8 throughout this program where the system has wide names, and the system's own bytes where it has
// those. A std::filesystem::path made of such a text, and its string(), keep to that; files are opened by paths, never
// by texts. The library takes narrow names only, in an encoding of the system's choice.

// The name under which the library finds what `path` names. Throws TToolError when it has none.
std::string LibraryName(const std::string& path);

// The library makes names of group files out of bytes of keys. This is what a part of such a name is to this program.
std::string TextOfLibrary(const std::string& bytes);

// Whether two paths lead to one place, each in its canonical spelling, also where nothing is there yet.
bool SamePlace(const std::filesystem::path& one, const std::filesystem::path& other);

// Why no file can have the name that `path` ends in: "names a device". Nothing when one can.
std::string NameRefusal(const std::filesystem::path& path);

// The same for the other systems that files are carried to: where names may be anything, what Windows refuses.
std::string NameRefusalElsewhere(const std::filesystem::path& path);

} // namespace workbench

#endif
