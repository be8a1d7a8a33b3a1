// What the pixel loops share. Included first by each unit that is compiled for an instruction set; it defines
// KERNEL_SUFFIX, which the kernels of that unit carry in their names.
//
// The loops are C++ that compilers turn into vector instructions. Every loop gives the bits of its plain definition
// (PlainKernels.cpp), in every rounding mode of the processor. Whatever is not a kernel stays local to its unit.
#ifndef KERNELS_KERNELUNIT_H
#define KERNELS_KERNELUNIT_H

#include "kernels/KernelTable.h"
#include "platform/Compiler.h"

#include <string.h>

#define KERNEL_JOIN(name, suffix) name##suffix
#define KERNEL_NAMED(name, suffix) KERNEL_JOIN(name, suffix)
#define KERNEL(name) KERNEL_NAMED(name, KERNEL_SUFFIX)

namespace Kernels {
namespace {

// Arrays of this many pixels and more do not stay in the caches near the processor: asking ahead pays.
constexpr size_t kPrefetchFrom = 65536;
constexpr size_t kPrefetchDistance = 4096; // pixels
constexpr size_t kBlock = 32;              // pixels between two requests: a line of the cache

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
