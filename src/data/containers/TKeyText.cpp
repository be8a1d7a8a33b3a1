#include "data/containers/TKeyText.h"

#include <cstring>
#include <utility>

TKeyText::TKeyText(const char* text)
{
    Assign(text, std::strlen(text));
}

TKeyText::TKeyText(TKeyText&& other) noexcept : longText(std::move(other.longText))
{
    std::memcpy(shortText, other.shortText, sizeof shortText);
    other.shortText[0] = '\0';
}

void TKeyText::Assign(const char* text, std::size_t length)
{
    if (length <= kShortLength) {
        std::memmove(shortText, text, length);
        shortText[length] = '\0';
        longText.reset();
    } else if (longText != nullptr && std::strlen(longText.get()) == length) {
        std::memmove(longText.get(), text, length);
    } else {
        std::unique_ptr<char[]> newText(new char[length + 1]);
        std::memcpy(newText.get(), text, length);
        newText[length] = '\0';
        longText = std::move(newText);
    }
}
