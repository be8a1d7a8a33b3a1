#ifndef QXBACKGROUND_IMAGES_CONTRAST_H
#define QXBACKGROUND_IMAGES_CONTRAST_H

#include "images/TImage.h"
#include "images/TPicture.h"

#include <string>
#include <vector>

namespace workbench {

// The values that a picture shows as black and as white.
struct TStretch {
    int black = 0;
    int white = 1;
};

// From the 0.5th to the 99.5th percentile: a few hot or saturated pixels do not darken the rest.
TStretch StretchOf(const TImage& image);

TPicture Render(const TImage& image, const TStretch& stretch);

// Panels from left to right with a white line between them, all with the same number of ADU from black to white, so
// that structure of equal strength looks equally strong; each panel has its own black. Returns one text per panel
// that says which values are black and white.
TPicture SideBySide(const std::vector<const TImage*>& panels, std::vector<std::string>& legend);

} // namespace workbench

#endif
