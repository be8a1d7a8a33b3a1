#include "data/containers/TextHash.h"

#include <cstddef>
#include <cstring>
#include <ctime>

namespace TextHash {

namespace {

std::uint64_t Rotated(std::uint64_t word, int bits)
{
    return (word << bits) | (word >> (64 - bits));
}

class TState {
public:
    explicit TState(const TSeed& seed)
        : v0(seed.low ^ 0x736f6d6570736575u), v1(seed.high ^ 0x646f72616e646f6du), v2(seed.low ^ 0x6c7967656e657261u),
          v3(seed.high ^ 0x7465646279746573u)
    {}

    void Take(std::uint64_t word)
    {
        v3 ^= word;
        Round();
        v0 ^= word;
    }

    std::uint64_t Finish()
    {
        v2 ^= 0xFF;
        Round();
        Round();
        Round();
        return v0 ^ v1 ^ v2 ^ v3;
    }

private:
    void Round()
    {
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
    }

    std::uint64_t v0;
    std::uint64_t v1;
    std::uint64_t v2;
    std::uint64_t v3;
};

std::uint64_t Unchanged(std::uint64_t word)
{
    return word;
}

// Eight characters at once: adding to each, without its highest bit, what lifts a letter (and all behind it) over that
// bit tells which lie from A to Z; bit 5 makes those small.
std::uint64_t Folded(std::uint64_t word)
{
    constexpr std::uint64_t kEach = 0x0101010101010101u;
    const std::uint64_t sevenBits = word & (kEach * 0x7F);
    const std::uint64_t fromA = sevenBits + kEach * (0x80 - 'A');
    const std::uint64_t beyondZ = sevenBits + kEach * (0x7F - 'Z');
    const std::uint64_t capitals = (fromA ^ beyondZ) & ~word & (kEach * 0x80);
    return word | (capitals >> 2);
}

template <typename TChange> std::uint64_t Hash(const char* text, const TSeed& seed, TChange change)
{
    TState state(seed);
    const std::size_t length = std::strlen(text);
    std::uint64_t word;
    std::size_t position = 0;
    for (; length - position >= sizeof word; position += sizeof word) {
        std::memcpy(&word, text + position, sizeof word);
        state.Take(change(word));
    }
    unsigned char rest[sizeof word] = {};
    std::memcpy(rest, text + position, length - position);
    rest[sizeof word - 1] = static_cast<unsigned char>(length & 0xFF);
    std::memcpy(&word, rest, sizeof word);
    state.Take(change(word)); // the length may look like a letter; texts that are equal are as long
    return state.Finish();
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
    return Hash(text, seed, Unchanged);
}

std::uint64_t OfIgnoringCase(const char* text, const TSeed& seed) noexcept
{
    return Hash(text, seed, Folded);
}

} // namespace TextHash
