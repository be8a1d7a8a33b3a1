// What every processor of the kind has: SSE2 on x86, and the only unit on others.
#define KERNEL_TABLE kBaselineKernels
#include "kernels/KernelBody.inc"
