#include "base/Arguments.h"

namespace workbench {

std::vector<std::string> TakeArguments(int argumentCount, char** arguments)
{
    return {arguments, arguments + argumentCount};
}

} // namespace workbench
