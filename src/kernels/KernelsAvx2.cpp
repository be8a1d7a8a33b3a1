// Compiled for AVX2. Called only where the processor and the system have it.
#define KERNEL_TABLE kAvx2Kernels
#include "kernels/KernelBody.inc"
