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

// Whether this is one of AMD's processors with AVX2: their way to memory differs from that of others.
bool IsAmdProcessor() noexcept;

} // namespace Platform

#endif
