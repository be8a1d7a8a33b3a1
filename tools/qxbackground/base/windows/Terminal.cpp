#include "base/Terminal.h"

#include <windows.h>

namespace workbench {

bool StandardErrorIsTerminal()
{
    DWORD mode = 0; // which only a console has
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace workbench
