#include "platform/Utf8Path.h"

namespace Platform {

// Paths are bytes here, in whatever encoding.
TUtf8Path::TUtf8Path(const char* utf8) : text(utf8), isSpelled(true) {}

} // namespace Platform
