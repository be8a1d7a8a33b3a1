#include "platform/Text.h"

#include <clocale>
#include <cstdio>

#include <locale.h>

namespace Platform {

void FormatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments) noexcept
{
    // The system keeps one ready-made object for "C": asking for it allocates nothing and cannot fail for memory.
    const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    const locale_t previous = cLocale != nullptr ? uselocale(cLocale) : nullptr;
    buffer[0] = '\0';
    std::vsnprintf(buffer, size, format, arguments);
    if (cLocale != nullptr) {
        uselocale(previous);
        freelocale(cLocale);
    }
}

} // namespace Platform
