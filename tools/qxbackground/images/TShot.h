#ifndef QXBACKGROUND_IMAGES_TSHOT_H
#define QXBACKGROUND_IMAGES_TSHOT_H

#include "images/TPageMetadata.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

// How a frame was taken, as far as its file says so: what decides which dark frames belong to it.
struct TShot {
    std::optional<double> exposureSeconds;
    std::optional<double> gain;
    std::optional<int> binningX, binningY;
    std::optional<double> sensorCelsius;
    std::optional<std::int64_t> day; // since 1970-01-01
    std::optional<int> bits;         // of the camera's values
    bool isUnexposed = false;        // see TPageMetadata, as of the next one
    TUnusableSettings unusable;

    bool HasBinning() const { return binningX || binningY; }
    // What is said of the exposure, 0 as well.
    std::optional<double> SaidSeconds() const { return isUnexposed ? std::optional<double>(0) : exposureSeconds; }
    // Why it has no exposure to scale with, and that `option` gives it.
    std::string WithoutExposure(const std::string& option) const;
    void ForgetExposure();
    // "60 s, gain 100, binning 2 x 2, -10 C": what is known of it.
    std::string Text() const;
};

TShot ShotOf(const TPageMetadata& metadata);

// Whether two numbers of headers mean the same: what a shutter or a unit adds is no difference.
bool IsSameSetting(double one, double other);

// What two frames say differently: "exposure", "60 s", "30 s". Neither saying nothing nor the temperature counts, which
// nobody sets to the digit.
struct TShotDifference {
    std::string what, one, other;
};
std::vector<TShotDifference> Differences(const TShot& one, const TShot& other);

} // namespace workbench

#endif
