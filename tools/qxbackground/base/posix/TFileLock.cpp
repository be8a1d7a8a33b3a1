#include "base/TFileLock.h"

#include "base/Interrupts.h"
#include "base/TProgress.h"
#include "base/TToolError.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <random>
#include <set>
#include <system_error>
#include <thread>

namespace workbench {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);

std::set<std::string>& HeldLocks()
{
    static std::set<std::string> held;
    return held;
}

int OpenLockFile(const char* path)
{
    const int flags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    int descriptor = open(path, O_RDWR | flags);
    if (descriptor < 0 && errno == ENOENT)
        descriptor = open(path, O_RDWR | O_CREAT | flags, 0666);
    // Left behind by another user: to lock it, opening it for reading is enough.
    if (descriptor < 0 && errno == EACCES)
        descriptor = open(path, O_RDONLY | flags);
    return descriptor;
}

} // namespace

TFileLock::TFileLock(const std::filesystem::path& lockFile, const std::string& name) : path(lockFile.string())
{
    while (!Lock(name)) {
    }
}

bool TFileLock::Lock(const std::string& name)
{
    descriptor = OpenLockFile(path.c_str());
    if (descriptor < 0) {
        // The file is missing and cannot be created: the folder is not writable, which is the error to report.
        const int error = errno == ENOENT ? EACCES : errno;
        throw TToolError(name,
                         "cannot be changed, its folder takes no new file: " + std::generic_category().message(error));
    }
    static std::minstd_rand random(std::random_device{}());
    std::uniform_int_distribution<int> milliseconds(1, 15);
    const auto start = std::chrono::steady_clock::now();
    bool told = false;
    while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK) { // this folder cannot lock
            close(descriptor);
            descriptor = -1;
            unlink(path.c_str());
            return true;
        }
        if (!told && std::chrono::steady_clock::now() - start > kPatience) {
            std::fprintf(stderr, "qxbackground: waiting for another process that is changing %s\n", name.c_str());
            told = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random)));
        if (Interrupted())
            close(descriptor);
        ThrowIfInterrupted();
    }
    struct stat opened, named;
    if (fstat(descriptor, &opened) != 0 || lstat(path.c_str(), &named) != 0 || opened.st_dev != named.st_dev ||
        opened.st_ino != named.st_ino) {
        close(descriptor);
        return false;
    }
    RemoveWhenKilled(path);
    HeldLocks().insert(path);
    return true;
}

TFileLock::~TFileLock()
{
    if (descriptor < 0)
        return;
    HeldLocks().erase(path);
    KeepWhenKilled(path);
    unlink(path.c_str()); // before the lock is released: a process that has the old file open notices
    close(descriptor);
}

bool TFileLock::Holds(const std::filesystem::path& lockFile)
{
    return HeldLocks().count(lockFile.string()) != 0;
}

} // namespace workbench
