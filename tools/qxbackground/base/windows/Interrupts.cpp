#include "base/Interrupts.h"

#include "base/windows/AbruptEnd.h"
#include "base/windows/WideText.h"

#include <windows.h>

#include <atomic>
#include <mutex>
#include <set>
#include <utility>

namespace workbench {

namespace {

std::atomic<bool> interrupted{false};

std::mutex doomedLock;
std::set<std::wstring>& Doomed()
{
    static std::set<std::wstring> names;
    return names;
}

// In a thread of its own, which the system starts for the event.
BOOL WINAPI NoteInterrupt(DWORD event)
{
    const bool keyPressed = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    if (!interrupted.exchange(true)) {
        if (keyPressed)
            return TRUE;
        // The window is closed, or the session: when this returns the process is ended. The work ends by itself before.
        constexpr DWORD kMilliseconds = 4000; // the system waits five seconds
        Sleep(kMilliseconds);
    }
    RemoveUnfinishedFiles();
    return FALSE;
}

} // namespace

void RemoveUnfinishedFiles()
{
    const std::lock_guard<std::mutex> lock(doomedLock);
    for (const std::wstring& name : Doomed())
        DeleteFileW(name.c_str());
}

void CatchInterrupts()
{
    // A program that was started to ignore Ctrl-C goes on ignoring it: then this is not asked.
    SetConsoleCtrlHandler(NoteInterrupt, TRUE);
}

bool Interrupted()
{
    return interrupted;
}

std::thread ThreadWithoutInterrupts(std::function<void()> work)
{
    return std::thread(std::move(work)); // interrupts have a thread of their own
}

void RemoveWhenKilled(const std::string& path)
{
    const std::lock_guard<std::mutex> lock(doomedLock);
    Doomed().insert(Widen(path));
}

void KeepWhenKilled(const std::string& path)
{
    const std::lock_guard<std::mutex> lock(doomedLock);
    Doomed().erase(Widen(path));
}

} // namespace workbench
