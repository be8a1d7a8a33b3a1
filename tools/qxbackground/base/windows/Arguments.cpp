#include "base/Arguments.h"

#include "base/Escapes.h"
#include "base/Terminal.h"
#include "base/windows/AbruptEnd.h"
#include "base/windows/TConsoleBuffer.h"
#include "base/windows/WideText.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace workbench {

namespace {

// The console is the shell's as well, which goes on with it.
struct TConsoleState {
    UINT page = 0;
    DWORD outputMode = 0, errorMode = 0;
};
TConsoleState before;

void GiveConsoleBack()
{
    // What waits to be shown is meant for the console as it is now.
    std::cout.flush();
    std::fflush(stdout);
    std::fflush(stderr);
    if (before.page != 0)
        SetConsoleOutputCP(before.page);
    // These fail where the stream is none of a console, and do nothing then.
    SetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), before.outputMode);
    SetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), before.errorMode);
}

// So that it can be given back.
void TakeConsole()
{
    before.page = GetConsoleOutputCP();
    GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &before.outputMode);
    GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &before.errorMode);
    std::atexit(GiveConsoleBack);
    SetConsoleOutputCP(CP_UTF8);
}

// Letters of several bytes, and a bar of progress, are not to be shown byte by byte.
void PrepareTerminal()
{
    DWORD mode = 0; // which only a console has
    if (GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0) {
        static auto* const console = new TConsoleBuffer; // to the very end, when what is left of the text is shown
        std::cout.rdbuf(console);
    }
    if (!StandardErrorIsTerminal())
        return;
    TakesEscapes(TStream::Error); // from now on, whatever is shown first
    constexpr std::size_t kEnough = 4096;
    std::setvbuf(stderr, nullptr, _IOFBF, kEnough);
}

// An exception of the library is none for this compiler, so that no handler of this program takes it. The library lets
// one through when memory runs out in the middle of its work, and then only.
LONG WINAPI EndWithOneLine(EXCEPTION_POINTERS* what)
{
    constexpr DWORD kMicrosoftException = 0xE06D7363;
    if (what->ExceptionRecord->ExceptionCode != kMicrosoftException)
        return EXCEPTION_CONTINUE_SEARCH;
    // By the thread that has used the library for a change, so that nothing more is changed without the lock.
    RemoveUnfinishedFiles();
    GiveUpLocks();
    std::fputs("qxbackground: there is not enough memory\n", stderr);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 2);
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace

std::vector<std::string> TakeArguments(int, char**)
{
    SetUnhandledExceptionFilter(EndWithOneLine);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    TakeConsole();
    PrepareTerminal();

    // What main is given has gone through the system's code page, which need not have its characters.
    std::vector<std::string> taken;
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int word = 0; word < count; ++word)
        taken.push_back(Narrow(words[word]));
    LocalFree(words);
    return taken;
}

} // namespace workbench
