// The pixel loops of one instruction set.
//
// Included by the units that are compiled for one: nothing here or in what it includes may be an inline function or a
// template, for the linker could keep the copy of such a unit for the whole program.
#ifndef KERNELS_KERNELTABLE_H
#define KERNELS_KERNELTABLE_H

#include <stddef.h>
#include <stdint.h>

namespace Kernels {

// Tile of Average, in pixels: its sums (256 KiB) stay in the second-level cache.
constexpr size_t kAverageTileLength = 65536;
// Line buffers of Median3x3 start at multiples of this, in bytes.
constexpr size_t kMedianAlignment = 64;
constexpr size_t kMedianLineCount = 8;
// From here on Scale has nothing to gain: 4 pixel values are not yet white.
constexpr float kScaleFactorLimit = 16384.0f;

struct TKernelTable {
    // As the functions of the same names in Kernels.h.
    // With `isAskingAhead` pixels are asked for ahead of their use.
    void (*subtractInPlace)(uint16_t* image, const uint16_t* background, size_t count, bool isAskingAhead);
    // With `isStreaming` the output goes past the caches; it starts at an even address.
    void (*subtractInto)(uint16_t* output, const uint16_t* image, const uint16_t* background, size_t count,
                         bool isStreaming);
    // 0 < factor < kScaleFactorLimit; isStreaming as above.
    void (*scale)(uint16_t* output, const uint16_t* pixels, size_t count, float factor, bool isStreaming);
    // frameCount >= 1, below 2^24; scratch of min(pixelCount, kAverageTileLength).
    void (*average)(uint16_t* output, const uint16_t* const* frames, size_t frameCount, size_t pixelCount,
                    float* scratch);
    // `lines`: kMedianLineCount lines of `stride` pixels, aligned to kMedianAlignment as is the stride; width + 2 at
    // least. width >= 1, height >= 1.
    void (*median)(uint16_t* image, size_t width, size_t height, uint16_t* lines, size_t stride);
    // `one` is 1; a constant that the compiler can see would undo the multiplication that makes it choose the fast
    // instruction. count >= 1.
    void (*statistics)(const uint16_t* pixels, size_t count, int16_t one, uint16_t* minimum, uint16_t* maximum,
                       uint64_t* sum);
};

// The kernels of an instruction set carry its name: SubtractInPlaceBaseline, SubtractInPlaceAvx2 and so on.
#define KERNELS_DECLARE(suffix)                                                                                        \
    void SubtractInPlace##suffix(uint16_t* image, const uint16_t* background, size_t count, bool isAskingAhead);       \
    void SubtractInto##suffix(uint16_t* output, const uint16_t* image, const uint16_t* background, size_t count,       \
                              bool isStreaming);                                                                       \
    void Scale##suffix(uint16_t* output, const uint16_t* pixels, size_t count, float factor, bool isStreaming);        \
    void Average##suffix(uint16_t* output, const uint16_t* const* frames, size_t frameCount, size_t pixelCount,        \
                         float* scratch);                                                                              \
    void Median##suffix(uint16_t* image, size_t width, size_t height, uint16_t* lines, size_t stride);                 \
    void Statistics##suffix(const uint16_t* pixels, size_t count, int16_t one, uint16_t* minimum, uint16_t* maximum,   \
                            uint64_t* sum);
KERNELS_DECLARE(Baseline)
KERNELS_DECLARE(Avx2)
KERNELS_DECLARE(Avx512)
#undef KERNELS_DECLARE

} // namespace Kernels

#endif
