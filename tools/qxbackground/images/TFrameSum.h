#ifndef QXBACKGROUND_IMAGES_TFRAMESUM_H
#define QXBACKGROUND_IMAGES_TFRAMESUM_H

#include "base/LargeMemory.h"
#include "images/TImage.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace workbench {

// Averages any number of frames in the memory of a few, to the bits that the library's own average of the whole stack
// has: single-precision sums in the order of the frames, which lose low bits above 2^24, divided in single precision
// and rounded half up. A "correction of one frame" that the library then makes of the average is the average.
class TFrameSum {
public:
    explicit TFrameSum(TSize frameSize);

    // Adds frames of this size, the first one first. Several are added in one pass over the sums, which costs as much
    // as reading the frames.
    void Add(const std::vector<const TImage*>& frames);
    // Adds `pixels` of each frame, from pixel `start` on. The frames count once their last pixel is there.
    void Add(std::size_t start, std::size_t pixels, const std::vector<const std::uint16_t*>& frames);
    // Adds frames that were added up elsewhere, no more than kExactFrames with those that are there. Up to that number
    // sums are exact, in whichever order frames are added.
    void Add(const TFrameSum& other);
    static constexpr std::size_t kExactFrames = 256; // of 65535: just below 2^24

    TSize Size() const { return size; }
    std::uint64_t Frames() const { return count; }
    // Of at least one frame.
    TImage Average() const;
    // The same before it is rounded.
    std::vector<float> Mean() const;

private:
    TSize size;
    std::unique_ptr<float[], TFreed> sums;
    std::uint64_t count = 0;
};

} // namespace workbench

#endif
