#ifndef QXBACKGROUND_IMAGES_TTIFFREADER_H
#define QXBACKGROUND_IMAGES_TTIFFREADER_H

#include "images/TImageReader.h"

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

namespace workbench {

struct TTiffHandle;

// Reads the pages of a 16-bit grayscale TIFF.
class TTiffReader : public TImageReader {
public:
    explicit TTiffReader(const std::string& path);
    ~TTiffReader() override;

    bool NextPage() override;
    void Read(TImage& image) override;
    TPageMetadata Metadata() override;

private:
    void CheckFormat();
    void CheckLink();
    void ReadStrips(TImage& image);
    void ReadTiles(TImage& image);

    std::ifstream bytes; // the same file, for checks that libtiff does not make
    std::unique_ptr<TTiffHandle> file;
    std::uint64_t fileBytes = 0;
};

} // namespace workbench

#endif
