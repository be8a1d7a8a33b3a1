// Stores that go past the caches. Only macros: units that are compiled for one instruction set include this.
#ifndef PLATFORM_STREAMINGSTORES_H
#define PLATFORM_STREAMINGSTORES_H

// PLATFORM_STREAM_LINE copies 64 bytes to an address that is a multiple of 64, past the caches where the processor can;
// after the last one PLATFORM_STREAM_END makes them visible to other threads like every other store.
#if defined(__SSE2__) || defined(_M_X64)
#include <immintrin.h>

#if defined(__AVX512F__)
#define PLATFORM_STREAM_LINE(to, from)                                                                                 \
    _mm512_stream_si512(reinterpret_cast<__m512i*>(to), _mm512_loadu_si512(static_cast<const void*>(from)))
#else
#define PLATFORM_STREAM_QUARTER(to, from, quarter)                                                                     \
    _mm_stream_si128(reinterpret_cast<__m128i*>(to) + (quarter),                                                       \
                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(from) + (quarter)))
#define PLATFORM_STREAM_LINE(to, from)                                                                                 \
    (PLATFORM_STREAM_QUARTER(to, from, 0), PLATFORM_STREAM_QUARTER(to, from, 1), PLATFORM_STREAM_QUARTER(to, from, 2), \
     PLATFORM_STREAM_QUARTER(to, from, 3))
#endif
#define PLATFORM_STREAM_END() _mm_sfence()

#else
#include <string.h>

#define PLATFORM_STREAM_LINE(to, from) static_cast<void>(memcpy(to, from, 64))
#define PLATFORM_STREAM_END() static_cast<void>(0)
#endif

#endif
