// Files in memory. The fuzz targets link this in the place of the system's files and folder search
// (platform/RawFile.h, platform/FolderSearch.h): no run touches the disk, and all are alike.
#ifndef FUZZ_MEMORYFILES_H
#define FUZZ_MEMORYFILES_H

#include "model/LiteralDisk.h"

#include <string>

namespace MemoryFiles {

// What the library works on. Letter case counts; folders are listed in the order of their names' bytes.
TLiteralDisk& Disk();

// Removes everything; the current folder, whose path is "", is always there.
void Clear();

void MakeFolder(const std::string& path);
void Put(const std::string& path, const Literal::TBytes& bytes); // the folder need not be there

// Streams that the library has open.
unsigned int OpenStreams();

} // namespace MemoryFiles

#endif
