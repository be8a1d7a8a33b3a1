#include "compare/Rivals.h"

#include "platform/Compiler.h"

#include <immintrin.h>

// Lines of the cache, 32 bytes at a time. Whatever does not fill a last line is left out.
namespace Limits {

namespace {

constexpr std::size_t kLine = 32;
constexpr std::size_t kAhead = 1024;
constexpr std::size_t kTile = 65536;

__m256i Load(const std::uint16_t* pixels)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
}

template <bool isStreaming> void Store(std::uint16_t* pixels, __m256i vector)
{
    if (isStreaming) {
        _mm256_stream_si256(reinterpret_cast<__m256i*>(pixels), vector);
    } else {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), vector);
    }
}

// One or two inputs: without a second one its first again, which costs nothing.
template <bool isStreaming>
void CombineLine(std::uint16_t* output, const std::uint16_t* first, const std::uint16_t* second)
{
    const __m256i low = _mm256_or_si256(Load(first), Load(second));
    const __m256i high = _mm256_or_si256(Load(first + 16), Load(second + 16));
    Store<isStreaming>(output, low);
    Store<isStreaming>(output + 16, high);
}

template <bool isStreaming>
void CombineInStep(std::uint16_t* output, const std::uint16_t* first, const std::uint16_t* second, std::size_t count)
{
    const std::size_t half = count / (2 * kLine) * kLine;
    for (std::size_t i = 0; i < half; i += kLine) {
        CombineLine<isStreaming>(output + i, first + i, second + i);
        CombineLine<isStreaming>(output + half + i, first + half + i, second + half + i);
    }
}

void Combine(std::uint16_t* output, const std::uint16_t* first, const std::uint16_t* second, std::size_t count,
             TManner manner)
{
    // Stores past the caches want aligned addresses.
    const std::size_t begin = (64 - reinterpret_cast<std::uintptr_t>(output) % 64) % 64 / sizeof *output;
    const bool isAside = output != first && manner == TManner::PastTheCaches && count > begin;
    if (isAside) {
        CombineInStep<true>(output + begin, first + begin, second + begin, count - begin);
        _mm_sfence();
    } else if (manner == TManner::InStep || manner == TManner::PastTheCaches) {
        CombineInStep<false>(output, first, second, count);
    } else {
        for (std::size_t i = 0; i + kLine <= count; i += kLine) {
            if (manner == TManner::AskingAhead) {
                PLATFORM_PREFETCH(first + i + kAhead);
                PLATFORM_PREFETCH(second + i + kAhead);
            }
            CombineLine<false>(output + i, first + i, second + i);
        }
    }
}

__m256i ReadLine(__m256i seen, const std::uint16_t* pixels)
{
    return _mm256_or_si256(seen, _mm256_or_si256(Load(pixels), Load(pixels + 16)));
}

} // namespace

void ReadTwoWriteOne(std::uint16_t* output, const std::uint16_t* first, const std::uint16_t* second, std::size_t count,
                     TManner manner)
{
    Combine(output, first, second, count, manner);
}

void Copy(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, TManner manner)
{
    Combine(output, pixels, pixels, count, manner);
}

void CombineFrames(std::uint16_t* output, const std::uint16_t* const* frames, std::size_t frameCount, std::size_t count,
                   TManner manner)
{
    const bool isInStep = manner == TManner::InStep || manner == TManner::PastTheCaches;
    // From where the first frame has a line of the cache begin: most frames lie alike.
    const std::size_t begin = (64 - reinterpret_cast<std::uintptr_t>(frames[0]) % 64) % 64 / sizeof *output;
    for (std::size_t tile = begin; tile < count; tile += kTile) { // what is known of a tile stays in the cache
        const std::size_t length = (count - tile < kTile ? count - tile : kTile) / kLine * kLine;
        const std::size_t together = isInStep ? frameCount : 1;
        for (std::size_t frame = 0; frame < frameCount; frame += together) {
            for (std::size_t i = tile; i < tile + length; i += kLine) {
                __m256i low = frame == 0 ? _mm256_setzero_si256() : Load(output + i);
                __m256i high = frame == 0 ? _mm256_setzero_si256() : Load(output + i + 16);
                for (std::size_t k = frame; k < frame + together; ++k) {
                    if (manner == TManner::AskingAhead) {
                        PLATFORM_PREFETCH(frames[k] + i + kAhead);
                    }
                    low = _mm256_or_si256(low, Load(frames[k] + i));
                    high = _mm256_or_si256(high, Load(frames[k] + i + 16));
                }
                Store<false>(output + i, low);
                Store<false>(output + i + 16, high);
            }
        }
    }
}

std::uint64_t Read(const std::uint16_t* pixels, std::size_t count, TManner manner)
{
    const bool isInStep = manner == TManner::InStep || manner == TManner::PastTheCaches;
    const std::size_t part = isInStep ? count / (2 * kLine) * kLine : 0;
    __m256i seen = _mm256_setzero_si256();
    for (std::size_t i = 0; i + kLine <= (isInStep ? part : count); i += kLine) {
        if (manner == TManner::AskingAhead) {
            PLATFORM_PREFETCH(pixels + i + kAhead);
        }
        seen = ReadLine(seen, pixels + i);
        if (isInStep) {
            seen = ReadLine(seen, pixels + part + i);
        }
    }
    alignas(32) std::uint64_t all[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(all), seen);
    return all[0] + all[1] + all[2] + all[3];
}

} // namespace Limits
