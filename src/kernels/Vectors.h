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

} // namespace
} // namespace Kernels

#endif
