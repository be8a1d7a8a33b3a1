#ifndef QXBACKGROUND_IMAGES_TFITSREADER_H
#define QXBACKGROUND_IMAGES_TFITSREADER_H

#include "images/TImageReader.h"
#include "images/TInputFile.h"

#include <memory>
#include <vector>

namespace workbench {

class TFitsTiles;

// Reads the images of a FITS file: those of the primary header and of image extensions, plane after plane where they
// are cubes, and tile-compressed ones. Integers of 16 bits only; rows in the order in which the file has them.
class TFitsReader : public TImageReader {
public:
    explicit TFitsReader(const std::string& path);
    ~TFitsReader() override;

    bool NextPage() override;
    void Read(TImage& image) override;
    std::optional<TPlainPixels> Plain() override;
    TPageMetadata Metadata() override;

private:
    // A header and the data behind it.
    struct TUnit {
        std::vector<std::string> cards;
        std::uint64_t start = 0, data = 0, dataBytes = 0, end = 0;
        bool isImage = false, isCompressed = false;
    };

    bool ReadUnit();
    void ReadCards();
    void MeasureData();
    void CheckImage();
    std::uint64_t Axis(const char* stem, int number);
    std::uint64_t Whole(const std::string& keyword, std::uint64_t most);

    TInputFile file;
    TUnit unit;
    std::vector<std::string> primaryCards; // of a primary header without pixels: they are about all that follows
    std::uint64_t plane = 0, planes = 0;   // of the unit
    bool isUnsigned = false;
    std::unique_ptr<TFitsTiles> tiles; // of a compressed unit
};

} // namespace workbench

#endif
