#include "base/Escapes.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace workbench {

bool TakesEscapes(TStream stream)
{
    const char* const kind = std::getenv("TERM");
    return kind != nullptr && kind[0] != '\0' && std::strcmp(kind, "dumb") != 0 &&
           isatty(stream == TStream::Output ? STDOUT_FILENO : STDERR_FILENO) == 1;
}

} // namespace workbench
