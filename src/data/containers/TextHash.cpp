#include "data/containers/TextHash.h"

#include <cstddef>
#include <cstring>
#include <ctime>

namespace TextHash {

namespace {

constexpr std::size_t kWordLength = sizeof(std::uint64_t);

std::uint64_t Rotated(std::uint64_t word, int bits)
{
    return (word << bits) | (word >> (64 - bits));
}

// Makes the capitals among eight characters small, all at once. To each character without its highest bit it adds what
// carries 'A' and above, and what carries those above 'Z', into that bit: where the two sums differ stands a capital.
// Bit 5 makes it small.
std::uint64_t Folded(std::uint64_t word)
{
    constexpr std::uint64_t kEach = 0x0101010101010101u;
    const std::uint64_t sevenBits = word & (kEach * 0x7F);
    const std::uint64_t fromA = sevenBits + kEach * (0x80 - 'A');
    const std::uint64_t beyondZ = sevenBits + kEach * (0x7F - 'Z');
    const std::uint64_t capitals = (fromA ^ beyondZ) & ~word & (kEach * 0x80);
    return word | (capitals >> 2);
}

std::uint64_t Hash(const char* text, const TSeed& seed, bool ignoringCase)
{
    std::uint64_t v0 = seed.low ^ 0x736f6d6570736575u;
    std::uint64_t v1 = seed.high ^ 0x646f72616e646f6du;
    std::uint64_t v2 = seed.low ^ 0x6c7967656e657261u;
    std::uint64_t v3 = seed.high ^ 0x7465646279746573u;
    const auto round = [&] {
        v0 += v1;
        v2 += v3;
        v1 = Rotated(v1, 13) ^ v0;
        v3 = Rotated(v3, 16) ^ v2;
        v0 = Rotated(v0, 32);
        v2 += v1;
        v0 += v3;
        v1 = Rotated(v1, 17) ^ v2;
        v3 = Rotated(v3, 21) ^ v0;
        v2 = Rotated(v2, 32);
    };
    const auto take = [&](const void* characters) {
        std::uint64_t word;
        std::memcpy(&word, characters, sizeof word);
        word = ignoringCase ? Folded(word) : word;
        v3 ^= word;
        round();
        v0 ^= word;
    };

    const std::size_t length = std::strlen(text);
    std::size_t position = 0;
    for (; length - position >= kWordLength; position += kWordLength) {
        take(text + position);
    }
    unsigned char rest[kWordLength] = {};
    std::memcpy(rest, text + position, length - position);
    rest[kWordLength - 1] = static_cast<unsigned char>(length & 0xFF); // folded too: equal texts are as long
    take(rest);
    v2 ^= 0xFF;
    round();
    round();
    round();
    return v0 ^ v1 ^ v2 ^ v3;
}

} // namespace

TSeed SeedFor(std::uintptr_t place) noexcept
{
    const char onStack = 0;
    const auto stack = reinterpret_cast<std::uintptr_t>(&onStack);
    const std::uint64_t time = static_cast<std::uint64_t>(std::time(nullptr));
    return {Rotated(std::uint64_t{place}, 7) ^ time, Rotated(stack, 29) ^ ~time};
}

std::uint64_t Of(const char* text, const TSeed& seed) noexcept
{
    return Hash(text, seed, false);
}

std::uint64_t OfIgnoringCase(const char* text, const TSeed& seed) noexcept
{
    return Hash(text, seed, true);
}

} // namespace TextHash
