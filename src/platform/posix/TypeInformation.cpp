#include "platform/TypeInformation.h"

namespace Platform {

// The entry before the first operation of a table points to the type information; compiled without, it is null, which
// the language's checked cast would follow.
bool MayHaveTypeInformation(const void* object) noexcept
{
    const void* const* const table = *static_cast<const void* const* const*>(object);
    return table[-1] != nullptr;
}

} // namespace Platform
