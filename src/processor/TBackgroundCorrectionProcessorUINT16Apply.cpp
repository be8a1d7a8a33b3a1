// Scaling the background to the images at hand, and subtracting it.
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include "boundary/Messages.h"
#include "data/PixelMemory.h"

#include <cstring>

using namespace QX_KRLSDK;

namespace {

// output[i] = max(0, image[i] - background[i]); `output` may be `image`, and overlaps neither otherwise. Without an
// image there is nothing to do.
void SubtractBackground(std::uint16_t* output, const std::uint16_t* image, const std::uint16_t* background,
                        std::size_t count) noexcept
{
    if (image == nullptr) {
        return;
    }
    if (output == image) {
        Kernels::SubtractInPlace(output, background, count);
    } else {
        Kernels::SubtractInto(output, image, background, count);
    }
}

} // namespace

// In single precision and in this order. Untouched settings (both -1) make the first product 1.
float TBackgroundCorrectionProcessorUINT16::ScaleFactor() const noexcept
{
    const float product = (lightIntensity * exposure) * correctionLevel.load(std::memory_order_relaxed);
    const float reference = activeEntry->ReferenceIntensityPercent() * activeEntry->ReferenceExposureSeconds();
    return product / reference;
}

std::uint16_t* TBackgroundCorrectionProcessorUINT16::ScaledBackground() const noexcept
{
    return PixelsApart(scaledBackground.get(), scaledBackgroundLength);
}

// Always from the stored pixels, never from the last result: repeated changes must not add up rounding errors.
unsigned int TBackgroundCorrectionProcessorUINT16::RecalculateScaledBackground() noexcept
{
    if (activeEntry == nullptr) {
        scaledBackground.reset();
        scaledBackgroundLength = 0;
        return kSuccess;
    }
    const std::uint32_t width = static_cast<std::uint32_t>(regionWidth);
    const std::uint32_t height = static_cast<std::uint32_t>(regionHeight);
    const std::size_t length = TBackgroundCorrectionEntry::PixelCount(width, height); // 0: too large for memory
    if (scaledBackground == nullptr || length != scaledBackgroundLength) {
        scaledBackground.reset();
        scaledBackground.reset(length > 0 ? AllocatePixelsApart(length) : nullptr);
        scaledBackgroundLength = scaledBackground != nullptr ? length : 0;
    }
    if (scaledBackground == nullptr) {
        return Fail(kOperationFailed, Messages::kErrorAllocating);
    }
    activeEntry->CopyRegion(ScaledBackground(), static_cast<std::uint32_t>(regionLeft),
                            static_cast<std::uint32_t>(regionTop), width, height, ScaleFactor());
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::ApplyCorrection(unsigned short* image, int imageLength,
                                                                   unsigned short* output, int outputLength,
                                                                   ICorrectionDelegate* delegate, bool useDelegate,
                                                                   bool delegateProcessing, bool delegateOption)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (image == nullptr && !(useDelegate && !delegateProcessing)) {
        return Fail(kFirstArgumentInvalid, Messages::kInputImageNull);
    }
    if (output != nullptr && imageLength != outputLength) {
        return Fail(kFourthArgumentInvalid, Messages::kImageSizesDiffer);
    }
    if (std::int64_t{imageLength} != std::int64_t{regionWidth} * regionHeight) {
        return Fail(kSecondArgumentInvalid, Messages::kImageSizeWrong);
    }
    const bool delegated = useDelegate && delegate != nullptr;
    const std::size_t length = static_cast<std::size_t>(imageLength);
    if (!correctionActive) {
        if (output != nullptr && output != image && image != nullptr) {
            std::memmove(output, image, length * sizeof *image);
        }
        return delegated && delegateProcessing ? delegate->ProcessInPlace(image, regionWidth, regionHeight) : kSuccess;
    }
    // An active correction without a background: there was not enough memory for it, or it was never calculated because
    // the object was in header-only mode when the correction was chosen.
    if (scaledBackground == nullptr || scaledBackgroundLength != length) {
        return Fail(kOperationFailed, Messages::kErrorAllocating);
    }
    const std::uint16_t* const background = ScaledBackground();
    if (output == nullptr) {
        if (delegated) {
            return delegate->SubtractInPlace(image, background, regionWidth, regionHeight, delegateProcessing,
                                             delegateOption);
        }
        SubtractBackground(image, image, background, length);
        return kSuccess;
    }
    if (delegated) {
        return delegate->SubtractInto(output, image, background, regionWidth, regionHeight, delegateProcessing,
                                      delegateOption);
    }
    SubtractBackground(output, image, background, length);
    return kSuccess;
}
