#ifndef QXBACKGROUND_BASE_FILEKIND_H
#define QXBACKGROUND_BASE_FILEKIND_H

#include <string>

namespace workbench {

// What a file is by its first bytes: "a PNG image", "a calibration file", ...; nothing when that cannot be told.
std::string FileKind(const std::string& path);

} // namespace workbench

#endif
