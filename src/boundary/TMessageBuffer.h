// The fixed text buffers in which failures are described.
#ifndef BOUNDARY_TMESSAGEBUFFER_H
#define BOUNDARY_TMESSAGEBUFFER_H

#include "platform/Text.h"

#include <cstdarg>
#include <cstddef>
#include <cstring>

// A text of at most `maximumLength` characters, empty at first, never moved. Constant-initialised, so that one may
// stand at namespace scope. Takes no lock and no memory.
template <std::size_t maximumLength> class TMessageBuffer {
public:
    constexpr TMessageBuffer() noexcept : text{} {}
    TMessageBuffer(const TMessageBuffer&) = delete;
    TMessageBuffer& operator=(const TMessageBuffer&) = delete;

    // Replaces the text; one that is too long is cut. An argument may point into this very buffer, since a host may
    // hand a text it got from here back in: the new text is therefore finished elsewhere first.
    void Format(const char* format, ...) noexcept
    {
        char formatted[maximumLength + 1];
        std::va_list arguments;
        va_start(arguments, format);
        Platform::FormatBounded(formatted, sizeof formatted, format, arguments);
        va_end(arguments);
        std::memcpy(text, formatted, std::strlen(formatted) + 1);
    }

    // Fills the whole buffer with zeros.
    void Clear() noexcept { std::memset(text, 0, sizeof text); }

    bool IsEmpty() const noexcept { return text[0] == '\0'; }
    const char* Text() const noexcept { return text; }

private:
    char text[maximumLength + 1];
};

using TObjectMessageBuffer = TMessageBuffer<256>;
using TLibraryMessageBuffer = TMessageBuffer<512>;

#endif
