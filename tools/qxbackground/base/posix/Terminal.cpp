#include "base/Terminal.h"

#include "base/Interrupts.h"

#include <poll.h>
#include <unistd.h>

namespace workbench {

bool StandardErrorIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

bool StandardInputIsTerminal()
{
    return isatty(STDIN_FILENO) == 1;
}

std::string LineFromTerminal()
{
    // Looked at every now and then, because a read goes on after an interrupt.
    constexpr int kMilliseconds = 100;
    std::string line;
    while (!Interrupted() && (line.empty() || line.back() != '\n')) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, kMilliseconds) <= 0)
            continue;
        char character = 0;
        if (read(STDIN_FILENO, &character, 1) != 1)
            break;
        line += character;
    }
    return line;
}

} // namespace workbench
