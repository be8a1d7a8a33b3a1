#include "compare/Rivals.h"

#include "platform/Compiler.h"

#include <immintrin.h>

// Lines of the cache, 32 bytes at a time. Whatever does not fill a last line is left out.
namespace Limits {

namespace {

constexpr std::size_t kLine = 32;
constexpr std::size_t kAhead = 1024;

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

std::uint64_t ReadFrames(const std::uint16_t* const* frames, std::size_t frameCount, std::size_t count, TManner manner)
{
    constexpr std::size_t kTogether = 5;
    const bool isInStep = manner == TManner::InStep || manner == TManner::PastTheCaches;
    const std::size_t together = isInStep && frameCount % kTogether == 0 ? kTogether : 1;
    const std::size_t parts = isInStep && frameCount == 1 ? 2 : 1; // a single image in halves
    const std::size_t length = count / (parts * kLine) * kLine;
    __m256i seen = _mm256_setzero_si256();
    for (std::size_t frame = 0; frame < frameCount; frame += together) {
        for (std::size_t i = 0; i < length; i += kLine) {
            if (manner == TManner::AskingAhead) {
                PLATFORM_PREFETCH(frames[frame] + i + kAhead);
            }
            if (together == kTogether) {
                for (std::size_t k = 0; k < kTogether; ++k) {
                    seen = ReadLine(seen, frames[frame + k] + i);
                }
            } else {
                seen = ReadLine(seen, frames[frame] + i);
                if (parts == 2) {
                    seen = ReadLine(seen, frames[frame] + length + i);
                }
            }
        }
    }
    alignas(32) std::uint64_t all[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(all), seen);
    return all[0] + all[1] + all[2] + all[3];
}

} // namespace Limits
