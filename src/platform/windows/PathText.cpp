#include "platform/PathText.h"

namespace Platform {

void UseBackslashes(std::string&) {}

} // namespace Platform
