#ifndef QXBACKGROUND_IMAGES_SAMPLESTEP_H
#define QXBACKGROUND_IMAGES_SAMPLESTEP_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

// By which step some `wanted` of a frame's pixels are met, evenly spread; all, when there are no more. Odd, so that all
// columns are met whatever the width.
inline std::size_t SampleStep(std::size_t pixels, std::size_t wanted)
{
    return std::max<std::size_t>(pixels / wanted, 1) | 1u;
}

// So many pixels give the median of a frame, or of a difference of two, to a hundredth of its spread.
constexpr std::size_t kUsualSample = 65536;

// Adds to `sample` those of a frame's pixels `start` to `start` + `count`, which `pixels` points to, that are met.
inline void AddToSample(std::vector<std::uint16_t>& sample, const std::uint16_t* pixels, std::size_t start,
                        std::size_t count, std::size_t step)
{
    for (std::size_t i = (step - start % step) % step; i < count; i += step)
        sample.push_back(pixels[i]);
}

} // namespace workbench

#endif
