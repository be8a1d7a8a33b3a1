// Compiled for AVX2. Called only where the processor and the system have it.
#include "kernels/KernelUnit.h"

const Kernels::TKernelTable Kernels::kAvx2Kernels = KERNELS_OF_THIS_UNIT;
