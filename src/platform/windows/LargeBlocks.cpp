#include "platform/LargeBlocks.h"

namespace Platform {

// Large pages want a privilege here that hosts do not have.
void PreferLargePages(void*, std::size_t) noexcept {}

} // namespace Platform
