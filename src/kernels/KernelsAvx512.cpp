// Compiled for AVX-512. Called only where the processor and the system have it.
#include "kernels/KernelUnit.h"

const Kernels::TKernelTable Kernels::kAvx512Kernels = KERNELS_OF_THIS_UNIT;
