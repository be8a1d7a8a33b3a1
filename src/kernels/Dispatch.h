// Which kernels are used. Only the tests and benchmarks look here: they force each table in turn.
#ifndef KERNELS_DISPATCH_H
#define KERNELS_DISPATCH_H

#include "kernels/KernelTable.h"
#include "platform/InstructionSet.h"

#include <atomic>
#include <cstddef>

namespace Kernels {

// The table in use; null before the first call of a kernel, and to have it chosen anew.
extern std::atomic<const TKernelTable*> chosenTable;

// What suits the way from the processor to memory.
struct TMemoryHabits {
    std::size_t streamingLength; // outputs of this many pixels and more go past the caches
    bool isAskingAhead;          // whether pixels that lie in order are asked for ahead of their use
};

// As chosenTable.
extern std::atomic<const TMemoryHabits*> chosenHabits;

// The table of an instruction set; the baseline where the build has none of its own for it.
const TKernelTable& TableFor(Platform::TInstructionSet instructionSet) noexcept;

} // namespace Kernels

#endif
