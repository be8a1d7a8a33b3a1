// The text value of the offline store.
#ifndef OFFLINE_TDUALSTRING_H
#define OFFLINE_TDUALSTRING_H

#include <string>
#include <vector>

// A narrow text with a wide twin. The twin is empty until Wide() makes it anew from the narrow text; copies take both.
// Equality and concatenation look at the narrow texts alone, byte by byte.
class TDualString {
public:
    TDualString() = default;
    TDualString(const char* text) : narrow(text) {} // NOLINT: implicit, so that literals can be passed
    TDualString(const std::string& text) : narrow(text) {}

    // Each wide character gives its low byte; a character whose low byte is 0 ends the text.
    static TDualString FromWide(const char16_t* text);

    const std::string& Narrow() const noexcept { return narrow; }
    const char* Text() const noexcept { return narrow.c_str(); }
    bool IsEmpty() const noexcept { return narrow.empty(); }

    // Remakes the twin and gives it: one wide character a byte, sign-extended, so that only 7-bit text converts
    // faithfully (byte 0xE9 becomes 0xFFE9).
    const std::u16string& Wide();

    friend bool operator==(const TDualString& left, const TDualString& right) noexcept
    {
        return left.narrow == right.narrow;
    }
    friend bool operator!=(const TDualString& left, const TDualString& right) noexcept { return !(left == right); }
    friend TDualString operator+(const TDualString& left, const TDualString& right)
    {
        return TDualString(left.narrow + right.narrow);
    }

private:
    std::string narrow;
    std::u16string wide;
};

using TTextList = std::vector<TDualString>;

#endif
