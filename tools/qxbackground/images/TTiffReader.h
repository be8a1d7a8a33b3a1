#ifndef QXBACKGROUND_IMAGES_TTIFFREADER_H
#define QXBACKGROUND_IMAGES_TTIFFREADER_H

#include "images/TImage.h"

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

namespace workbench {

struct TTiffHandle;

// Reads the pages of a 16-bit grayscale TIFF one after the other; one page is in memory at a time.
// Every failure is a TToolError that names the file and the page, counted from 1.
class TTiffReader {
public:
    explicit TTiffReader(const std::string& path);
    ~TTiffReader();
    TTiffReader(const TTiffReader&) = delete;
    TTiffReader& operator=(const TTiffReader&) = delete;

    // Goes to the next page (the first one at first); false after the last. Throws unless it is 16-bit grayscale.
    bool NextPage();
    unsigned Page() const { return page; }
    TSize Size() const { return size; }
    // The pixels of the current page; `image` keeps its memory from page to page.
    void Read(TImage& image);

private:
    [[noreturn]] void Fail(const std::string& what) const;
    void CheckFormat();
    void CheckLink();
    void ReadStrips(TImage& image);
    void ReadTiles(TImage& image);

    std::string path;
    std::ifstream bytes; // the same file, for checks that libtiff does not make
    std::unique_ptr<TTiffHandle> file;
    unsigned page = 0;
    TSize size;
    std::uint64_t fileBytes = 0;
};

} // namespace workbench

#endif
