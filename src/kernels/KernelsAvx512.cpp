// Compiled for AVX-512. Called only where the processor and the system have it.
#define KERNEL_TABLE kAvx512Kernels
#include "kernels/KernelBody.inc"
