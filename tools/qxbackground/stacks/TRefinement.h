#ifndef QXBACKGROUND_STACKS_TREFINEMENT_H
#define QXBACKGROUND_STACKS_TREFINEMENT_H

#include "images/TImage.h"
#include "images/TPageMetadata.h"
#include "stacks/THotPixels.h"
#include "stacks/TNoisyPixels.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace workbench {

// What is done to an image beside the subtraction of the scaled correction, which is the library's: the bias goes and a
// pedestal comes before it, so that noise around zero is not cut off; hot pixels are replaced behind it. What is done
// stands in the corrected image.
class TRefinement {
public:
    int pedestal = 0;                 // ADU, 0 to 65535
    TImage bias;                      // of no size: none
    std::uint64_t biasFrames = 0;     // that it is the average of
    THotPixels hotPixels;             // of no size: none
    TNoisyPixels noisyPixels;         // of no size: none
    std::vector<int> rest;            // of each pixel, ADU: subtracted besides what the library subtracts; empty: none
    std::vector<std::string> history; // further lines for the image

    // For images that show a part of the frames.
    TRefinement Cut(int left, int top, TSize part) const;

    // Of an image, around the library's work on it. Between the two, values that went above 65535 wait here.
    void Before(TImage& image);
    void After(TImage& image) const;

    // What was done, one line each.
    std::vector<std::string> Notes() const;
    void RecordIn(TPageMetadata& metadata) const;

private:
    std::vector<std::pair<std::size_t, int>> overflow; // which pixel, by how much
};

// Dark frames to be subtracted as they are, before anything was rounded: the bias is taken off `dark`, and `biasRest`
// is what rounding has kept from the bias that is subtracted from the images; empty: there is none.
struct TExactDark {
    TSize size; // of none: dark frames are subtracted as the library has them
    std::vector<float> dark, biasRest;
};

// What the library's median filter and whole numbers leave: the part of `exact` that begins at `left`, `top`, scaled,
// less the `background` that the library subtracts there.
std::vector<int> RestOf(const TExactDark& exact, int left, int top, double scale, const TImage& background);

// Of the average of dark frames; below zero becomes zero.
void SubtractBias(TImage& dark, const TImage& bias);

} // namespace workbench

#endif
