// The comfort header's images and delegates.
#include "ComfortChecks.h"

#include <array>
#include <climits>

using Checks::Equal;
using Checks::Text;
using Checks::That;
using namespace QX_KRLSDK;

namespace {

// A 3 x 2 correction of 10 everywhere, at its own exposure and intensity.
TBackgroundCorrection MakeExample(const TBackgroundCorrectionLibrary& library)
{
    TBackgroundCorrection object = library.MakeProcessor();
    const TPixels dark{10, 10, 10, 10, 10, 10};
    object.Add("dark", {{dark, 3, 2}}, 1.0f, 100.0f);
    object.SetExposureAndIntensity(1.0f, 100.0f);
    object.SetActive("dark");
    return object;
}

// Writes down how it was called, and returns `code`.
class TNoting : public ICorrectionDelegate {
public:
    unsigned int SubtractInPlace(unsigned short* image, const unsigned short* background, int width, int height,
                                 bool processing, bool option) override
    {
        return Note("in place", nullptr, image, background, width, height, processing, option);
    }
    unsigned int SubtractInto(unsigned short* output, const unsigned short* image, const unsigned short* background,
                              int width, int height, bool processing, bool option) override
    {
        return Note("into", output, image, background, width, height, processing, option);
    }
    unsigned int ProcessInPlace(unsigned short* image, int width, int height) override
    {
        return Note("process", nullptr, image, nullptr, width, height, false, false);
    }

    std::string call = "none";
    unsigned int code = kSuccess;

private:
    unsigned int Note(const char* name, const unsigned short* output, const unsigned short* image,
                      const unsigned short* background, int width, int height, bool processing, bool option)
    {
        const auto first = [](const unsigned short* pixels) { return pixels == nullptr ? -1 : int{*pixels}; };
        call = name + (" " + Text(first(output), first(image), first(background), width, height, processing, option));
        return code;
    }
};

} // namespace

void CheckImageViews()
{
    TPixels pixels(6, 1);
    const TImageView view(pixels, 3, 2);
    That(view.Pixels() == pixels.data() && view.Width() == 3 && view.Height() == 2 && view.Length() == 6, "a view");
    const TConstImageView readable = view;
    That(readable.Pixels() == pixels.data() && readable.Length() == 6, "a view to read");
    const std::array<unsigned short, 6> fixed{};
    That(TConstImageView(fixed, 2, 3).Height() == 3, "a view of an array");
    static_assert(!std::is_constructible_v<TImageView, const TPixels&, int, int> &&
                  !std::is_constructible_v<TImageView, TConstImageView> &&
                  !std::is_constructible_v<TImageView, std::vector<short>&, int, int>);
    That(TImageView(nullptr, INT_MAX, 1).Length() == INT_MAX, "the largest image");

    const std::string length = "514 The buffer of an image of 4 x 2 pixels has 6.";
    Equal(Refusal([&] { TImageView(pixels, 4, 2); }), length, "a buffer too small");
    Equal(Refusal([&] { TConstImageView(fixed, 4, 2); }), length, "an array too small");
    Equal(Refusal([&] { TImageView(pixels.data(), pixels.size(), 4, 2); }), length, "a counted buffer too small");
    Equal(Refusal([&] { TImageView(pixels, 2, 2); }), "514 The buffer of an image of 2 x 2 pixels has 6.",
          "a buffer too large");
    const int sizes[][2] = {{0, 2}, {2, 0}, {-1, -6}, {65536, 32768}, {46341, 46341}, {65536, 65536}};
    for (const auto& size : sizes)
        Equal(Refusal([&] { TImageView(pixels.data(), size[0], size[1]); }),
              "514 An image cannot have " + Text(size[0]) + " x " + Text(size[1]) + " pixels.", "a size that is none");
}

void CheckImages(const TBackgroundCorrectionLibrary& library)
{
    TBackgroundCorrection object = MakeExample(library);
    const TPixels image{5, 10, 11, 100, 65535, 0};
    const std::string corrected = "0 0 1 90 65525 0";
    TPixels inPlace = image, output(6, 7);
    object.Apply({inPlace, 3, 2});
    Equal(PixelText(inPlace), corrected, "in place");
    inPlace = image;
    object.Apply(inPlace.data(), 6);
    Equal(PixelText(inPlace), corrected, "in place, by pointer");
    object.Apply({image, 3, 2}, {output, 3, 2});
    Equal(PixelText(output), corrected, "into another image");
    output.assign(6, 7);
    object.Apply(image.data(), output.data(), 6);
    Equal(PixelText(output), corrected, "into another image, by pointer");

    output.assign(6, 7);
    Equal(Refusal([&] { object.Apply({image, 3, 2}, {output, 2, 3}); }), "516 Image and output differ in size.",
          "an output of another shape");
    TPixels large(8, 500);
    Equal(Refusal([&] { object.Apply({large, 4, 2}); }), "514 The input image size does not match parameters.",
          "an image that is not of the region's size");
    Equal(PixelText(large) + "|" + PixelText(output), "500 500 500 500 500 500 500 500|7 7 7 7 7 7",
          "what was refused is left alone");
    Equal(Refusal([&] { object.Apply(TImageView(nullptr, 3, 2)); }), "513 The input image is NULL.", "no pixels");
}

void CheckDelegates(const TBackgroundCorrectionLibrary& library)
{
    TBackgroundCorrection object = MakeExample(library);
    TPixels image(6, 3), output(6, 4);
    TNoting delegate;
    object.Apply({image, 3, 2}, delegate);
    Equal(delegate.call, "in place -1 3,10,3,2,0,0", "in place by a delegate");
    object.Apply({image, 3, 2}, delegate, {true, false});
    Equal(delegate.call, "in place -1 3,10,3,2,1,0", "the flag of processing");
    object.Apply({image, 3, 2}, {output, 3, 2}, delegate, {false, true});
    Equal(delegate.call, "into 4 3,10,3,2,0,1", "into another image by a delegate; the flag of its own");
    object.Apply(TImageView(nullptr, 3, 2), delegate);
    Equal(delegate.call, "in place -1 -1,10,3,2,0,0", "an image that is elsewhere");
    Equal(PixelText(image), "3 3 3 3 3 3", "the library leaves it to the delegate");

    delegate.call = "none";
    Equal(Refusal([&] { object.Apply(TImageView(nullptr, 3, 2), delegate, {true, false}); }),
          "513 The input image is NULL.", "an image elsewhere that is to be processed");
    Equal(Refusal([&] { object.Apply({image, 3, 2}, {output, 2, 3}, delegate); }),
          "516 Image and output differ in size.", "an output of another shape");
    Equal(delegate.call, "none", "calls after refusals");
    delegate.code = 4711;
    Equal(Refusal([&] { object.Apply({image, 3, 2}, delegate); }), "4711 The delegate returned code 4711.",
          "a code of the delegate's own");

    delegate.code = kSuccess;
    object.Deactivate();
    delegate.call = "none";
    object.Apply({image, 3, 2}, delegate);
    Equal(delegate.call, "none", "with nothing active");
    object.Apply({image, 3, 2}, delegate, {true, true});
    Equal(delegate.call, "process -1 3,-1,3,2,0,0", "processing with nothing active");
}

void CheckCallables(const TBackgroundCorrectionLibrary& library)
{
    TBackgroundCorrection object = MakeExample(library);
    TPixels image(6, 30), output(6, 4);
    const auto add = [](const TDelegateTask& task) {
        for (std::size_t i = 0; i < task.Length(); ++i)
            task.output[i] = static_cast<unsigned short>(task.image[i] + task.background[i] + task.flags.option);
    };
    object.Apply({image, 3, 2}, add);
    Equal(PixelText(image), "40 40 40 40 40 40", "in place by a callable");
    object.Apply({image, 3, 2}, {output, 3, 2}, add, {false, true});
    Equal(PixelText(output), "51 51 51 51 51 51", "into another image by a callable");
    int calls = 0;
    object.Apply(TImageView(nullptr, 3, 2), [&calls](const TDelegateTask& task) {
        calls += task.image == nullptr && task.output == nullptr && task.width == 3 && task.height == 2;
        return kSuccess;
    });
    Equal(Text(calls), "1", "a callable for an image elsewhere");

    Equal(Refusal([&] { object.Apply({image, 3, 2}, [](const TDelegateTask&) { return 88u; }); }),
          "88 The delegate returned code 88.", "a callable's code");
    const std::string length = "514 The input image size does not match parameters.";
    Equal(Refusal([&] { object.Apply({image.data(), 2, 2}, add); }), length, "a refusal before the callable");
    Equal(Refusal([&] { object.Apply({image, 3, 2}, {output, 2, 3}, add); }), "516 Image and output differ in size.",
          "an output of another shape");
    const auto throwing = [](auto error) { return [error](const TDelegateTask&) { throw error; }; };
    Equal(Refusal([&] { object.Apply({image, 3, 2}, throwing(std::runtime_error("device lost"))); }),
          "1024 device lost", "an exception of a callable");
    Equal(
        Refusal([&] { object.Apply({image, 3, 2}, {output, 3, 2}, throwing(TBackgroundCorrectionError(99, "own"))); }),
        "99 own", "its own code");
    Equal(Refusal([&] { object.Apply({image, 3, 2}, throwing(TBackgroundCorrectionError(0, "zero"))); }), "1024 zero",
          "an exception that says success");
    Equal(Refusal([&] { object.Apply({image, 3, 2}, throwing(5)); }),
          "1024 The delegate threw something that is no std::exception.", "something else thrown");
    Equal(Refusal([&] { object.Apply({image, 3, 2}, throwing(std::runtime_error(std::string(300, 'x')))); }),
          "1024 " + std::string(255, 'x'), "a long text");
    object.Apply({image, 3, 2});
    Equal(PixelText(image), "30 30 30 30 30 30", "the object goes on");

    object.Deactivate();
    TCallableDelegate keeping([&calls](const TDelegateTask& task) { calls += task.background == nullptr ? 10 : 100; });
    object.Apply({image, 3, 2}, keeping, {true, false});
    Equal(Text(calls), "11", "processing by a delegate that keeps its callable");
}
