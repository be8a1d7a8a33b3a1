#ifndef QXBACKGROUND_STACKS_TNOISYPIXELS_H
#define QXBACKGROUND_STACKS_TNOISYPIXELS_H

#include "images/TImage.h"
#include "stacks/TDarkNoise.h"
#include "stacks/THotPixels.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// Pixels whose dark current is more than that of most, hot ones and those in a glow: what is known of it can be
// subtracted, its noise cannot. An image's pixel is drawn to what its neighbours foretell, by as much of its noise as
// dark current beyond the usual has brought, and as far as neighbours foretell one another thereabouts: where a star or
// an edge makes them fail it keeps its own value. So it does when it is brighter by more than noise explains, which is
// light; a hot one that is darker by so much has lost its value, and erratic pixels, which vary more than their level
// explains, are not believed either.
class TNoisyPixels {
public:
    TNoisyPixels() = default;
    // `dark`: the average of so many dark frames, less the bias where there is one; `law`: of one of them, and what was
    // `measured` of each pixel.
    TNoisyPixels(TSize frameSize, const std::vector<float>& dark, const TNoiseLaw& law,
                 const std::vector<float>& measured, std::uint64_t frames);

    // For images that show a part of the frames.
    TNoisyPixels Cut(int left, int top, TSize part) const;
    // What the images have: so many times the charge of the dark frames, of which the share `level` is subtracted, and
    // these hot pixels.
    void Expect(double times, double level, const THotPixels& hot);

    // Of an image from which the dark frames were subtracted as they are, and to which a pedestal was added.
    void Repair(TImage& image, int pedestal) const;

    TSize Size() const { return size; }
    std::string Counts() const; // "12 pixels, 1 of them erratic"

private:
    enum TKind : std::uint8_t { Usual, Noisy, Erratic, Dead };

    class TTile;

    TSize size;               // of no width: none
    std::vector<float> above; // of each pixel, ADU of dark current beyond that of most; never below 0
    std::vector<bool> erratic;
    TNoiseLaw law;
    double frames = 1;
    std::vector<TKind> kinds;
    double usualVariance = 0;  // ADU^2, of a dark pixel in an image
    double variancePerAdu = 0; // of what a pixel has above most
};

} // namespace workbench

#endif
