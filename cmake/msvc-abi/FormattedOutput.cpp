// The formatting function that Microsoft's headers define inline on top of the C runtime and that these headers lack.
#include <stdio.h>

// A text that fills the buffer gets no terminator, and -1 says so.
extern "C" int _vsnprintf_l(char* buffer, size_t size, const char* format, _locale_t locale, va_list arguments)
{
    const int length = __stdio_common_vsprintf(_CRT_INTERNAL_PRINTF_LEGACY_VSPRINTF_NULL_TERMINATION, buffer, size,
                                               format, locale, arguments);
    return length < 0 ? -1 : length;
}
