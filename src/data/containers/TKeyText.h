// The text of a key.
#ifndef DATA_CONTAINERS_TKEYTEXT_H
#define DATA_CONTAINERS_TKEYTEXT_H

#include <cstddef>
#include <memory>

// Holds up to kShortLength characters, which is enough for nearly all keys, within the object: comparing a key then
// reads no second block of memory. In a long list such cache misses are most of what an operation costs.
class TKeyText {
public:
    static constexpr std::size_t kShortLength = 39;

    TKeyText() noexcept = default;
    // Throws std::bad_alloc.
    explicit TKeyText(const char* text);
    TKeyText(TKeyText&& other) noexcept; // the other is empty then

    // Takes `length` characters, which hold no terminator; they may be of this very text. Throws std::bad_alloc,
    // unchanged then. A text as long as the one before needs no memory and stays where it is.
    void Assign(const char* text, std::size_t length);

    const char* Text() const noexcept { return longText != nullptr ? longText.get() : shortText; }

private:
    char shortText[kShortLength + 1] = {};
    std::unique_ptr<char[]> longText; // null: the text is the short one
};

#endif
