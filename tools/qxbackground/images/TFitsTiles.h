#ifndef QXBACKGROUND_IMAGES_TFITSTILES_H
#define QXBACKGROUND_IMAGES_TFITSTILES_H

#include "images/TImage.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace workbench {

struct TCfitsioFile;

// A tile-compressed image, read and written by cfitsio. It never sees a file, only memory: what it makes of file names,
// and of headers that it is not asked about, need not be trusted.
class TFitsTiles {
public:
    // `unit` is the table that stands for the image, header and data.
    explicit TFitsTiles(const std::string& unit);
    ~TFitsTiles();
    TFitsTiles(const TFitsTiles&) = delete;
    TFitsTiles& operator=(const TFitsTiles&) = delete;

    // Pixels from number `first` on. Returns what went wrong, nothing when all went well.
    std::string Read(std::uint64_t first, std::uint16_t* pixels, std::size_t count);

    // Why an image with these cards is not read; empty when it may be.
    static std::string Complaint(const std::vector<std::string>& cards);
    // How many bytes of pixels may be compressed to so many.
    static std::uint64_t MostBytes(std::uint64_t compressed);
    // The table for an image, with these cards; `complaint` gets what went wrong.
    static std::string Compress(const TImage& image, const std::vector<std::string>& cards, std::string& complaint);

private:
    std::unique_ptr<TCfitsioFile> file;
};

} // namespace workbench

#endif
