#ifndef QXBACKGROUND_IMAGES_TFITSWRITER_H
#define QXBACKGROUND_IMAGES_TFITSWRITER_H

#include "images/TImageWriter.h"

#include <fstream>
#include <vector>

namespace workbench {

// Writes a FITS file of unsigned 16-bit integers (BZERO = 32768): the first page with the primary header, each further
// one in an image extension of its own. The planes of a cube stay one cube. Compressed, every page is a tile-compressed
// extension, as fpack makes them, behind an empty primary header; there the planes of cubes are extensions as well.
class TFitsWriter : public TImageWriter {
public:
    TFitsWriter(const std::string& path, bool compress, TExisting existing);

    void Write(const TImage& image, const TPageMetadata& metadata) override;
    void Close() override;

private:
    void WriteHeader(const TImage& image, const TPageMetadata& metadata);
    void WriteCompressed(const TImage& image, const TPageMetadata& metadata);
    void WritePixels(const TImage& image);
    void WriteBlocks(std::string text, char filler);
    void EndUnit();
    void Put(const void* bytes, std::size_t count);

    std::string path;
    bool compress;
    TReplacedFile replaced;
    std::ofstream stream;
    std::vector<std::uint16_t> piece;
    unsigned page = 0;
    std::uint64_t unitBytes = 0; // of pixels since the last header
    TSize cubeSize;
    int planesWritten = 0, planesPromised = 0; // of the cube that is being written
};

} // namespace workbench

#endif
