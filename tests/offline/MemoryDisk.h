// A disk in memory in the place of the system's files and folders: this executable links it instead of the library's
// own platform sources. It counts what is done to it, fills up, refuses removals, and changes folders under a listing.
//
// A file's path is its name: folders exist as soon as a path names them.
#ifndef TESTS_OFFLINE_MEMORYDISK_H
#define TESTS_OFFLINE_MEMORYDISK_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct TMemoryDisk {
    struct TUse {
        int readings = 0; // times it was opened
        int writings = 0;
        std::size_t bytesRead = 0;
        std::size_t bytesWritten = 0;
    };

    std::map<std::string, std::vector<unsigned char>> files;
    std::map<std::string, TUse> uses;
    int listings = 0; // searches begun
    int openSearches = 0;
    int openFiles = 0;
    int existenceTests = 0;

    std::size_t freeBytes = SIZE_MAX; // what still can be written
    bool refusesRemovals = false;
    // When not empty: what the searches from here on find, one list after the other; then nothing.
    std::vector<std::vector<std::u16string>> scriptedSearches;
    std::vector<std::u16string> specifications; // of all searches

    void Restart(); // nothing is there, nothing was done
    void ForgetUses();
    std::size_t FilesWithUses() const { return uses.size(); }
};

// The one that is linked in.
TMemoryDisk& MemoryDisk();

// Bytes that operator new gave out and nobody gave back, without those of the disk.
class TMemoryWatch {
public:
    TMemoryWatch();
    ~TMemoryWatch();
    TMemoryWatch(const TMemoryWatch&) = delete;
    TMemoryWatch& operator=(const TMemoryWatch&) = delete;

    // The most at any time since construction, beyond what there was then.
    std::size_t PeakBytes() const;
};

#endif
