// Takes values from the bytes of a fuzzer, from front to back, so that a changed byte changes little of what follows.
#ifndef FUZZ_FUZZINPUT_H
#define FUZZ_FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <string>

class TFuzzInput {
public:
    TFuzzInput(const std::uint8_t* bytes, std::size_t size) : next(bytes), left(size) {}

    bool IsEmpty() const { return left == 0; }

    // 0 when nothing is left; so is every other value then.
    std::uint8_t Byte()
    {
        if (left == 0) {
            return 0;
        }
        --left;
        return *next++;
    }

    // `limit` is at most 256.
    unsigned int Below(unsigned int limit) { return Byte() % limit; }
    bool Flag() { return (Byte() & 1) != 0; }

    std::uint32_t Number()
    {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value |= static_cast<std::uint32_t>(Byte()) << (8 * i);
        }
        return value;
    }

    // A length byte, then the text.
    std::string Text()
    {
        std::string text;
        for (unsigned int length = Byte(); length > 0 && left > 0; --length) {
            text.push_back(static_cast<char>(Byte()));
        }
        return text;
    }

private:
    const std::uint8_t* next;
    std::size_t left;
};

#endif
