// The processor's own vectors, for the loops that compilers do not turn into the instruction they live on: a
// subtraction that stops at 0, and products of pairs that are added up. Included by each unit that is compiled for an
// instruction set; local to that unit.
//
// The vectors of pixels have at most 32 bytes, also where the processor has longer ones: with those, images that lie
// across the lines of the cache are subtracted more slowly (see docs/performance.md).
#ifndef KERNELS_VECTORS_H
#define KERNELS_VECTORS_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#if defined(__SSE2__) || defined(_M_X64)
#include <immintrin.h>
#elif defined(__ARM_NEON)
#include <arm_neon.h>
#endif

namespace Kernels {
namespace {

// Pixels in a line of the cache: what one request asks for. Loops over lines have inner loops of exactly this length,
// for compilers unroll those, where a length that varies costs as much as the work.
constexpr size_t kLine = 32;

#if defined(__AVX2__)

using TPixels = __m256i;

inline TPixels Load(const uint16_t* pixels)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
}

inline void Store(uint16_t* pixels, TPixels vector)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), vector);
}

inline TPixels SubtractDownToZero(TPixels from, TPixels what)
{
    return _mm256_subs_epu16(from, what);
}

#elif defined(__SSE2__) || defined(_M_X64)

using TPixels = __m128i;

inline TPixels Load(const uint16_t* pixels)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
}

inline void Store(uint16_t* pixels, TPixels vector)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), vector);
}

inline TPixels SubtractDownToZero(TPixels from, TPixels what)
{
    return _mm_subs_epu16(from, what);
}

#elif defined(__ARM_NEON)

using TPixels = uint16x8_t;

inline TPixels Load(const uint16_t* pixels)
{
    return vld1q_u16(pixels);
}

inline void Store(uint16_t* pixels, TPixels vector)
{
    vst1q_u16(pixels, vector);
}

inline TPixels SubtractDownToZero(TPixels from, TPixels what)
{
    return vqsubq_u16(from, what);
}

#else

using TPixels = uint16_t;

inline TPixels Load(const uint16_t* pixels)
{
    return *pixels;
}

inline void Store(uint16_t* pixels, TPixels vector)
{
    *pixels = vector;
}

inline TPixels SubtractDownToZero(TPixels from, TPixels what)
{
    const TPixels larger = from > what ? from : what;
    return static_cast<TPixels>(larger - what);
}

#endif

constexpr size_t kVectorLength = sizeof(TPixels) / sizeof(uint16_t);
constexpr size_t kVectorsOfLine = kLine / kVectorLength;

// A line past the caches, to an address that is a multiple of 64; StreamEnd makes what was stored so visible to other
// threads like every other store.
#if defined(__AVX512F__)

inline void StreamLine(uint16_t* pixels, const TPixels* line)
{
    // The masked form with nothing masked: GCC 12 takes the other one for a use of an uninitialised vector.
    const __m512i whole = _mm512_maskz_inserti64x4(0xFF, _mm512_castsi256_si512(line[0]), line[1], 1);
    _mm512_stream_si512(reinterpret_cast<__m512i*>(pixels), whole);
}

#elif defined(__AVX2__)

inline void StreamLine(uint16_t* pixels, const TPixels* line)
{
    for (size_t k = 0; k < kVectorsOfLine; ++k) {
        _mm256_stream_si256(reinterpret_cast<__m256i*>(pixels + k * kVectorLength), line[k]);
    }
}

#elif defined(__SSE2__) || defined(_M_X64)

inline void StreamLine(uint16_t* pixels, const TPixels* line)
{
    for (size_t k = 0; k < kVectorsOfLine; ++k) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(pixels + k * kVectorLength), line[k]);
    }
}

#else

inline void StreamLine(uint16_t* pixels, const TPixels* line)
{
    for (size_t k = 0; k < kVectorsOfLine; ++k) {
        Store(pixels + k * kVectorLength, line[k]);
    }
}

#endif

inline void StreamEnd()
{
#if defined(__SSE2__) || defined(_M_X64)
    _mm_sfence();
#endif
}

// Vectors as long as the processor has them, for sums. As 32-bit words they hold two pixels each: UpperHalves gives the
// second ones, AddWords adds. As signed 16-bit numbers, which is what can be compared and added up in pairs everywhere,
// they hold pixels shifted by -32768 (Shifted); AddPairs adds neighbours to 32-bit sums.
#if defined(__AVX512BW__)

using TWide = __m512i;

inline TWide LoadWide(const void* address)
{
    return _mm512_loadu_si512(address);
}

inline void StoreWide(void* address, TWide vector)
{
    _mm512_storeu_si512(address, vector);
}

inline TWide AddWords(TWide a, TWide b)
{
    return _mm512_add_epi32(a, b);
}

inline TWide UpperHalves(TWide words)
{
    return _mm512_maskz_srli_epi32(0xFFFF, words, 16); // as in StreamLine
}

inline TWide All(int16_t value)
{
    return _mm512_set1_epi16(value);
}

inline TWide Shifted(TWide pixels)
{
    return _mm512_xor_si512(pixels, _mm512_set1_epi16(-32768));
}

inline TWide LeastOfEach(TWide a, TWide b)
{
    return _mm512_min_epi16(a, b);
}

inline TWide GreatestOfEach(TWide a, TWide b)
{
    return _mm512_max_epi16(a, b);
}

inline TWide AddPairs(TWide sums, TWide values)
{
    return _mm512_add_epi32(sums, _mm512_madd_epi16(values, _mm512_set1_epi16(1)));
}

#elif defined(__AVX2__)

using TWide = __m256i;

inline TWide LoadWide(const void* address)
{
    return _mm256_loadu_si256(static_cast<const __m256i*>(address));
}

inline void StoreWide(void* address, TWide vector)
{
    _mm256_storeu_si256(static_cast<__m256i*>(address), vector);
}

inline TWide AddWords(TWide a, TWide b)
{
    return _mm256_add_epi32(a, b);
}

inline TWide UpperHalves(TWide words)
{
    return _mm256_srli_epi32(words, 16);
}

inline TWide All(int16_t value)
{
    return _mm256_set1_epi16(value);
}

inline TWide Shifted(TWide pixels)
{
    return _mm256_xor_si256(pixels, _mm256_set1_epi16(-32768));
}

inline TWide LeastOfEach(TWide a, TWide b)
{
    return _mm256_min_epi16(a, b);
}

inline TWide GreatestOfEach(TWide a, TWide b)
{
    return _mm256_max_epi16(a, b);
}

inline TWide AddPairs(TWide sums, TWide values)
{
    return _mm256_add_epi32(sums, _mm256_madd_epi16(values, _mm256_set1_epi16(1)));
}

#elif defined(__SSE2__) || defined(_M_X64)

using TWide = __m128i;

inline TWide LoadWide(const void* address)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(address));
}

inline void StoreWide(void* address, TWide vector)
{
    _mm_storeu_si128(static_cast<__m128i*>(address), vector);
}

inline TWide AddWords(TWide a, TWide b)
{
    return _mm_add_epi32(a, b);
}

inline TWide UpperHalves(TWide words)
{
    return _mm_srli_epi32(words, 16);
}

inline TWide All(int16_t value)
{
    return _mm_set1_epi16(value);
}

inline TWide Shifted(TWide pixels)
{
    return _mm_xor_si128(pixels, _mm_set1_epi16(-32768));
}

inline TWide LeastOfEach(TWide a, TWide b)
{
    return _mm_min_epi16(a, b);
}

inline TWide GreatestOfEach(TWide a, TWide b)
{
    return _mm_max_epi16(a, b);
}

inline TWide AddPairs(TWide sums, TWide values)
{
    return _mm_add_epi32(sums, _mm_madd_epi16(values, _mm_set1_epi16(1)));
}

#else
#define KERNELS_PLAIN_STATISTICS // compilers see through the loop over single pixels there

#if defined(__ARM_NEON)

using TWide = uint32x4_t;

inline TWide LoadWide(const void* address)
{
    return vreinterpretq_u32_u8(vld1q_u8(static_cast<const uint8_t*>(address)));
}

inline void StoreWide(void* address, TWide vector)
{
    vst1q_u8(static_cast<uint8_t*>(address), vreinterpretq_u8_u32(vector));
}

inline TWide AddWords(TWide a, TWide b)
{
    return vaddq_u32(a, b);
}

inline TWide UpperHalves(TWide words)
{
    return vshrq_n_u32(words, 16);
}

#else

using TWide = uint32_t;

inline TWide LoadWide(const void* address)
{
    TWide word;
    memcpy(&word, address, sizeof word);
    return word;
}

inline void StoreWide(void* address, TWide vector)
{
    memcpy(address, &vector, sizeof vector);
}

inline TWide AddWords(TWide a, TWide b)
{
    return a + b;
}

inline TWide UpperHalves(TWide words)
{
    return words >> 16;
}

#endif
#endif

constexpr size_t kWideLength = sizeof(TWide) / sizeof(uint16_t); // in pixels
constexpr size_t kWidesOfLine = kLine / kWideLength;

} // namespace
} // namespace Kernels

#endif
