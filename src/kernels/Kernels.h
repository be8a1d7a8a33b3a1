// The pixel loops: pure arithmetic on arrays. They know no object, no result code and allocate nothing.
//
// Lengths are counted in pixels and may be 0; buffers need no alignment beyond that of a pixel. Each is compiled for
// several instruction sets and the best that the processor has is used; all give the bits of the plain definitions in
// PlainKernels.h, on every system and in every rounding mode.
#ifndef KERNELS_KERNELS_H
#define KERNELS_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace Kernels {

// image[i] = max(0, image[i] - background[i]). The two do not overlap.
void SubtractInPlace(std::uint16_t* image, const std::uint16_t* background, std::size_t count) noexcept;

// output[i] = max(0, image[i] - background[i]). `output` overlaps neither of the others.
void SubtractInto(std::uint16_t* output, const std::uint16_t* image, const std::uint16_t* background,
                  std::size_t count) noexcept;

// output[i] = pixels[i] * factor in single precision, rounded half up and clamped to 0 ... 65535: at or above 65535
// (also infinity) gives 65535, negative and NaN give 0. `output` does not overlap `pixels`.
void Scale(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, float factor) noexcept;

// Number of floats that Average wants as scratch.
std::size_t AverageScratchLength(std::size_t pixelCount) noexcept;

// output[i] = the mean of frames[0][i] ... frames[frameCount - 1][i], rounded half up: a single-precision sum in the
// order of the frames (beyond 2^24 it loses low bits, and that is the arithmetic wanted), divided in single precision;
// the low 16 bits are kept. frameCount is at least 1.
void Average(std::uint16_t* output, const std::uint16_t* const* frames, std::size_t frameCount, std::size_t pixelCount,
             float* scratch) noexcept;

// Number of pixels that Median3x3 wants as scratch.
std::size_t MedianScratchLength(std::size_t width) noexcept;

// Replaces every pixel by the median of its 3 x 3 neighbourhood, in place.
//
// Left of the image stands the pixel at column 1 of the row (a mirror), or with width 1 the pixel of the next row, in
// the last row its own. Right of it stands the last pixel of the row (a replica: the two sides differ deliberately).
// Above and below stand the first and the last row, with their left and right as said.
void Median3x3(std::uint16_t* image, std::size_t width, std::size_t height, std::uint16_t* scratch) noexcept;

struct TStatistics {
    std::uint16_t minimum;
    std::uint16_t maximum;
    std::uint16_t average; // truncated toward zero, not rounded
};

// Over `count` pixels, at least 1.
TStatistics CalculateStatistics(const std::uint16_t* pixels, std::size_t count) noexcept;

} // namespace Kernels

#endif
