#include "base/TNewFile.h"

#include "base/Interrupts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <vector>

namespace workbench {

namespace fs = std::filesystem;

namespace {

std::error_code LastError()
{
    return {errno, std::generic_category()};
}

// Blocks all signals: none may interrupt between the creation of a temporary name and its removal.
class TSignalsWait {
public:
    TSignalsWait()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    ~TSignalsWait() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    TSignalsWait(const TSignalsWait&) = delete;
    TSignalsWait& operator=(const TSignalsWait&) = delete;

private:
    sigset_t before{};
};

// A rename that replaces nothing, by the means that the file system supports.
int RenameToNew(const char* from, const char* to)
{
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return -1;
    if (link(from, to) == 0)
        return unlink(from);
    if (errno == EEXIST)
        return -1;
    struct stat ignored;
    if (lstat(to, &ignored) == 0) {
        errno = EEXIST;
        return -1;
    }
    return std::rename(from, to);
}

void MakeLike(int descriptor, const fs::path& old)
{
    struct stat found;
    if (stat(old.c_str(), &found) != 0)
        return;
    // The owner first, because a change of owner takes permissions away. A failure leaves the usual ones.
    if (fchown(descriptor, found.st_uid, found.st_gid) != 0)
        errno = 0;
    if (fchmod(descriptor, found.st_mode & 07777) != 0)
        errno = 0;
}

} // namespace

void TakeAfter(const fs::path& file, const fs::path& old)
{
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    MakeLike(descriptor, old);
    close(descriptor);
}

std::error_code FlushFile(const fs::path& file)
{
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return LastError();
    const std::error_code error = fsync(descriptor) == 0 ? std::error_code() : LastError();
    close(descriptor);
    return error;
}

std::error_code MoveOver(const fs::path& from, const fs::path& to)
{
    return std::rename(from.c_str(), to.c_str()) == 0 ? std::error_code() : LastError();
}

TNewFile::TNewFile(const fs::path& hiddenName) : hidden(hiddenName)
{
    const fs::path folder = hidden.has_parent_path() ? hidden.parent_path() : fs::path(".");
    descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (descriptor >= 0) {
        path = "/proc/self/fd/" + std::to_string(descriptor);
        if (access(path.c_str(), W_OK) == 0)
            return;
        close(descriptor); // there is no /proc
    }
    const TSignalsWait wait; // until it is known that the file has to go
    descriptor = open(hidden.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0)
        throw std::system_error(LastError());
    path = hidden.string();
    named = true;
    RemoveWhenKilled(path);
}

TNewFile::~TNewFile()
{
    close(descriptor);
    if (named) {
        unlink(hidden.c_str());
        KeepWhenKilled(hidden.string());
    }
}

void TNewFile::TakeAfter(const fs::path& old)
{
    MakeLike(descriptor, old);
}

std::error_code TNewFile::Flush()
{
    return fsync(descriptor) == 0 ? std::error_code() : LastError();
}

std::error_code TNewFile::Appear(const fs::path& target)
{
    const TSignalsWait wait;
    const int result = named ? RenameToNew(hidden.c_str(), target.c_str())
                             : linkat(AT_FDCWD, path.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW);
    if (result != 0)
        return LastError();
    if (named)
        KeepWhenKilled(hidden.string());
    named = false;
    return {};
}

std::error_code TNewFile::Replace(const fs::path& target)
{
    const TSignalsWait wait;
    if (!named && linkat(AT_FDCWD, path.c_str(), AT_FDCWD, hidden.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return LastError();
    if (std::rename(hidden.c_str(), target.c_str()) != 0) {
        const std::error_code error = LastError();
        unlink(hidden.c_str());
        return error;
    }
    if (named)
        KeepWhenKilled(hidden.string());
    named = false;
    return {};
}

std::error_code TNewFile::CannotGrow() const
{
    struct stat found;
    if (fstat(descriptor, &found) != 0)
        return LastError();
    // More than what a file system may have left over in its last block.
    const std::vector<char> more(1 << 20);
    off_t at = found.st_size;
    for (std::size_t written = 0; written < more.size();) {
        const ssize_t count = pwrite(descriptor, more.data() + written, more.size() - written, at);
        if (count < 0)
            return LastError();
        written += static_cast<std::size_t>(count);
        at += count;
    }
    return {};
}

} // namespace workbench
