// Text services that differ between systems: bounded formatting in the C locale, comparison that ignores case.
#ifndef PLATFORM_TEXT_H
#define PLATFORM_TEXT_H

#include <cstdarg>
#include <cstddef>

namespace Platform {

// Formats into `buffer` of `size` characters (at least 1), terminator included; what does not fit is cut. Numbers are
// written as in the C locale, whatever the host has set. A null text for %s is written as (null).
void FormatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments) noexcept;

// Compares two texts; the letters A to Z equal a to z, every other byte is itself whatever the locale. The sign says
// the order of the first difference.
int CompareIgnoringCase(const char* left, const char* right) noexcept;

} // namespace Platform

#endif
