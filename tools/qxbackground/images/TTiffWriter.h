#ifndef QXBACKGROUND_IMAGES_TTIFFWRITER_H
#define QXBACKGROUND_IMAGES_TTIFFWRITER_H

#include "images/TImageWriter.h"

#include <cstdint>
#include <memory>
#include <string>

namespace workbench {

struct TTiffHandle;

// Writes the pages of a TIFF: uncompressed each as one strip, in one call of the system; compressed by deflate with the
// horizontal predictor, in strips of about a megabyte.
class TTiffWriter : public TImageWriter {
public:
    // `expectedBytes`: see CreateImage.
    TTiffWriter(const std::string& path, bool compress, std::uint64_t expectedBytes, TExisting existing);
    ~TTiffWriter() override;

    void Write(const TImage& image, const TPageMetadata& metadata) override;
    void Close() override;

private:
    bool WriteStrips(const TImage& image, std::uint32_t rowsPerStrip);

    std::string path;
    bool compress;
    TReplacedFile replaced;
    std::unique_ptr<TTiffHandle> file;
    unsigned page = 0;
};

} // namespace workbench

#endif
