#include "base/LargeMemory.h"

namespace workbench {

void ExpectWholeUse(void*, std::size_t) {} // large pages are for privileged users there

} // namespace workbench
