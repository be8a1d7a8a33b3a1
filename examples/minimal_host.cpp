// The smallest useful host: one correction out of two dark frames, applied to an image of twice the exposure.
#include "QX_BackgroundCorrection.hpp"

#include <cstdio>
#include <vector>

int main(int argumentCount, char** arguments)
try {
    using namespace QX_KRLSDK;
    const TBackgroundCorrectionLibrary library(argumentCount > 1 ? arguments[1]
                                                                 : TBackgroundCorrectionLibrary::DefaultName());
    TBackgroundCorrection correction = library.MakeProcessor();

    const std::vector<unsigned short> dark1(16 * 16, 100), dark2(16 * 16, 103);
    correction.Add("dark", {{dark1, 16, 16}, {dark2, 16, 16}}, 0.1f, 100.0f); // seconds, percent
    correction.SetActive("dark");
    // Of the images to come. Without it the background would be divided by the dark frames' 0.1 s times 100 %.
    correction.SetExposureAndIntensity(0.2f, 100.0f);

    std::vector<unsigned short> image(16 * 16, 1000);
    correction.Apply({image, 16, 16});              // in place
    std::printf("1000 became %d\n", int{image[0]}); // the mean 101.5 rounds up to 102, twice the exposure makes it 204
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "minimal_host: %s\n", error.what());
    return 1;
}
