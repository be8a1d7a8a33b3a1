#include "base/Interrupts.h"

#include <unistd.h>

#include <atomic>
#include <climits>
#include <csignal>
#include <cstring>
#include <utility>

namespace workbench {

namespace {

// Read by every thread as well.
std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler can wait for no lock");

// Read by a signal handler: fixed memory, and a flag that is set last and cleared first.
struct TDoomedName {
    volatile std::sig_atomic_t used;
    char path[PATH_MAX];
};
TDoomedName doomed[32];

extern "C" void NoteInterrupt(int signal)
{
    // When a terminal closes, the system and the shell send SIGHUP, one each.
    if (!interrupted || signal == SIGHUP) {
        interrupted = true;
        return;
    }
    for (const TDoomedName& name : doomed) {
        if (name.used != 0)
            unlink(name.path);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

} // namespace

void CatchInterrupts()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        if (std::signal(signal, NoteInterrupt) == SIG_IGN) // by nohup, or by a shell for what runs in the background
            std::signal(signal, SIG_IGN);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

bool Interrupted()
{
    return interrupted;
}

std::thread ThreadWithoutInterrupts(std::function<void()> work)
{
    // A thread begins with the signals blocked that its maker has blocked.
    sigset_t interrupts, before;
    sigemptyset(&interrupts);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigaddset(&interrupts, signal);
    pthread_sigmask(SIG_BLOCK, &interrupts, &before);
    struct TRestore {
        const sigset_t& mask;
        ~TRestore() { pthread_sigmask(SIG_SETMASK, &mask, nullptr); }
    } const restore{before};
    return std::thread(std::move(work));
}

void RemoveWhenKilled(const std::string& path)
{
    if (path.size() >= sizeof doomed->path)
        return;
    for (TDoomedName& name : doomed) {
        if (name.used == 0) {
            std::memcpy(name.path, path.c_str(), path.size() + 1);
            name.used = 1;
            return;
        }
    }
}

void KeepWhenKilled(const std::string& path)
{
    for (TDoomedName& name : doomed) {
        if (name.used != 0 && path == name.path)
            name.used = 0;
    }
}

} // namespace workbench
