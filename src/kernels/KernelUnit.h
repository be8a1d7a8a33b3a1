// What the pixel loops share. Included first by each unit that is compiled for an instruction set; it defines
// KERNEL_SUFFIX, which the kernels of that unit carry in their names.
//
// The loops are C++ that compilers turn into vector instructions. Every loop gives the bits of its plain definition
// (PlainKernels.cpp), in every rounding mode of the processor. Whatever is not a kernel stays local to its unit.
#ifndef KERNELS_KERNELUNIT_H
#define KERNELS_KERNELUNIT_H

#include "kernels/KernelTable.h"
#include "platform/Compiler.h"
#include "platform/StreamingStores.h"

#include <string.h>

#define KERNEL_JOIN(name, suffix) name##suffix
#define KERNEL_NAMED(name, suffix) KERNEL_JOIN(name, suffix)
#define KERNEL(name) KERNEL_NAMED(name, KERNEL_SUFFIX)

namespace Kernels {
namespace {

// How far ahead of their use pixels are asked for, in pixels; found by measuring. Arrays of up to kCacheLength pixels
// stay in the cache of a core or near it, larger ones come from further away.
constexpr size_t kCacheLength = size_t{1} << 20;
constexpr size_t kNear = 1024;
constexpr size_t kFar = 4096;

// Pixels between two requests: a line of the cache. Loops over blocks have inner loops of exactly this length, for
// compilers unroll those, where a length that varies costs as much as the work.
constexpr size_t kBlock = 32;

// From this length on it is worth while to bring the stores to aligned addresses first.
constexpr size_t kAlignFrom = 16384;

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

#endif
