#ifndef QXBACKGROUND_BATCH_TFRAMESTACK_H
#define QXBACKGROUND_BATCH_TFRAMESTACK_H

#include "batch/TFileDigests.h"
#include "batch/TPage.h"
#include "images/TImage.h"
#include "images/TInputOptions.h"
#include "images/TShot.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace workbench {

// Dark frames: every page of every file, in order, all of one size, as what the library would make of them first, which
// is their average. Given to the library as the only frame of a correction, it gives the correction that all frames
// would give, bit for bit, without all of them being in memory.
struct TFrameStack {
    std::uint64_t frames = 0;
    TImage average;
    std::vector<float> exact;          // the average before it was rounded, where that was asked for
    std::vector<std::string> notes;    // what was done, one line each
    std::vector<std::string> warnings; // what does not look right, one line each
    std::uint64_t biasFrames = 0;      // whose average was subtracted
    TShot shot = {};                   // how the frames were taken, as far as their headers agree

    TSize Size() const { return average.size; }
    std::vector<const std::uint16_t*> Pointers() const { return {average.pixels.data()}; }
};

// What files, and how they are read; `what` they are, "dark frames", is for messages.
struct TFrameFiles {
    const std::vector<std::string>& paths;
    const TInputOptions& options;
    const std::string what;
    TFileDigests* digests = nullptr; // of these paths, where they are wanted
};

// Sees the header of each file's first page before the first pixel is read, up to the first that does not say all of it
// then. What it throws ends the reading.
using THeaderWatcher = std::function<void(const std::string& path, const TPageMetadata& metadata)>;

// Hands over every page of every file, in order. Throws TToolError naming the file and page that cannot be read or has
// another size than the first page, or when there is none at all.
void EachFrame(const TFrameFiles& files, const THeaderWatcher& early, const std::function<void(TPage&)>& take);

// What is seen of a frame that passes.
struct TPassingFrame {
    const std::string& path;
    unsigned page;
    const TPageMetadata& metadata;
    const std::vector<std::uint16_t>& sample; // some 8,000 of its pixels, evenly spread
};
using TFrameWatcher = std::function<void(const TPassingFrame&)>;
// Of a page at once.
TPassingFrame Passing(const TPage& page, const std::string& path, std::vector<std::uint16_t>& sample);

// Their average, also before it was rounded where that is asked for. `watch` sees every frame, and so does `whole`, if
// there is one, which takes longer. Throws as EachFrame does.
TFrameStack ReadFrames(const TFrameFiles& files, const THeaderWatcher& early, const TFrameWatcher& watch,
                       bool keepExact, const std::function<void(const TImage&)>& whole = {});

} // namespace workbench

#endif
