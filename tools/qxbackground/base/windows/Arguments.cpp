#include "base/Arguments.h"

#include "base/windows/WideText.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>

namespace workbench {

namespace {

UINT consoleBefore = 0;

// The console is the shell's as well, which goes on with it.
void GiveConsoleBack()
{
    SetConsoleOutputCP(consoleBefore);
}

// A bar of progress moves by the control sequences of terminals, and is not to be drawn letter by letter.
void PrepareTerminal()
{
    const HANDLE terminal = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(terminal, &mode) == 0)
        return;
    SetConsoleMode(terminal, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
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
    PrepareTerminal();
    consoleBefore = GetConsoleOutputCP();
    if (consoleBefore != 0 && SetConsoleOutputCP(CP_UTF8) != 0)
        std::atexit(GiveConsoleBack);

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
