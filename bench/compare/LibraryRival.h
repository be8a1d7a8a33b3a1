// The library as a host has it: through its exports, lock and checks included.
#ifndef BENCH_COMPARE_LIBRARYRIVAL_H
#define BENCH_COMPARE_LIBRARYRIVAL_H

#include "QX_BackgroundCorrection.h"

#include <cstddef>
#include <cstdint>
#include <memory>

class TLibraryRival {
public:
    // With a correction of width x height pixels made of one frame, active and scaled by 1. Ends the process with a
    // message when an operation fails, as the others do.
    TLibraryRival(int width, int height, const std::uint16_t* background);
    TLibraryRival(int size, const std::uint16_t* background) : TLibraryRival(size, size, background) {}

    // From now on images are of this region of the correction.
    void SetRegion(int left, int top, int width, int height);

    // Subtracts, in place without an output.
    void Apply(std::uint16_t* image, std::uint16_t* output) const;

    // Scales the background anew, by factors on both sides of 1 in turn.
    void ChangeSetting();

    // Makes a correction of these frames and removes it again.
    void AddCorrection(std::uint16_t* const* frames, int frameCount) const;

    // Minimum, maximum and average of the scaled background; gives the average.
    std::uint16_t Statistics() const;

private:
    struct TRelease {
        void operator()(QX_KRLSDK::QX_IBackgroundCorrection* object) const;
    };

    int width;
    int height;
    int length;
    float exposure = 1.0f;
    std::unique_ptr<QX_KRLSDK::QX_IBackgroundCorrection, TRelease> object;
};

#endif
