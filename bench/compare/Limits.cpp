#include "compare/Rivals.h"

#include "platform/Compiler.h"

// Blocks of one line of the cache with a request ahead: without it, reading from memory is slower than it need be.
namespace Limits {

namespace {
constexpr std::size_t kBlock = 32;
constexpr std::size_t kAhead = 1024;
} // namespace

void ReadTwoWriteFirst(std::uint16_t* PLATFORM_RESTRICT first, const std::uint16_t* PLATFORM_RESTRICT second,
                       std::size_t count)
{
    for (std::size_t i = 0; i + kBlock <= count; i += kBlock) {
        PLATFORM_PREFETCH(first + i + kAhead);
        PLATFORM_PREFETCH(second + i + kAhead);
        for (std::size_t j = i; j < i + kBlock; ++j) {
            first[j] = static_cast<std::uint16_t>(first[j] ^ second[j]);
        }
    }
}

void ReadTwoWriteThird(std::uint16_t* PLATFORM_RESTRICT third, const std::uint16_t* PLATFORM_RESTRICT first,
                       const std::uint16_t* PLATFORM_RESTRICT second, std::size_t count)
{
    for (std::size_t i = 0; i + kBlock <= count; i += kBlock) {
        PLATFORM_PREFETCH(first + i + kAhead);
        PLATFORM_PREFETCH(second + i + kAhead);
        for (std::size_t j = i; j < i + kBlock; ++j) {
            third[j] = static_cast<std::uint16_t>(first[j] ^ second[j]);
        }
    }
}

void Copy(std::uint16_t* PLATFORM_RESTRICT output, const std::uint16_t* PLATFORM_RESTRICT pixels, std::size_t count)
{
    for (std::size_t i = 0; i + kBlock <= count; i += kBlock) {
        PLATFORM_PREFETCH(pixels + i + kAhead);
        for (std::size_t j = i; j < i + kBlock; ++j) {
            output[j] = static_cast<std::uint16_t>(pixels[j] ^ 1);
        }
    }
}

std::uint64_t ReadFrames(const std::uint16_t* const* frames, std::size_t frameCount, std::size_t count)
{
    std::uint16_t lanes[kBlock] = {};
    for (std::size_t frame = 0; frame < frameCount; ++frame) {
        const std::uint16_t* const pixels = frames[frame];
        for (std::size_t i = 0; i + kBlock <= count; i += kBlock) {
            PLATFORM_PREFETCH(pixels + i + kAhead);
            for (std::size_t j = 0; j < kBlock; ++j) {
                lanes[j] = static_cast<std::uint16_t>(lanes[j] ^ pixels[i + j]);
            }
        }
    }
    std::uint64_t all = 0;
    for (const std::uint16_t lane : lanes) {
        all += lane;
    }
    return all;
}

void ReadWriteInPlace(std::uint16_t* image, std::size_t count)
{
    for (std::size_t i = 0; i + kBlock <= count; i += kBlock) {
        PLATFORM_PREFETCH(image + i + kAhead);
        for (std::size_t j = i; j < i + kBlock; ++j) {
            image[j] = static_cast<std::uint16_t>(image[j] ^ 1);
        }
    }
}

} // namespace Limits
