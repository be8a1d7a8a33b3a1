#include "base/Escapes.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>

namespace workbench {

bool TakesEscapes(TStream stream)
{
    constexpr DWORD kVirtualTerminal = 4;         // ENABLE_VIRTUAL_TERMINAL_PROCESSING, which older headers lack
    const char* const kind = std::getenv("TERM"); // set by shells that came from elsewhere, and by nothing else
    if (kind != nullptr && std::strcmp(kind, "dumb") == 0)
        return false;
    const HANDLE console = GetStdHandle(stream == TStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD mode = 0; // which only a console has
    return GetConsoleMode(console, &mode) != 0 &&
           ((mode & kVirtualTerminal) != 0 || SetConsoleMode(console, mode | kVirtualTerminal) != 0);
}

} // namespace workbench
