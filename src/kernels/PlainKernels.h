// The pixel loops in their simplest form: the definition that every faster one is compared with, and what is used where
// speed does not matter. Contracts as in Kernels.h.
#ifndef KERNELS_PLAINKERNELS_H
#define KERNELS_PLAINKERNELS_H

#include <cstddef>
#include <cstdint>

namespace Kernels::Plain {

void SubtractInPlace(std::uint16_t* image, const std::uint16_t* background, std::size_t count) noexcept;
void SubtractInto(std::uint16_t* output, const std::uint16_t* image, const std::uint16_t* background,
                  std::size_t count) noexcept;
void Scale(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, float factor) noexcept;
void Average(std::uint16_t* output, const std::uint16_t* const* frames, std::size_t frameCount,
             std::size_t pixelCount) noexcept;
// `scratch`: 3 * (width + 2) pixels.
void Median3x3(std::uint16_t* image, std::size_t width, std::size_t height, std::uint16_t* scratch) noexcept;
void Statistics(const std::uint16_t* pixels, std::size_t count, std::uint16_t& minimum, std::uint16_t& maximum,
                std::uint64_t& sum) noexcept;

} // namespace Kernels::Plain

#endif
