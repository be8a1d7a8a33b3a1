#ifndef QXBACKGROUND_IMAGES_TOUTPUTOPTIONS_H
#define QXBACKGROUND_IMAGES_TOUTPUTOPTIONS_H

#include "images/ImageFormat.h"

#include <optional>
#include <string>

namespace workbench {

// How images are to be written.
struct TOutputOptions {
    std::optional<TImageFormat> format; // Tiff, Fits or Png
    bool compress = false; // without loss: TIFF by deflate with a predictor, FITS by tiles (Rice); PNG always is

    // Which format a file of that name gets: the one that was asked for; else the one that its name ends in; else that
    // of the input, TIFF where that is another one (PNG, which holds one page only, PGM, SER, raw).
    TImageFormat FormatFor(const std::string& path, TImageFormat input) const;
};

} // namespace workbench

#endif
