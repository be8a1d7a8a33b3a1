// Differs by processor and compiler rather than by operating system, hence no part for each of those.
#include "platform/InstructionSet.h"

#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#define PLATFORM_HAS_CPUID 1
#elif defined(_M_X64)
#include <intrin.h>
#define PLATFORM_HAS_CPUID 1
#endif

namespace Platform {

#ifdef PLATFORM_HAS_CPUID

namespace {

struct TRegisters {
    std::uint32_t a, b, c, d;
};

#if defined(__GNUC__)

TRegisters CpuId(std::uint32_t leaf, std::uint32_t subleaf)
{
    TRegisters registers = {};
    __cpuid_count(leaf, subleaf, registers.a, registers.b, registers.c, registers.d);
    return registers;
}

std::uint32_t EnabledState()
{
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

#else

TRegisters CpuId(std::uint32_t leaf, std::uint32_t subleaf)
{
    int values[4];
    __cpuidex(values, static_cast<int>(leaf), static_cast<int>(subleaf));
    return {static_cast<std::uint32_t>(values[0]), static_cast<std::uint32_t>(values[1]),
            static_cast<std::uint32_t>(values[2]), static_cast<std::uint32_t>(values[3])};
}

std::uint32_t EnabledState()
{
    return static_cast<std::uint32_t>(_xgetbv(0));
}

#endif

constexpr std::uint32_t kSystemSavesState = 1u << 27; // leaf 1, c: the state register can be read

} // namespace

TProcessorFacts ProcessorFacts() noexcept
{
    const TRegisters first = CpuId(0, 0);
    TProcessorFacts facts = {0, 0, {first.b, first.d, first.c}};
    if (first.a >= 7) {
        facts.extendedFeatures = CpuId(7, 0).b;
        facts.savedState = (CpuId(1, 0).c & kSystemSavesState) != 0 ? EnabledState() : 0;
    }
    return facts;
}

#else

TProcessorFacts ProcessorFacts() noexcept
{
    return {};
}

#endif

namespace {

constexpr std::uint32_t kAvx2 = 1u << 5;                                             // of the extended features
constexpr std::uint32_t kAvx512 = (1u << 16) | (1u << 17) | (1u << 30) | (1u << 31); // F, DQ, BW, VL
constexpr std::uint32_t kSavesYmm = 0x06;                                            // SSE and AVX registers
constexpr std::uint32_t kSavesZmm = 0xE6;                                            // and all of AVX-512's

bool HasAll(std::uint32_t bits, std::uint32_t wanted)
{
    return (bits & wanted) == wanted;
}

} // namespace

TInstructionSet InstructionSetOf(const TProcessorFacts& facts) noexcept
{
    if (!HasAll(facts.extendedFeatures, kAvx2) || !HasAll(facts.savedState, kSavesYmm)) {
        return TInstructionSet::Baseline;
    }
    return HasAll(facts.extendedFeatures, kAvx512) && HasAll(facts.savedState, kSavesZmm) ? TInstructionSet::Avx512
                                                                                          : TInstructionSet::Avx2;
}

TInstructionSet BestInstructionSet() noexcept
{
    return InstructionSetOf(ProcessorFacts());
}

bool IsAmdProcessor(const TProcessorFacts& facts) noexcept
{
    constexpr std::uint32_t kAmd[3] = {0x68747541, 0x69746E65, 0x444D4163}; // "AuthenticAMD"
    return std::memcmp(facts.vendor, kAmd, sizeof kAmd) == 0 && InstructionSetOf(facts) != TInstructionSet::Baseline;
}

bool IsAmdProcessor() noexcept
{
    return IsAmdProcessor(ProcessorFacts());
}

} // namespace Platform
