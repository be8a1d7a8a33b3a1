#ifndef QXBACKGROUND_IMAGES_TPNGWRITER_H
#define QXBACKGROUND_IMAGES_TPNGWRITER_H

#include "images/TImageWriter.h"

#include <fstream>

namespace workbench {

// Writes a 16-bit grayscale PNG, which holds one page. What the page says beside its pixels stands in texts.
class TPngWriter : public TImageWriter {
public:
    TPngWriter(const std::string& path, TExisting existing);

    void Write(const TImage& image, const TPageMetadata& metadata) override;
    void Close() override;

private:
    struct TEncoder;

    std::string path;
    TReplacedFile replaced;
    std::ofstream stream;
    unsigned page = 0;
};

} // namespace workbench

#endif
