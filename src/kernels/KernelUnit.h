// Every pixel loop, for one instruction set. Each unit that is compiled for one includes this and defines a table out
// of KERNELS_OF_THIS_UNIT; all else is local to it.
//
// Most loops are C++ that compilers turn into vector instructions, the others use those of Vectors.h. Every loop gives
// the bits of its plain definition (PlainKernels.cpp), in every rounding mode of the processor.
#ifndef KERNELS_KERNELUNIT_H
#define KERNELS_KERNELUNIT_H

// Copies of two and four bytes are meant to become parts of vectors. Checked ones are calls that Clang does not see
// through, so that no loop around them is turned into vector instructions.
#undef _FORTIFY_SOURCE

#include "kernels/KernelTable.h"
#include "kernels/Vectors.h"
#include "platform/Compiler.h"

#include <string.h>

namespace Kernels {
namespace {

// How far ahead of their use pixels are asked for, in pixels; found by measuring. Arrays of up to kCacheLength pixels
// stay in the cache of a core or near it, larger ones come from further away.
constexpr size_t kCacheLength = size_t{1} << 20;
constexpr size_t kNear = 1024;
constexpr size_t kFar = 4096;

// From this length on it is worth while to bring the stores to aligned addresses first.
constexpr size_t kAlignFrom = 16384;

// From here on images are walked through in two halves, a line of the one and a line of the other in turn: a processor
// that reads ahead by itself then has twice as many requests under way.
constexpr size_t kInHalvesFrom = size_t{1} << 18;

constexpr size_t kAlignment = 64; // bytes; stores that do not cross lines of the cache are faster

// Number of pixels up to the next aligned one.
inline size_t PixelsToAlignment(const uint16_t* pixels, size_t count)
{
    const size_t offset = reinterpret_cast<uintptr_t>(pixels) % kAlignment;
    const size_t pixelsAhead = offset == 0 ? 0 : (kAlignment - offset) / sizeof *pixels;
    return pixelsAhead < count ? pixelsAhead : count;
}

} // namespace
} // namespace Kernels

#include "kernels/Average.inc"
#include "kernels/Median.inc"
#include "kernels/Scale.inc"
#include "kernels/Statistics.inc"
#include "kernels/Subtract.inc"

#define KERNELS_OF_THIS_UNIT {SubtractLoop, ScaleLoop, AverageLoop, MedianLoop, StatisticsLoop}

#endif
