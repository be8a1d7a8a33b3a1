// A host that subtracts by itself. The library keeps corrections and settings, scales the background, and hands it over
// with each image: to an object of the host's own class, or to a lambda.
#include "QX_BackgroundCorrection.hpp"

#include <cstdio>
#include <vector>

using namespace QX_KRLSDK;

namespace {

// Leaves a pedestal under every image, so that noise below the background is not cut off at 0. A class like this needs
// QX_BackgroundCorrection.h only. Its operations are called before ApplyCorrection returns, while the object is locked;
// they must not throw, and what they return becomes the result of ApplyCorrection.
class TPedestal : public ICorrectionDelegate {
public:
    explicit TPedestal(int height) : pedestal(height) {}

    // An image that is corrected in place. `background` is valid during this call only.
    unsigned int SubtractInPlace(unsigned short* image, const unsigned short* background, int width, int height,
                                 bool delegateProcessing, bool delegateOption) override
    {
        return SubtractInto(image, image, background, width, height, delegateProcessing, delegateOption);
    }
    // An image that is corrected into another one.
    unsigned int SubtractInto(unsigned short* output, const unsigned short* image, const unsigned short* background,
                              int width, int height, bool, bool) override
    {
        for (int i = 0; i < width * height; ++i) {
            const int value = image[i] - background[i] + pedestal;
            output[i] = static_cast<unsigned short>(value < 0 ? 0 : value > 65535 ? 65535 : value);
        }
        return kSuccess;
    }
    // An image with nothing to subtract. Called only when the host asks for delegateProcessing.
    unsigned int ProcessInPlace(unsigned short* image, int width, int height) override
    {
        for (int i = 0; i < width * height; ++i)
            image[i] = static_cast<unsigned short>(image[i] + pedestal > 65535 ? 65535 : image[i] + pedestal);
        return kSuccess;
    }

private:
    int pedestal;
};

} // namespace

int main(int argumentCount, char** arguments)
try {
    const TBackgroundCorrectionLibrary library(argumentCount > 1 ? arguments[1]
                                                                 : TBackgroundCorrectionLibrary::DefaultName());
    TBackgroundCorrection correction = library.MakeProcessor();
    const std::vector<unsigned short> dark(16 * 16, 100);
    correction.Add("dark", {{dark, 16, 16}}, 0.1f, 100.0f); // seconds, percent
    correction.SetActive("dark");
    correction.SetExposureAndIntensity(0.2f, 100.0f); // of the images to come: the background becomes 200

    std::vector<unsigned short> image(16 * 16, 190), output(16 * 16);
    TPedestal pedestal(50);
    correction.Apply({image, 16, 16}, {output, 16, 16}, pedestal);
    std::printf("190 became %d\n", int{output[0]});

    correction.Apply({image, 16, 16}, pedestal); // in place
    correction.Deactivate();
    correction.Apply({image, 16, 16}, pedestal, {true, false}); // nothing to subtract: ProcessInPlace
    std::printf("and then %d\n", int{image[0]});

    // The same by a lambda, which may throw. Here it only looks at what it is given.
    correction.SetActive("dark");
    int below = 0;
    correction.Apply({image, 16, 16}, [&below](const TDelegateTask& task) {
        for (std::size_t i = 0; i < task.Length(); ++i)
            below += task.image[i] < task.background[i];
    });
    std::printf("%d pixels are below the background\n", below);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "host_with_delegate: %s\n", error.what());
    return 1;
}
