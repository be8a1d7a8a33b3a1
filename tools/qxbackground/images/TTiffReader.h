#ifndef QXBACKGROUND_IMAGES_TTIFFREADER_H
#define QXBACKGROUND_IMAGES_TTIFFREADER_H

#include "base/TReplacedFile.h"
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
    std::ifstream bytes; // the same file, for what libtiff does not tell
    std::unique_ptr<TTiffHandle> file;
    unsigned page = 0;
    TSize size;
    std::uint64_t fileBytes = 0;
};

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
