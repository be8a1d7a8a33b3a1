#include "platform/Text.h"

#include <cstdio>

#include <locale.h>

namespace Platform {

void FormatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments) noexcept
{
    // Without memory there is no C locale object; the text is then written in the host's locale, which concerns the
    // decimal point alone.
    const _locale_t cLocale = _create_locale(LC_ALL, "C");
    buffer[0] = '\0';
    _vsnprintf_l(buffer, size - 1, format, cLocale, arguments);
    buffer[size - 1] = '\0'; // a text that fills the buffer gets no terminator of its own
    if (cLocale != nullptr) {
        _free_locale(cLocale);
    }
}

} // namespace Platform
