#ifndef QXBACKGROUND_BATCH_TFRAMEBANDS_H
#define QXBACKGROUND_BATCH_TFRAMEBANDS_H

#include "base/TSha256.h"
#include "batch/TFileDigests.h"
#include "images/TImageReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace workbench {

// Files of one plain page each, all of one size, that are read side by side.
struct TBandedFrames {
    struct TFrame {
        std::size_t file = 0; // which of the paths
        std::unique_ptr<TImageReader> reader;
        TPlainPixels plain;
        TPageMetadata metadata;
        TSha256 sha256;
    };

    std::vector<TFrame> frames;
    TSize size;
};

// The same pixels of all of them.
struct TFrameBand {
    std::shared_ptr<TBandedFrames> of;
    std::size_t start = 0, pixels = 0;
    std::vector<std::uint16_t> values; // frame after frame, with some space between

    // A power of two from frame to frame would have them all in the same few lines of the cache.
    std::size_t Distance() const { return pixels + 96; }
    std::uint16_t* Values(std::size_t frame) { return values.data() + frame * Distance(); }
    bool IsLast() const { return start + pixels == of->size.Pixels(); }
};

// Reads several files at a time, a band of each after the other, so that whatever is done with their pixels finds them
// in the processor's cache; whole frames would have to come from memory once more for each such thing. Their SHA-256
// are among those: many files' together cost little more than one's.
class TFrameBands {
public:
    // Reads of the `paths` those from number `first` on, before `end`, as many as can be read so and are of that size;
    // of no size: of the first one's. `digests`, of the same paths, is given what is computed; without it, nothing is.
    TFrameBands(const std::vector<std::string>& paths, std::size_t first, std::size_t end, TSize size,
                const TInputOptions& options, TFileDigests* digests);

    // The next band; false when the next file cannot be read so, or there is none. Throws TToolError when a file cannot
    // be read any further, or the user asked to stop.
    bool Take(TFrameBand& band);

private:
    std::shared_ptr<TBandedFrames> Open() const;
    void Digest(TFrameBand& band) const;

    const std::vector<std::string>& paths;
    const TInputOptions& options;
    TFileDigests* const digests;
    TSize size;                          // of all frames
    std::shared_ptr<TBandedFrames> open; // those that are being read,
    std::size_t start = 0;               // from this pixel on,
    std::size_t nextFile, endOfFiles;    // and those behind them
};

} // namespace workbench

#endif
