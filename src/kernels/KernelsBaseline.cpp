// What every processor of the kind has: SSE2 on x86, and the only unit on others.
#include "kernels/KernelUnit.h"

const Kernels::TKernelTable Kernels::kBaselineKernels = KERNELS_OF_THIS_UNIT;
