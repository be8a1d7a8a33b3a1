#ifndef QXBACKGROUND_IMAGES_TSERREADER_H
#define QXBACKGROUND_IMAGES_TSERREADER_H

#include "images/TImageReader.h"
#include "images/TInputFile.h"

#include <vector>

namespace workbench {

// Reads the frames of a SER video of one sample per pixel, in 9 to 16 bits; a colour filter over the sensor is none of
// its business.
//
// The header's flag for the order of bytes says 0 for "big-endian" by the format's description. The first programs that
// wrote it had it the other way round, those after them followed, and so 0 means little-endian here, and 1 big-endian.
// But some go by the description: where the first frame is clearly no picture in the order of its flag, and one in the
// other order, that order is taken.
class TSerReader : public TImageReader {
public:
    explicit TSerReader(const std::string& path);

    bool NextPage() override;
    void Read(TImage& image) override;
    TPageMetadata Metadata() override;

private:
    void ReadHeader();
    bool LooksSwapped();
    std::uint64_t OffsetOf(std::uint64_t frame) const;

    TInputFile file;
    TPixelLayout layout;
    std::uint64_t frames = 0;
    int depth = 16;
    std::int64_t start = 0; // hundreds of nanoseconds since the year 1, as all times of the format
    std::string observer, instrument, telescope;
    bool orderKnown = false;
};

} // namespace workbench

#endif
