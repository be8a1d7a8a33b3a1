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

// Whether stores past the caches beat ordinary ones into memory that is not in them, which wait for the line that they
// overwrite. So on AMD's processors with AVX2; on others that were measured they were slower at every size.
bool AreStreamingStoresFast() noexcept;

} // namespace Platform

#endif
