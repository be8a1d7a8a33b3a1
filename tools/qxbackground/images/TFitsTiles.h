#ifndef QXBACKGROUND_IMAGES_TFITSTILES_H
#define QXBACKGROUND_IMAGES_TFITSTILES_H

#include "images/TImage.h"
#include "images/TInputFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// A tile-compressed image of 16-bit integers: a table with a row for each tile. Read here and not by cfitsio, whose
// decoders trust what they are given and read beyond the end of damaged tiles.
class TFitsTiles {
public:
    // What the cards of the table say. `dataBytes` of it are known to be there.
    TFitsTiles(const std::vector<std::string>& cards, std::uint64_t dataBytes);

    // Why the image is not read; empty when it may be.
    const std::string& Complaint() const { return complaint; }
    // The plane's pixels, counted from 0, as integers with a sign. The table's data begin at `data`. Returns what went
    // wrong, nothing when all went well.
    std::string Read(TInputFile& file, std::uint64_t data, std::uint64_t plane, TSize size, std::uint16_t* pixels);

    // How many bytes of pixels may be compressed to so many.
    static std::uint64_t MostBytes(std::uint64_t compressed);

private:
    enum class TMethod { Rice, Gzip, ShuffledGzip };
    struct TColumn {
        std::uint64_t offset = 0; // in a row
        int bytes = 0;            // of its descriptor; 0 where there is no such column
    };

    void FindColumns(const std::vector<std::string>& cards);
    void FindMethod(const std::vector<std::string>& cards);
    void FindTiles(const std::vector<std::string>& cards);
    bool ReadCode(TInputFile& file, std::uint64_t data, const std::string& row, const TColumn& column);
    std::string ReadTile(TInputFile& file, std::uint64_t data, const std::string& row,
                         std::vector<std::uint16_t>& tile);

    std::string complaint;
    std::uint64_t dataBytes = 0, rowBytes = 0, rows = 0, heap = 0;
    TColumn compressed, gzipped; // of a tile that its method did not make smaller
    TMethod method = TMethod::Rice;
    std::size_t block = 32;
    std::uint64_t tileWidth = 0, tileHeight = 0;
    std::vector<std::uint8_t> code;
};

// The table for an image, header and data, with these cards: a tile for each row, by Rice's code.
std::string RiceTiles(const TImage& image, const std::vector<std::string>& cards);

} // namespace workbench

#endif
