#ifndef QXBACKGROUND_STACKS_SAMPLESTEP_H
#define QXBACKGROUND_STACKS_SAMPLESTEP_H

#include <algorithm>
#include <cstddef>

namespace workbench {

// By which step some `wanted` of a frame's pixels are met, evenly spread; all, when there are no more. Odd, so that all
// columns are met whatever the width.
inline std::size_t SampleStep(std::size_t pixels, std::size_t wanted)
{
    return std::max<std::size_t>(pixels / wanted, 1) | 1u;
}

// So many pixels give the median of a frame, or of a difference of two, to a hundredth of its spread.
constexpr std::size_t kUsualSample = 65536;

} // namespace workbench

#endif
