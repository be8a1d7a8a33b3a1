#include "base/Terminal.h"

#include "base/Interrupts.h"

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
    constexpr DWORD kMilliseconds = 100;
    const HANDLE keyboard = GetStdHandle(STD_INPUT_HANDLE);
    std::string line;
    // Not every console ends a reading at Ctrl-C: where nothing has been typed, none is begun.
    while (!Interrupted() && (line.empty() || line.back() != '\n')) {
        if (line.empty() && WaitForSingleObject(keyboard, kMilliseconds) == WAIT_TIMEOUT)
            continue;
        char character = 0;
        DWORD count = 0;
        if (ReadFile(keyboard, &character, 1, &count, nullptr) == 0 || count == 0) {
            Sleep(kMilliseconds); // Ctrl-C ended it, and a thread of its own takes note of that
            break;
        }
        line += character;
    }
    return line;
}

} // namespace workbench
