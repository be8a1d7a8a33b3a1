// Files in memory. The fuzz targets link this in the place of the system's files and folder search
// (platform/RawFile.h, platform/FolderSearch.h): no run touches the disk, and all are alike.
#ifndef FUZZ_MEMORYFILES_H
#define FUZZ_MEMORYFILES_H

#include <string>
#include <vector>

namespace MemoryFiles {

using TBytes = std::vector<unsigned char>;

// Removes everything; the current folder, whose path is "", is always there.
void Clear();

// Paths are spelled with "/" or "\"; letter case counts. Folders are listed in the order of their names' bytes.
void MakeFolder(const std::string& path);
void Put(const std::string& path, const TBytes& bytes); // the folder need not be there
const TBytes* Find(const std::string& path);            // null when there is no such file; valid until it changes
std::vector<std::string> Paths();                       // of every file
bool CanBeWritten(const std::string& path);             // no folder has this path, and it lies in one

// Streams that the library has open.
unsigned int OpenStreams();

} // namespace MemoryFiles

#endif
