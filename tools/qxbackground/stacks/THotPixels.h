#ifndef QXBACKGROUND_STACKS_THOTPIXELS_H
#define QXBACKGROUND_STACKS_THOTPIXELS_H

#include "images/TImage.h"

#include <cstddef>
#include <string>
#include <vector>

namespace workbench {

// Pixels of a camera whose dark signal is no good, and what takes their place. The library's median filter takes them
// out of a correction, so that a correction alone leaves them in the image.
class THotPixels {
public:
    struct TPixel {
        int x = 0, y = 0; // column and row, from 0
        bool dead = false;
    };

    // In the average of dark frames: those that lie further from the median of their neighbours than `sigma` times the
    // spread that the pixels of that part of the frame have around theirs; or that all pixels have, where it is less
    // and the dark frames are not `subtractedAsTheyAre`: then what a pixel differs by stays in the images, in a glow as
    // well.
    static THotPixels Find(const TImage& dark, double sigma, bool subtractedAsTheyAre = false);
    // A list as Text writes it, which may have been edited: "size WIDTH HEIGHT", then "X Y hot" or "X Y dead", one
    // pixel in a line; what stands behind # is a comment. Throws TToolError naming the line that makes no sense.
    static THotPixels Read(const std::string& path);
    std::string Text() const;

    // Those in a part of the frames, counted from its corner.
    THotPixels Cut(int left, int top, TSize part) const;
    // Replaces each, or each dead one, by the median of its neighbours that are not in the list: those around it, or
    // where fewer than three of them are good, of a wider square.
    void Repair(TImage& image, bool onlyDead = false) const;

    TSize Size() const { return size; }
    const std::vector<TPixel>& Pixels() const { return pixels; }
    std::string Counts() const; // "12 hot and 1 dead pixel"

private:
    std::vector<bool> Bad() const;

    TSize size;
    std::vector<TPixel> pixels; // row by row, each once
};

} // namespace workbench

#endif
