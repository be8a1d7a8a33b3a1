// Differs by processor and compiler rather than by operating system, hence no part for each of those.
#include "platform/InstructionSet.h"

#include <cstdint>

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

bool HasAll(std::uint32_t bits, std::uint32_t wanted)
{
    return (bits & wanted) == wanted;
}

constexpr std::uint32_t kSystemSavesState = 1u << 27; // leaf 1, c: the state register can be read
constexpr std::uint32_t kAvx2 = 1u << 5;              // leaf 7, b
constexpr std::uint32_t kAvx512 = (1u << 16) | (1u << 17) | (1u << 30) | (1u << 31); // leaf 7, b: F, DQ, BW, VL
constexpr std::uint32_t kSavesYmm = 0x06;                                            // SSE and AVX registers
constexpr std::uint32_t kSavesZmm = 0xE6;                                            // and all of AVX-512's

} // namespace

TInstructionSet BestInstructionSet() noexcept
{
    if (CpuId(0, 0).a < 7 || !HasAll(CpuId(1, 0).c, kSystemSavesState)) {
        return TInstructionSet::Baseline;
    }
    const std::uint32_t features = CpuId(7, 0).b;
    const std::uint32_t saved = EnabledState();
    if (!HasAll(features, kAvx2) || !HasAll(saved, kSavesYmm)) {
        return TInstructionSet::Baseline;
    }
    return HasAll(features, kAvx512) && HasAll(saved, kSavesZmm) ? TInstructionSet::Avx512 : TInstructionSet::Avx2;
}

bool IsAmdProcessor() noexcept
{
    const TRegisters vendor = CpuId(0, 0);
    return vendor.b == 0x68747541 && vendor.d == 0x69746E65 && vendor.c == 0x444D4163 && // "AuthenticAMD"
           BestInstructionSet() != TInstructionSet::Baseline;
}

#else

TInstructionSet BestInstructionSet() noexcept
{
    return TInstructionSet::Baseline;
}

bool IsAmdProcessor() noexcept
{
    return false;
}

#endif

} // namespace Platform
