#ifndef QXBACKGROUND_BASE_TFILELOCK_H
#define QXBACKGROUND_BASE_TFILELOCK_H

#include <filesystem>
#include <string>

namespace workbench {

// Keeps other workbenches from changing the same thing, by a locked file. The system gives the lock up when the process
// ends, however it ends; a lock file that a killed process left behind is taken by the next one, and removed.
class TFileLock {
public:
    // Waits until the lock is free, with a message on the standard error stream after a second. `name` is what is
    // locked, for messages. On a folder that cannot lock nothing is held. Throws TToolError when the folder cannot be
    // written.
    TFileLock(const std::filesystem::path& lockFile, const std::string& name);
    ~TFileLock();
    TFileLock(const TFileLock&) = delete;
    TFileLock& operator=(const TFileLock&) = delete;

    // Whether this process holds the lock of that file.
    static bool Holds(const std::filesystem::path& lockFile);

private:
    bool Lock(const std::string& name); // false: its holder removed the file meanwhile, try again

    std::string path;
    int descriptor = -1;
};

} // namespace workbench

#endif
