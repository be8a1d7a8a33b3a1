#include "base/Sha256Lanes.h"

#include "base/Sha256Blocks.h"

// GCC for Windows does not align its stack for registers of this size.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(_WIN32)

#if !defined(__clang__) // GCC 12 finds that its own header leaves a register to chance, which is what that wants to do
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <immintrin.h>

namespace workbench {

namespace {

#define WITH_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl")))
#define INLINE_WITH_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl"), always_inline)) inline

constexpr int kXor = 0x96, kChoice = 0xca, kMajority = 0xe8; // what becomes of three bits

INLINE_WITH_AVX512 __m512i Sum(__m512i one, __m512i other)
{
    return _mm512_add_epi32(one, other);
}

// How the algorithm mixes the bits of a word.
template <int kFirst, int kSecond, int kThird> INLINE_WITH_AVX512 __m512i ThreeRotations(__m512i word)
{
    return _mm512_ternarylogic_epi32(_mm512_ror_epi32(word, kFirst), _mm512_ror_epi32(word, kSecond),
                                     _mm512_ror_epi32(word, kThird), kXor);
}
template <int kFirst, int kSecond, unsigned kShift> INLINE_WITH_AVX512 __m512i RotationsAndShift(__m512i word)
{
    return _mm512_ternarylogic_epi32(_mm512_ror_epi32(word, kFirst), _mm512_ror_epi32(word, kSecond),
                                     _mm512_srli_epi32(word, kShift), kXor);
}

// In the eight words that go round, `d` becomes the next e, and `h` the next a.
INLINE_WITH_AVX512 void Round(__m512i a, __m512i b, __m512i c, __m512i& d, __m512i e, __m512i f, __m512i g, __m512i& h,
                              __m512i message, int round)
{
    const __m512i constant = _mm512_set1_epi32(static_cast<int>(kSha256Constants[round]));
    const __m512i one = Sum(Sum(Sum(h, constant), message),
                            Sum(ThreeRotations<6, 11, 25>(e), _mm512_ternarylogic_epi32(e, f, g, kChoice)));
    d = Sum(d, one);
    h = Sum(one, Sum(ThreeRotations<2, 13, 22>(a), _mm512_ternarylogic_epi32(a, b, c, kMajority)));
}

INLINE_WITH_AVX512 void EightRounds(__m512i* s, const __m512i* w, int round)
{
    Round(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], w[0], round);
    Round(s[7], s[0], s[1], s[2], s[3], s[4], s[5], s[6], w[1], round + 1);
    Round(s[6], s[7], s[0], s[1], s[2], s[3], s[4], s[5], w[2], round + 2);
    Round(s[5], s[6], s[7], s[0], s[1], s[2], s[3], s[4], w[3], round + 3);
    Round(s[4], s[5], s[6], s[7], s[0], s[1], s[2], s[3], w[4], round + 4);
    Round(s[3], s[4], s[5], s[6], s[7], s[0], s[1], s[2], w[5], round + 5);
    Round(s[2], s[3], s[4], s[5], s[6], s[7], s[0], s[1], w[6], round + 6);
    Round(s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[0], w[7], round + 7);
}

// The message's word that lies 16 further on, in place of `used`.
INLINE_WITH_AVX512 void Next(__m512i& used, __m512i oneOn, __m512i nineOn, __m512i fourteenOn)
{
    used = Sum(Sum(used, nineOn), Sum(RotationsAndShift<7, 18, 3>(oneOn), RotationsAndShift<17, 19, 10>(fourteenOn)));
}

INLINE_WITH_AVX512 void NextSixteen(__m512i* w)
{
    Next(w[0], w[1], w[9], w[14]);
    Next(w[1], w[2], w[10], w[15]);
    Next(w[2], w[3], w[11], w[0]);
    Next(w[3], w[4], w[12], w[1]);
    Next(w[4], w[5], w[13], w[2]);
    Next(w[5], w[6], w[14], w[3]);
    Next(w[6], w[7], w[15], w[4]);
    Next(w[7], w[8], w[0], w[5]);
    Next(w[8], w[9], w[1], w[6]);
    Next(w[9], w[10], w[2], w[7]);
    Next(w[10], w[11], w[3], w[8]);
    Next(w[11], w[12], w[4], w[9]);
    Next(w[12], w[13], w[5], w[10]);
    Next(w[13], w[14], w[6], w[11]);
    Next(w[14], w[15], w[7], w[12]);
    Next(w[15], w[0], w[8], w[13]);
}

// Rows become columns: of what were the 16 words of one message each, register i then holds word i of all.
INLINE_WITH_AVX512 void Transpose(__m512i* rows)
{
    __m512i t[16];
    for (int i = 0; i < 16; i += 2) {
        t[i] = _mm512_unpacklo_epi32(rows[i], rows[i + 1]);
        t[i + 1] = _mm512_unpackhi_epi32(rows[i], rows[i + 1]);
    }
    for (int i = 0; i < 16; i += 4) {
        rows[i] = _mm512_unpacklo_epi64(t[i], t[i + 2]);
        rows[i + 1] = _mm512_unpackhi_epi64(t[i], t[i + 2]);
        rows[i + 2] = _mm512_unpacklo_epi64(t[i + 1], t[i + 3]);
        rows[i + 3] = _mm512_unpackhi_epi64(t[i + 1], t[i + 3]);
    }
    constexpr int kEven = 0x88, kOdd = 0xdd; // quarters of the two
    for (int i = 0; i < 4; ++i) {
        t[i] = _mm512_shuffle_i32x4(rows[i], rows[4 + i], kEven);
        t[4 + i] = _mm512_shuffle_i32x4(rows[i], rows[4 + i], kOdd);
        t[8 + i] = _mm512_shuffle_i32x4(rows[8 + i], rows[12 + i], kEven);
        t[12 + i] = _mm512_shuffle_i32x4(rows[8 + i], rows[12 + i], kOdd);
    }
    for (int i = 0; i < 4; ++i) {
        rows[i] = _mm512_shuffle_i32x4(t[i], t[8 + i], kEven);
        rows[4 + i] = _mm512_shuffle_i32x4(t[4 + i], t[12 + i], kEven);
        rows[8 + i] = _mm512_shuffle_i32x4(t[i], t[8 + i], kOdd);
        rows[12 + i] = _mm512_shuffle_i32x4(t[4 + i], t[12 + i], kOdd);
    }
}

WITH_AVX512 void LaneBlocks(std::uint32_t* const* states, const unsigned char* const* blocks, std::size_t count)
{
    const __m512i reversed = _mm512_broadcast_i32x4(_mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3));
    alignas(64) std::uint32_t words[8][kSha256Lanes];
    for (std::size_t lane = 0; lane < kSha256Lanes; ++lane) {
        for (int word = 0; word < 8; ++word)
            words[word][lane] = states[lane][word];
    }
    __m512i state[8];
    for (int word = 0; word < 8; ++word)
        state[word] = _mm512_load_si512(words[word]);
    for (std::size_t block = 0; block < count; ++block) {
        __m512i w[16], s[8];
        for (int lane = 0; lane < 16; ++lane)
            w[lane] = _mm512_shuffle_epi8(_mm512_loadu_si512(blocks[lane] + 64 * block), reversed);
        Transpose(w);
        for (int word = 0; word < 8; ++word)
            s[word] = state[word];
        EightRounds(s, w, 0);
        EightRounds(s, w + 8, 8);
        for (int round = 16; round < 64; round += 16) {
            NextSixteen(w);
            EightRounds(s, w, round);
            EightRounds(s, w + 8, round + 8);
        }
        for (int word = 0; word < 8; ++word)
            state[word] = Sum(state[word], s[word]);
    }
    for (int word = 0; word < 8; ++word)
        _mm512_store_si512(words[word], state[word]);
    for (std::size_t lane = 0; lane < kSha256Lanes; ++lane) {
        for (int word = 0; word < 8; ++word)
            states[lane][word] = words[word][lane];
    }
}

} // namespace

TSha256LaneBlocks Sha256LaneBlocksOfProcessor()
{
    static const bool hasThem = __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
                                __builtin_cpu_supports("avx512vl") != 0;
    return hasThem ? LaneBlocks : nullptr;
}

} // namespace workbench

#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#else

namespace workbench {

TSha256LaneBlocks Sha256LaneBlocksOfProcessor()
{
    return nullptr;
}

} // namespace workbench

#endif
