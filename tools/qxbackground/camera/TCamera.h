#ifndef QXBACKGROUND_CAMERA_TCAMERA_H
#define QXBACKGROUND_CAMERA_TCAMERA_H

#include "images/TImage.h"

#include <cstdint>
#include <vector>

namespace workbench {

// The usual linear model of an image sensor. Of one pixel and one exposure of t seconds:
//
//   charge  = Poisson(dark current * t) + Poisson(scene * t)             electrons (e-)
//   value   = offset + column offset + (charge + read noise) / gain      ADU, rounded, cut to 0 ... 65535
//
// The dark current of a pixel is the sensor's mean, times a glow that doubles it towards one corner, times a spread
// between banks of eight columns (each with a readout of its own) and between pixels; hot pixels have twenty and more
// times as much. Dark frames may be hit by cosmic rays, tracks of a few pixels, and their level may drift, through the
// camera's own level once in ten frames. The offset and its column pattern do not grow with exposure. The scene is a
// flat sky with stars. Light intensity is 100 % throughout.
struct TCameraSettings {
    std::uint64_t seed = 1;
    TSize size{512, 512};
    double gainElectronsPerAdu = 2.0;
    double offsetAdu = 24;
    double columnOffsetSpreadAdu = 2;
    double darkElectronsPerSecond = 240;
    double darkColumnSpread = 0.06; // of the dark current, from bank to bank
    double darkPixelSpread = 0.02;
    double hotPixelFraction = 0.0005;
    double readNoiseElectrons = 6;
    double skyElectronsPerSecond = 500;
    int stars = 60;
    double glow = 1;                // how much of the dark current it adds in the corner
    double cosmicRaysPerSecond = 0; // mean number in dark frames
    double driftAdu = 0;            // of the level of dark frames: from so much below to so much above
    int bits = 16;                  // values are cut to 0 ... 2^bits - 1
};

class TCamera {
public:
    explicit TCamera(const TCameraSettings& settings);

    // A frame with or without light. The same (exposure, frame, lit) always gives the same frame.
    TImage Take(double exposureSeconds, unsigned frame, bool lit) const;

    // What a noise-free camera without any background would show, and the noise-free background alone.
    TImage TrueScene(double exposureSeconds) const;
    TImage TrueBackground(double exposureSeconds) const;

    std::uint64_t HotPixels() const { return hotPixels; }

private:
    TImage Blank() const;
    std::vector<double> Rays(double exposureSeconds, unsigned frame) const;

    TCameraSettings settings;
    std::vector<double> offsetOfColumn; // ADU
    std::vector<double> darkCurrent;    // e-/s of each pixel
    std::vector<double> scene;          // e-/s of each pixel
    std::uint64_t hotPixels = 0;
};

} // namespace workbench

#endif
