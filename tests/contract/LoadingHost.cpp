// A host that loads the library with the comfort header: contract_loading_host <library> <folder>. The folder holds
// needing.dll, which has the four exports, and needed.dll, which it depends on. Built with MinGW: only loading is
// tested, and no object made.
#include "Checks.h"
#include "QX_BackgroundCorrection.hpp"

#include <cstdlib>
#include <string>

namespace {

bool Loads(const std::string& path)
{
    try {
        const QX_KRLSDK::TBackgroundCorrectionModule module(path);
        return module.create != nullptr && module.createOffline != nullptr && module.destroy != nullptr &&
               module.lastError != nullptr;
    } catch (const std::runtime_error&) {
        return false;
    }
}

std::string FullPath(const std::string& path)
{
    char buffer[MAX_PATH] = {};
    return GetFullPathNameA(path.c_str(), sizeof buffer, buffer, nullptr) != 0 ? buffer : std::string();
}

std::string FolderOfProgram()
{
    char buffer[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, buffer, sizeof buffer);
    const std::string path = buffer;
    return path.substr(0, path.find_last_of("\\/") + 1);
}

// A copy of a file for as long as this object lives.
class TCopy {
public:
    TCopy(const std::string& from, std::string to) : path(std::move(to))
    {
        if (CopyFileA(from.c_str(), path.c_str(), FALSE) == 0) {
            std::printf("cannot copy %s to %s: error %lu\n", from.c_str(), path.c_str(), GetLastError());
            std::exit(2);
        }
    }
    ~TCopy() { DeleteFileA(path.c_str()); }
    TCopy(const TCopy&) = delete;
    TCopy& operator=(const TCopy&) = delete;

private:
    std::string path;
};

void CheckPlainNames(const std::string& library)
{
    {
        const TCopy beside(library, FolderOfProgram() + "loading_beside.dll");
        Checks::That(Loads("loading_beside.dll"), "a plain name is found beside the program");
    }
    const TCopy here(library, "loading_here.dll");
    Checks::That(!Loads("loading_here.dll"), "a plain name is not found in the current folder");
    Checks::That(Loads(".\\loading_here.dll"), "a relative path is taken from the current folder");
    Checks::That(Loads("./loading_here.dll"), "a relative path may have slashes");
    Checks::That(Loads(FullPath("loading_here.dll")), "an absolute path loads");
    Checks::That(!Loads(""), "an empty path loads nothing");
    Checks::That(!Loads(".\\loading_nowhere.dll"), "a file that is not there does not load");
}

void CheckDependencies(const std::string& folder)
{
    Checks::That(Loads(FullPath(folder + "\\needing.dll")), "an absolute path takes its own folder for what it needs");
    Checks::That(Loads(folder + "/needing.dll"), "so does a relative path");
    // Apart from what it needs, which lies in the current folder.
    CreateDirectoryA("apart", nullptr);
    const TCopy needing(folder + "\\needing.dll", "apart\\needing.dll");
    {
        const TCopy needed(folder + "\\needed.dll", "needed.dll");
        Checks::That(!Loads(FullPath("apart\\needing.dll")), "the current folder does not serve an absolute path");
        Checks::That(!Loads("apart\\needing.dll"), "nor does it serve a relative path");
    }
    const TCopy needed(folder + "\\needed.dll", "apart\\needed.dll");
    Checks::That(Loads("apart\\needing.dll"), "with what it needs beside it, it loads");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::printf("usage: contract_loading_host <library> <folder>\n");
        return 2;
    }
    CheckPlainNames(arguments[1]);
    CheckDependencies(arguments[2]);
    std::printf("%u checks, %u failed\n", Checks::made, Checks::failed);
    return Checks::failed == 0 ? 0 : 1;
}
