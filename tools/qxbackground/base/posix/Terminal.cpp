#include "base/Terminal.h"

#include <unistd.h>

namespace workbench {

bool StandardErrorIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

} // namespace workbench
