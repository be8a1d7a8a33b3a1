#ifndef QXBACKGROUND_BASE_TEXTFILE_H
#define QXBACKGROUND_BASE_TEXTFILE_H

#include "base/TReplacedFile.h"

#include <string>

namespace workbench {

// Writes a file, whole or not at all. Throws TToolError.
void WriteText(const std::string& path, const std::string& text, TExisting existing);

} // namespace workbench

#endif
