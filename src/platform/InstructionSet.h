// The instruction sets that the library has kernels for.
#ifndef PLATFORM_INSTRUCTIONSET_H
#define PLATFORM_INSTRUCTIONSET_H

#include <cstdint>

namespace Platform {

enum class TInstructionSet {
    Baseline, // what every processor of the kind has
    Avx2,
    Avx512 // its F, BW, DQ and VL parts
};

// What an x86 processor tells of itself, and its system of it; all 0 for other processors.
struct TProcessorFacts {
    std::uint32_t extendedFeatures; // CPUID leaf 7, register b
    std::uint32_t savedState;       // XCR0: the registers that the system saves; 0 where it cannot be asked
    std::uint32_t vendor[3];        // CPUID leaf 0, registers b, d, c: twelve letters
};

TProcessorFacts ProcessorFacts() noexcept;

// The best instruction set that both the processor and the operating system support.
TInstructionSet InstructionSetOf(const TProcessorFacts& facts) noexcept;
TInstructionSet BestInstructionSet() noexcept;

// Whether this is one of AMD's processors with AVX2: their way to memory differs from that of others.
bool IsAmdProcessor(const TProcessorFacts& facts) noexcept;
bool IsAmdProcessor() noexcept;

} // namespace Platform

#endif
