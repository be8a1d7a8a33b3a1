// What a host needs of its platform and compiler: loading the library, the layout of the table of virtual functions,
// memory and threads. HostPlatformPosix.cpp and HostPlatformWindows.cpp say how.
#ifndef QXBC_TESTS_HOST_PLATFORM_H
#define QXBC_TESTS_HOST_PLATFORM_H

#include "QX_BackgroundCorrection.h"

#include <cstddef>
#include <cstring>

namespace HostPlatform {

using TFunction = void (*)();

// Loads the library under test; false when it cannot be loaded. It stays loaded until the process ends.
bool OpenLibrary(const char* path);

// An exported function, or null.
TFunction FindExport(const char* name);

// A version as the header's three constants give it.
struct TVersion {
    unsigned int major;
    unsigned int minor;
    unsigned int patch;
};

// The version that the loaded library itself carries, all 0 when it carries none: on Windows in its version resource,
// elsewhere in a note that names the package.
TVersion LibraryVersion();

// Path of the device that is an empty file to read and takes everything.
extern const char* const kNullDevice;

// Index of slot 1 in an object's table. The destructor, slot 0, takes the entries before it: two of them by the rules
// that GCC follows, one by Microsoft's.
extern const std::size_t kIndexOfFirstOperation;

// An object's table of virtual functions.
inline const TFunction* Table(const void* object)
{
    const TFunction* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    return table;
}

// Destroys and frees an object through the table, as compiled code does for a delete expression.
void DeleteThroughTable(QX_KRLSDK::QX_IBackgroundCorrection* object);

// Bytes that the process has taken from the system.
std::size_t BytesInUse();

// While this object lives, no block of 16 MB or more can be allocated, if it IsComplete.
class TExhaustedMemory {
public:
    TExhaustedMemory();
    ~TExhaustedMemory();

    // False when the process may use so much that it cannot be exhausted.
    bool IsComplete() const { return complete; }

    TExhaustedMemory(const TExhaustedMemory&) = delete;
    TExhaustedMemory& operator=(const TExhaustedMemory&) = delete;

private:
    bool complete = false;
};

// Name of the sanitizer that this host was built with, or null. A sanitizer manages memory its own way, so that the
// checks that count or exhaust it cannot be made.
const char* Sanitizer();

// Runs `work` on another thread; false when it has not come back in time (it is then still running).
bool FinishesOnAnotherThread(void (*work)(void*), void* argument, unsigned int milliseconds);

} // namespace HostPlatform

#endif
