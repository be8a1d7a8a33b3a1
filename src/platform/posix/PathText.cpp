#include "platform/PathText.h"

#include <algorithm>

namespace Platform {

void UseBackslashes(std::string& path)
{
    std::replace(path.begin(), path.end(), '/', '\\');
}

} // namespace Platform
