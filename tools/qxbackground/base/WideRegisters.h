#ifndef QXBACKGROUND_BASE_WIDEREGISTERS_H
#define QXBACKGROUND_BASE_WIDEREGISTERS_H

// For loops that are worth compiling twice: what they do stands in a function that is QXBC_INLINED into two others, one
// of which is QXBC_WIDE, where there is such a thing, and called when HasWideRegisters. Nothing with a name that other
// sources could share may be called there without being inlined: it would be compiled for processors that not all have.

#ifdef __GNUC__
#define QXBC_INLINED __attribute__((always_inline)) inline
#else
#define QXBC_INLINED inline
#endif

// GCC for Windows does not align its stack for such registers.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(_WIN32)
#define QXBC_WIDE __attribute__((target("avx2")))
#endif

namespace workbench {

inline bool HasWideRegisters()
{
#ifdef QXBC_WIDE
    static const bool has = __builtin_cpu_supports("avx2") != 0;
    return has;
#else
    return false;
#endif
}

} // namespace workbench

#endif
