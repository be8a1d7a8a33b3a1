// Loaded before a program (LD_PRELOAD): lets it meet a folder that can do less than those of a test machine, or stops
// it at a known place. QX_POOR_FOLDER holds any of the words
//   nolock     files cannot be locked
//   noname     a file cannot be made without a name
// and QX_PAUSE_AT_FLUSH the name of a file: the program makes it before it flushes what it wrote, and waits until it
// is gone. QX_END_AT_RENAME is a number: the program ends, with status 9, when it would rename its so manieth file.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#pragma GCC diagnostic ignored "-Wshadow" // flock is a structure and a function in the system's own headers

namespace {

bool Lacks(const char* word)
{
    const char* const words = std::getenv("QX_POOR_FOLDER");
    return words != nullptr && std::strstr(words, word) != nullptr;
}

int OpenUnlessNameless(const char* path, int flags, mode_t mode)
{
    if ((flags & O_TMPFILE) == O_TMPFILE && Lacks("noname")) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return openat(AT_FDCWD, path, flags, mode);
}

} // namespace

extern "C" int flock(int descriptor, int operation)
{
    if (Lacks("nolock")) {
        errno = ENOLCK;
        return -1;
    }
    using TFlock = int (*)(int, int);
    static const auto original = reinterpret_cast<TFlock>(dlsym(RTLD_NEXT, "flock"));
    return original(descriptor, operation);
}

extern "C" int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return OpenUnlessNameless(path, flags, mode);
}

extern "C" int fsync(int descriptor)
{
    using TFsync = int (*)(int);
    static const auto original = reinterpret_cast<TFsync>(dlsym(RTLD_NEXT, "fsync"));
    if (const char* const pause = std::getenv("QX_PAUSE_AT_FLUSH")) {
        close(openat(AT_FDCWD, pause, O_WRONLY | O_CREAT, 0666));
        while (access(pause, F_OK) == 0)
            usleep(1000);
    }
    return original(descriptor);
}

extern "C" int rename(const char* from, const char* to)
{
    static int renamed = 0;
    if (const char* const end = std::getenv("QX_END_AT_RENAME"); end != nullptr && ++renamed == std::atoi(end))
        _exit(9);
    using TRename = int (*)(const char*, const char*);
    static const auto original = reinterpret_cast<TRename>(dlsym(RTLD_NEXT, "rename"));
    return original(from, to);
}
