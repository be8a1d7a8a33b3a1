#ifndef QXBACKGROUND_PICTURES_TSHOWN_H
#define QXBACKGROUND_PICTURES_TSHOWN_H

#include "images/TImage.h"
#include "pictures/TPicture.h"

#include <string>
#include <vector>

namespace workbench {

// The values that a picture shows as black and as white.
struct TStretch {
    int black = 0;
    int white = 1;
};

// An image in about as many dots as people look at. A large one is shrunk, each dot the mean of a square of pixels,
// which lets faint structure be seen that single pixels' noise hides; a small one is drawn with squares for pixels.
class TShown {
public:
    explicit TShown(const TImage& image);

    int Width() const { return width * squareDots; }
    int Height() const { return height * squareDots; }
    // From the dark end of the values to the bright one, where the values are many: what few hot pixels and stars reach
    // does not darken the rest.
    TStretch Stretch() const;
    // With its upper left corner there.
    void DrawInto(TPicture& picture, int left, int top, const TStretch& stretch) const;
    // "each dot is the mean of 3 x 3 pixels"
    std::string SizeText() const;

private:
    int meanOf = 1;            // pixels in both directions that one value stands for
    int squareDots = 1;        // dots in both directions that show one value
    int width = 0, height = 0; // in values
    std::vector<float> values;
};

} // namespace workbench

#endif
