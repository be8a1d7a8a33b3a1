// Hashes of texts, for finding them.
#ifndef DATA_CONTAINERS_TEXTHASH_H
#define DATA_CONTAINERS_TEXTHASH_H

#include <cstdint>

// SipHash-1-3 (J.-P. Aumasson, D. J. Bernstein, "SipHash: a fast short-input PRF", 2012) under a key that differs from
// table to table: texts come from files, and nobody shall be able to write a file whose texts all collide. Hashes mean
// nothing outside the process.
namespace TextHash {

struct TSeed {
    std::uint64_t low;
    std::uint64_t high;
};

// A key made of the time, of where the stack lies, and of where an object lies.
TSeed SeedFor(std::uintptr_t place) noexcept;

std::uint64_t Of(const char* text, const TSeed& seed) noexcept;
// Equal for texts that Platform::CompareIgnoringCase takes for equal.
std::uint64_t OfIgnoringCase(const char* text, const TSeed& seed) noexcept;

} // namespace TextHash

#endif
