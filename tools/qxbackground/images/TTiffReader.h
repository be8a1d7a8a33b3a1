#ifndef QXBACKGROUND_IMAGES_TTIFFREADER_H
#define QXBACKGROUND_IMAGES_TTIFFREADER_H

#include "images/TImageReader.h"
#include "images/TInputFile.h"

#include <memory>

namespace workbench {

struct TTiffHandle;

// Reads the pages of a 16-bit grayscale TIFF, in strips or tiles, of either byte order, compressed or not. A stack as
// ImageJ writes it, whose frames follow the only page without headers of their own, is read as that many pages.
class TTiffReader : public TImageReader {
public:
    explicit TTiffReader(const std::string& path);
    ~TTiffReader() override;

    bool NextPage() override;
    void Read(TImage& image) override;
    std::optional<TPlainPixels> Plain() override;
    TPageMetadata Metadata() override;

private:
    void CheckFormat();
    void CheckLink();
    void LookForStack();
    // Where the pixels begin, when they lie in the file as in memory, one behind the other; otherwise 0.
    std::uint64_t PlainPixels() const;
    bool BigEndian() const;
    void ReadStrips(TImage& image);
    void ReadTiles(TImage& image);

    TInputFile bytes; // the same file, for pixels that need no libtiff, and for checks that it does not make
    std::unique_ptr<TTiffHandle> file;
    std::uint64_t stackFrames = 0; // 0 where each page has a header
};

} // namespace workbench

#endif
