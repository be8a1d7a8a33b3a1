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
    //
    // output[i] = max(0, image[i] - background[i]). The output may be the image. With `isAskingAhead` pixels are asked
    // for ahead of their use; with `isStreaming` the output goes past the caches: it starts at an even address.
    void (*subtract)(uint16_t* output, const uint16_t* image, const uint16_t* background, size_t count,
                     bool isAskingAhead, bool isStreaming);
    // 0 < factor < kScaleFactorLimit; the rest as above, but the output overlaps nothing.
    void (*scale)(uint16_t* output, const uint16_t* pixels, size_t count, float factor, bool isAskingAhead,
                  bool isStreaming);
    // frameCount >= 1, below 2^24; scratch of min(pixelCount, kAverageTileLength); isAskingAhead as above.
    void (*average)(uint16_t* output, const uint16_t* const* frames, size_t frameCount, size_t pixelCount,
                    float* scratch, bool isAskingAhead);
    // `lines`: kMedianLineCount lines of `stride` pixels, aligned to kMedianAlignment as is the stride; width + 2 at
    // least. width >= 1, height >= 1.
    void (*median)(uint16_t* image, size_t width, size_t height, uint16_t* lines, size_t stride);
    // count >= 1.
    void (*statistics)(const uint16_t* pixels, size_t count, uint16_t* minimum, uint16_t* maximum, uint64_t* sum);
};

// One for each unit; those of x86 only where QX_KERNELS_FOR_X86 is defined.
extern const TKernelTable kBaselineKernels;
extern const TKernelTable kAvx2Kernels;
extern const TKernelTable kAvx512Kernels;

} // namespace Kernels

#endif
