// The instruction sets that the library has kernels for.
#ifndef PLATFORM_INSTRUCTIONSET_H
#define PLATFORM_INSTRUCTIONSET_H

namespace Platform {

enum class TInstructionSet {
    Baseline, // what every processor of the kind has
    Avx2,
    Avx512 // its F, BW, DQ and VL parts
};

// The best that both the processor and the operating system support.
TInstructionSet BestInstructionSet() noexcept;

} // namespace Platform

#endif
