// What every processor of the kind has: SSE2 on x86, and the only unit on others.
#define KERNEL_SUFFIX Baseline
#include "kernels/KernelUnit.h"

#include "kernels/Average.inc"
#include "kernels/Median.inc"
#include "kernels/Scale.inc"
#include "kernels/Statistics.inc"
#include "kernels/Subtract.inc"
