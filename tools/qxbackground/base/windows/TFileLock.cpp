#include "base/TFileLock.h"

#include "base/TProgress.h"
#include "base/TToolError.h"
#include "base/windows/AbruptEnd.h"
#include "base/windows/SystemError.h"

#include <windows.h>

#include <io.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <random>
#include <thread>

namespace workbench {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);

// The descriptor of each lock file.
std::mutex heldGuard;
std::map<std::string, int>& HeldLocks()
{
    static std::map<std::string, int> held;
    return held;
}

} // namespace

TFileLock::TFileLock(const std::filesystem::path& lockFile, const std::string& name) : path(lockFile.string())
{
    Lock(name);
}

// Whoever has the file open has the lock: nobody else can open it, and the system removes it with the process.
bool TFileLock::Lock(const std::string& name)
{
    static std::minstd_rand random(std::random_device{}());
    std::uniform_int_distribution<int> milliseconds(1, 15);
    const std::filesystem::path lockFile(path);
    const auto start = std::chrono::steady_clock::now();
    bool told = false;
    for (;;) {
        const HANDLE opened =
            CreateFileW(lockFile.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                        FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (opened != INVALID_HANDLE_VALUE) {
            descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(opened), 0);
            break;
        }
        const DWORD error = GetLastError();
        const bool waitsLong = std::chrono::steady_clock::now() - start > kPatience;
        // A file that is being removed denies access for a moment, a folder that takes no new file always.
        if (error != ERROR_SHARING_VIOLATION && (error != ERROR_ACCESS_DENIED || waitsLong))
            throw TToolError(name, "cannot be changed, its folder takes no new file: " + SystemError(error).message());
        if (!told && waitsLong) {
            std::fprintf(stderr, "qxbackground: waiting for another process that is changing %s\n", name.c_str());
            std::fflush(stderr);
            told = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random)));
        ThrowIfInterrupted();
    }
    const std::lock_guard<std::mutex> guard(heldGuard);
    HeldLocks()[path] = descriptor;
    return true;
}

TFileLock::~TFileLock()
{
    const std::lock_guard<std::mutex> guard(heldGuard);
    HeldLocks().erase(path);
    _close(descriptor);
}

bool TFileLock::Holds(const std::filesystem::path& lockFile)
{
    const std::lock_guard<std::mutex> guard(heldGuard);
    return HeldLocks().count(lockFile.string()) != 0;
}

void GiveUpLocks()
{
    const std::lock_guard<std::mutex> guard(heldGuard);
    for (const auto& held : HeldLocks())
        _close(held.second);
    HeldLocks().clear();
}

} // namespace workbench
