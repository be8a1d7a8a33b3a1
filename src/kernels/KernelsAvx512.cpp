// Compiled for AVX-512. Called only where the processor and the system have it.
#define KERNEL_SUFFIX Avx512
#include "kernels/KernelUnit.h"

#include "kernels/Average.inc"
#include "kernels/Median.inc"
#include "kernels/Scale.inc"
#include "kernels/Statistics.inc"
#include "kernels/Subtract.inc"
