#ifndef QXBACKGROUND_REPORT_PICTUREDATA_H
#define QXBACKGROUND_REPORT_PICTUREDATA_H

#include "images/TImage.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// Which pixels of an image the page carries: every `step`-th of a rectangle, in both directions. Pixels are picked, not
// averaged, so that each value in the page is one that the library gave.
struct TSampling {
    int left = 0, top = 0, width = 0, height = 0; // in pixels of the page's picture; the corner in those of the image
    int step = 1;
};

// The whole image, in so many pixels that the text of each of `images`, which are of one size, has at most `mostText`
// characters.
TSampling SampleWhole(const std::vector<const TImage*>& images, std::size_t mostText);
// Every pixel of a square around a place, as far as the image goes.
TSampling SampleAround(const TSize& size, int x, int y, int side);

// The picked pixels: what lies where, and the values as text: differences to the left neighbour, their low bytes and
// then their high bytes, deflated (zlib's format), in base64.
nlohmann::json PictureJson(const TImage& image, const TSampling& sampling);

std::string Base64(const std::vector<std::uint8_t>& bytes);

} // namespace workbench

#endif
