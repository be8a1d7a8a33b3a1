// SHA-256 by the instructions that processors have for it.
#include "base/Sha256Blocks.h"

#if defined(__x86_64__) && defined(__GNUC__)

#include <cpuid.h>
#include <immintrin.h>

namespace workbench {

namespace {

#define WITH_SHA_INSTRUCTIONS __attribute__((target("sha,sse4.1,ssse3")))

bool ProcessorHasThem()
{
    constexpr unsigned kSsse3 = 1u << 9, kSse41 = 1u << 19; // leaf 1, c
    constexpr unsigned kSha = 1u << 29;                     // leaf 7, b
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & kSsse3) == 0 || (c & kSse41) == 0)
        return false;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & kSha) != 0;
}

// The eight words as the instructions want them, the first one highest.
struct TWords {
    __m128i abef, cdgh;
};

WITH_SHA_INSTRUCTIONS inline __m128i ReadWords(const unsigned char* bytes)
{
    const __m128i reversed = _mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3);
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), reversed);
}

// Four rounds, with four words of the message.
WITH_SHA_INSTRUCTIONS inline void FourRounds(TWords& words, __m128i message, int round)
{
    const __m128i constants = _mm_loadu_si128(reinterpret_cast<const __m128i*>(kSha256Constants + round));
    const __m128i sum = _mm_add_epi32(message, constants);
    words.cdgh = _mm_sha256rnds2_epu32(words.cdgh, words.abef, sum); // now the former is what the latter was
    words.abef = _mm_sha256rnds2_epu32(words.abef, words.cdgh, _mm_shuffle_epi32(sum, 0x0e));
}

// The same, and the message's next four words in place of those, which lie 16 words further on. The others follow one
// another.
WITH_SHA_INSTRUCTIONS inline void FourRoundsAndOn(TWords& words, __m128i& used, __m128i second, __m128i third,
                                                  __m128i fourth, int round)
{
    FourRounds(words, used, round);
    const __m128i sevenBack = _mm_alignr_epi8(fourth, third, 4);
    used = _mm_sha256msg2_epu32(_mm_add_epi32(_mm_sha256msg1_epu32(used, second), sevenBack), fourth);
}

WITH_SHA_INSTRUCTIONS inline TWords FromState(const std::uint32_t* state)
{
    const auto word = [state](int index) { return static_cast<int>(state[index]); };
    return {_mm_set_epi32(word(0), word(1), word(4), word(5)), _mm_set_epi32(word(2), word(3), word(6), word(7))};
}

WITH_SHA_INSTRUCTIONS inline void ToState(const TWords& words, std::uint32_t* state)
{
    alignas(16) std::uint32_t first[4], second[4]; // lowest first
    _mm_store_si128(reinterpret_cast<__m128i*>(first), words.abef);
    _mm_store_si128(reinterpret_cast<__m128i*>(second), words.cdgh);
    const std::uint32_t after[8] = {first[3], first[2], second[3], second[2], first[1], first[0], second[1], second[0]};
    for (int i = 0; i < 8; ++i)
        state[i] = after[i];
}

// The words of one block, and what becomes of them.
struct TMessage {
    __m128i w0, w1, w2, w3;
};

WITH_SHA_INSTRUCTIONS inline TMessage ReadBlock(const unsigned char* block)
{
    return {ReadWords(block), ReadWords(block + 16), ReadWords(block + 32), ReadWords(block + 48)};
}

WITH_SHA_INSTRUCTIONS inline void Plus(TWords& words, const TWords& before)
{
    words.abef = _mm_add_epi32(words.abef, before.abef);
    words.cdgh = _mm_add_epi32(words.cdgh, before.cdgh);
}

WITH_SHA_INSTRUCTIONS void Blocks(std::uint32_t* state, const unsigned char* blocks, std::size_t count)
{
    TWords words = FromState(state);
    for (; count > 0; --count, blocks += 64) {
        const TWords before = words;
        TMessage m = ReadBlock(blocks);
        for (int round = 0; round < 48; round += 16) {
            FourRoundsAndOn(words, m.w0, m.w1, m.w2, m.w3, round);
            FourRoundsAndOn(words, m.w1, m.w2, m.w3, m.w0, round + 4);
            FourRoundsAndOn(words, m.w2, m.w3, m.w0, m.w1, round + 8);
            FourRoundsAndOn(words, m.w3, m.w0, m.w1, m.w2, round + 12);
        }
        FourRounds(words, m.w0, 48);
        FourRounds(words, m.w1, 52);
        FourRounds(words, m.w2, 56);
        FourRounds(words, m.w3, 60);
        Plus(words, before);
    }
    ToState(words, state);
}

WITH_SHA_INSTRUCTIONS void PairBlocks(std::uint32_t* state, const unsigned char* blocks, std::uint32_t* otherState,
                                      const unsigned char* otherBlocks, std::size_t count)
{
    TWords words = FromState(state), others = FromState(otherState);
    for (; count > 0; --count, blocks += 64, otherBlocks += 64) {
        const TWords before = words, othersBefore = others;
        TMessage m = ReadBlock(blocks), o = ReadBlock(otherBlocks);
        for (int round = 0; round < 48; round += 16) {
            FourRoundsAndOn(words, m.w0, m.w1, m.w2, m.w3, round);
            FourRoundsAndOn(others, o.w0, o.w1, o.w2, o.w3, round);
            FourRoundsAndOn(words, m.w1, m.w2, m.w3, m.w0, round + 4);
            FourRoundsAndOn(others, o.w1, o.w2, o.w3, o.w0, round + 4);
            FourRoundsAndOn(words, m.w2, m.w3, m.w0, m.w1, round + 8);
            FourRoundsAndOn(others, o.w2, o.w3, o.w0, o.w1, round + 8);
            FourRoundsAndOn(words, m.w3, m.w0, m.w1, m.w2, round + 12);
            FourRoundsAndOn(others, o.w3, o.w0, o.w1, o.w2, round + 12);
        }
        FourRounds(words, m.w0, 48);
        FourRounds(others, o.w0, 48);
        FourRounds(words, m.w1, 52);
        FourRounds(others, o.w1, 52);
        FourRounds(words, m.w2, 56);
        FourRounds(others, o.w2, 56);
        FourRounds(words, m.w3, 60);
        FourRounds(others, o.w3, 60);
        Plus(words, before);
        Plus(others, othersBefore);
    }
    ToState(words, state);
    ToState(others, otherState);
}

} // namespace

TSha256Blocks Sha256BlocksOfProcessor()
{
    static const bool hasThem = ProcessorHasThem();
    return hasThem ? Blocks : nullptr;
}

TSha256PairBlocks Sha256PairBlocksOfProcessor()
{
    return Sha256BlocksOfProcessor() != nullptr ? PairBlocks : nullptr;
}

} // namespace workbench

#else

namespace workbench {

TSha256Blocks Sha256BlocksOfProcessor()
{
    return nullptr;
}

TSha256PairBlocks Sha256PairBlocksOfProcessor()
{
    return nullptr;
}

} // namespace workbench

#endif
