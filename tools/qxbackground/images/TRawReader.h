#ifndef QXBACKGROUND_IMAGES_TRAWREADER_H
#define QXBACKGROUND_IMAGES_TRAWREADER_H

#include "images/TImageReader.h"
#include "images/TInputFile.h"

namespace workbench {

// Reads frames without any format: 16-bit little-endian pixels whose layout the user tells.
class TRawReader : public TImageReader {
public:
    TRawReader(const std::string& path, const TRawLayout& layout);

    bool NextPage() override;
    void Read(TImage& image) override;
    std::optional<TPlainPixels> Plain() override;
    TPageMetadata Metadata() override { return {}; }

private:
    TInputFile file;
    TRawLayout layout;
    std::uint64_t frames = 0;
};

// Whether a file of that length holds whole frames.
bool FitsLayout(std::uint64_t fileBytes, const TRawLayout& layout);

} // namespace workbench

#endif
