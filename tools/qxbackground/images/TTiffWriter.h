#ifndef QXBACKGROUND_IMAGES_TTIFFWRITER_H
#define QXBACKGROUND_IMAGES_TTIFFWRITER_H

#include "base/TReplacedFile.h"
#include "images/TImage.h"

#include <cstdint>
#include <memory>
#include <string>

namespace workbench {

struct TTiffHandle;

// Writes pages of 16-bit grayscale, uncompressed. The file appears under its name only with Close; an object destroyed
// before that leaves nothing behind.
class TTiffWriter {
public:
    // `expectedBytes` of pixels decide whether the file must be a BigTIFF (above some 4 GB).
    TTiffWriter(const std::string& path, std::uint64_t expectedBytes, TExisting existing);
    ~TTiffWriter();
    TTiffWriter(const TTiffWriter&) = delete;
    TTiffWriter& operator=(const TTiffWriter&) = delete;

    void Write(const TImage& image);
    void Close();

private:
    std::string path;
    TReplacedFile replaced;
    std::unique_ptr<TTiffHandle> file;
    unsigned page = 0;
};

} // namespace workbench

#endif
