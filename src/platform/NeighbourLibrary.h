// A library that lies in the same folder as the one this is linked into.
#ifndef PLATFORM_NEIGHBOURLIBRARY_H
#define PLATFORM_NEIGHBOURLIBRARY_H

#include <cstddef>

namespace Platform {

using TFunction = void (*)();

// Loads the library of this name (without what the system puts before and behind it). Null when that fails; `reason`,
// of `size` characters (at least 1), then says why. Nobody unloads it.
void* LoadNeighbour(const char* name, char* reason, std::size_t size) noexcept;

// A function that a library exports, or null.
TFunction FindFunction(void* library, const char* name) noexcept;

} // namespace Platform

#endif
