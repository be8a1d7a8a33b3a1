#ifndef QXBACKGROUND_IMAGES_TTIFFWRITER_H
#define QXBACKGROUND_IMAGES_TTIFFWRITER_H

#include "images/TImageWriter.h"

#include <cstdint>
#include <memory>
#include <string>

namespace workbench {

struct TTiffHandle;

// Writes the pages of a TIFF.
class TTiffWriter : public TImageWriter {
public:
    TTiffWriter(const std::string& path, std::uint64_t expectedBytes, TExisting existing);
    ~TTiffWriter() override;

    void Write(const TImage& image, const TPageMetadata& metadata) override;
    void Close() override;

private:
    std::string path;
    TReplacedFile replaced;
    std::unique_ptr<TTiffHandle> file;
    unsigned page = 0;
};

} // namespace workbench

#endif
