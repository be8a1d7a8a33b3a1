#include "boundary/TZRException.h"

#include "platform/Text.h"

#include <cstdarg>

TZRException::TZRException(const char* format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    Platform::FormatBounded(text, sizeof text, format, arguments);
    va_end(arguments);
}

TZRException::~TZRException() = default;
