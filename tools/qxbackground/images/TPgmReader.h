#ifndef QXBACKGROUND_IMAGES_TPGMREADER_H
#define QXBACKGROUND_IMAGES_TPGMREADER_H

#include "images/TImageReader.h"
#include "images/TInputFile.h"

namespace workbench {

// Reads the images of a PGM file whose largest value is above 255: binary (P5), of which a file may hold several, and
// text (P2).
class TPgmReader : public TImageReader {
public:
    explicit TPgmReader(const std::string& path);

    bool NextPage() override;
    void Read(TImage& image) override;
    std::optional<TPlainPixels> Plain() override;
    TPageMetadata Metadata() override;

private:
    int NextByte(); // -1 at the end
    std::uint64_t Number(const char* what);
    void ReadText(TImage& image);
    void CheckValues(const TImage& image);

    TInputFile file;
    std::uint64_t at = 0; // of the next byte
    std::string buffer;   // what was read ahead
    std::uint64_t bufferStart = 0;
    std::uint64_t raster = 0; // where the pixels of the page begin
    bool text = false;
    unsigned largest = 65535;
    std::string comment;
};

} // namespace workbench

#endif
