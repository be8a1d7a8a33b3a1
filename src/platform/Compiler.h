// What pixel loops want to tell the compiler, in the words of each. Only macros: units that are compiled for one
// instruction set include this.
#ifndef PLATFORM_COMPILER_H
#define PLATFORM_COMPILER_H

// The array behind this pointer is reached through no other.
#define PLATFORM_RESTRICT __restrict

// Asks for the memory at an address ahead of its use; beyond the end of an array is allowed.
#if defined(__GNUC__) || defined(__clang__)
#define PLATFORM_PREFETCH(address) __builtin_prefetch(address)
#else
#define PLATFORM_PREFETCH(address) static_cast<void>(address)
#endif

#endif
