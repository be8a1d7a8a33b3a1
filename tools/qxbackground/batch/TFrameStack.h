#ifndef QXBACKGROUND_BATCH_TFRAMESTACK_H
#define QXBACKGROUND_BATCH_TFRAMESTACK_H

#include "images/TImage.h"
#include "images/TInputOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// Dark frames: every page of every file, in order, all of one size, as what the library would make of them first, which
// is their average. Given to the library as the only frame of a correction, it gives the correction that all frames
// would give, bit for bit, without all of them being in memory.
struct TFrameStack {
    std::uint64_t frames = 0;
    TImage average;

    TSize Size() const { return average.size; }
    std::vector<const std::uint16_t*> Pointers() const { return {average.pixels.data()}; }
};

// Throws TToolError naming the file and page that cannot be read or has another size than the first page.
TFrameStack ReadFrames(const std::vector<std::string>& paths, const TInputOptions& options);

} // namespace workbench

#endif
