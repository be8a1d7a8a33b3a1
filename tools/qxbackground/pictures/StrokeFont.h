#ifndef QXBACKGROUND_PICTURES_STROKEFONT_H
#define QXBACKGROUND_PICTURES_STROKEFONT_H

#include "pictures/TPicture.h"

#include <cstdint>
#include <string>

namespace workbench {

// A font of strokes, drawn for these pictures: the same pixels on every system, at any size, and no library for it.
// Printable ASCII; any other byte is shown as '?'.

struct TPen {
    double height = 10; // of capital letters and digits, in pixels
    double width = 1.3; // of the strokes
    std::uint8_t ink = 0;
};

double TextWidth(const std::string& text, const TPen& pen);

// The text's first letter begins at `left`, capital letters stand on `baseline` (both in pixels from the upper left
// corner). Drawn are those dots that get darker by it; what lies outside of the picture is left out.
void PutText(TPicture& picture, double left, double baseline, const std::string& text, const TPen& pen);

} // namespace workbench

#endif
