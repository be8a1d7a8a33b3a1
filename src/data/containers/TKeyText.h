// The text of a key.
#ifndef DATA_CONTAINERS_TKEYTEXT_H
#define DATA_CONTAINERS_TKEYTEXT_H

#include <cstddef>
#include <memory>

// A text that lies within the object up to kShortLength characters, as nearly all keys do: looking at a key then costs
// no second way through memory, and in a list of many that way is most of what anything costs.
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
