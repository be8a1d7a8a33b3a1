// Included in front of every source: what libc++ and Microsoft's compiler expect of the C and Windows headers, and what
// these headers do otherwise.
#ifndef QXBC_HEADER_GAPS_H
#define QXBC_HEADER_GAPS_H

// libc++ checks that its own <wchar.h> was found; with these C headers its wrappers do not compile.
#define _LIBCPP_WCHAR_H

// WCHAR is wchar_t, as in Microsoft's headers.
#define WINE_UNICODE_NATIVE

// The headers define a function of this name, which the compiler has built in.
#define _InterlockedCompareExchange128 InterlockedCompareExchange128OfTheHeaders

#include <corecrt.h>
#include <stdarg.h>
#include <stddef.h>

typedef struct {
    long long integer;
    long double floating;
} max_align_t;

struct timespec {
    long long tv_sec;
    long tv_nsec;
};

// Formatting in a given locale, FormattedOutput.cpp.
extern "C" int _vsnprintf_l(char* buffer, size_t size, const char* format, _locale_t locale, va_list arguments);

// In this ABI libc++ takes the classification of numbers from the C headers, as templates.
extern "C++" {
template <class T> inline bool isnan(T value) noexcept
{
    return __builtin_isnan(value);
}
template <class T> inline bool isinf(T value) noexcept
{
    return __builtin_isinf(value);
}
template <class T> inline bool isfinite(T value) noexcept
{
    return __builtin_isfinite(value);
}
}

#endif
