#include "base/Terminal.h"

#include <windows.h>

namespace workbench {

namespace {

bool IsConsole(DWORD stream)
{
    DWORD mode = 0; // which only a console has
    return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

} // namespace

bool StandardErrorIsTerminal()
{
    return IsConsole(STD_ERROR_HANDLE);
}

bool StandardInputIsTerminal()
{
    return IsConsole(STD_INPUT_HANDLE);
}

std::string LineFromTerminal()
{
    std::string line;
    while (line.empty() || line.back() != '\n') {
        char character = 0;
        DWORD count = 0;
        if (ReadFile(GetStdHandle(STD_INPUT_HANDLE), &character, 1, &count, nullptr) == 0 || count == 0) {
            // Ctrl-C ends the reading, and a thread of its own takes note of it.
            constexpr DWORD kMilliseconds = 100;
            Sleep(kMilliseconds);
            break;
        }
        line += character;
    }
    return line;
}

} // namespace workbench
