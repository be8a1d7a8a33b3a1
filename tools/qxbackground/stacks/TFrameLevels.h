#ifndef QXBACKGROUND_STACKS_TFRAMELEVELS_H
#define QXBACKGROUND_STACKS_TFRAMELEVELS_H

#include "images/TImage.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

// The levels of the frames of a stack, and what brings each frame to that of the middle one: the camera's offset may
// drift while frames are taken, mostly until it has settled, and their average would have a level that no image has.
class TFrameLevels {
public:
    void Add(const TImage& frame);

    // What is to be added to each frame, in whole ADU.
    std::vector<int> Shifts() const;
    // What the whole numbers leave undone, on average over the frames.
    double Rest() const;

private:
    double Middle() const;

    std::vector<double> levels; // ADU
    std::vector<std::uint16_t> sample;
};

} // namespace workbench

#endif
