// Microsoft's intrinsics as far as they are used here. Stands in for a header that defines functions which the compiler
// has built in.
#ifndef QXBC_INTRIN_H
#define QXBC_INTRIN_H

#include <x86intrin.h> // with _xgetbv

#ifdef __cplusplus
extern "C" {
#endif
void __cpuid(int registers[4], int leaf);
void __cpuidex(int registers[4], int leaf, int subleaf);
#ifdef __cplusplus
}
#endif

#endif
