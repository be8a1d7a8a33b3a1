// The processor's settings and the queries about them.
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include "boundary/Messages.h"

#include <algorithm>

using namespace QX_KRLSDK;

namespace {

template <typename TValue> void StoreIfWanted(TValue* destination, TValue value)
{
    if (destination != nullptr) {
        *destination = value;
    }
}

// Whether [start, start + length) reaches beyond `size`. Sizes of corrections count as signed here: a description
// without pixels can claim 4294967295 columns, which is -1, and no region lies within that. The sum is taken in 64
// bits, so that it does not wrap.
bool ReachesBeyond(std::uint32_t size, int start, int length)
{
    return std::int64_t{static_cast<std::int32_t>(size)} < std::int64_t{start} + length;
}

} // namespace

unsigned int TBackgroundCorrectionProcessorUINT16::SetCorrectionLevel(int percent)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    const float clamped = static_cast<float>(std::max(0, std::min(percent, 100)));
    correctionLevel.store(static_cast<float>(static_cast<double>(clamped) / 100.0), std::memory_order_relaxed);
    RecalculateScaledBackground();
    return kSuccess;
}

int TBackgroundCorrectionProcessorUINT16::GetCorrectionLevel()
{
    // Truncated, not rounded, although the fraction is inexact: hosts rely on these values.
    return static_cast<int>(static_cast<double>(correctionLevel.load(std::memory_order_relaxed)) * 100.0);
}

unsigned int TBackgroundCorrectionProcessorUINT16::SetExposureAndIntensity(float exposureSeconds,
                                                                           float lightIntensityPercent)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    exposure = exposureSeconds;
    lightIntensity = lightIntensityPercent;
    RecalculateScaledBackground();
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::GetExposureAndIntensity(float* exposureSeconds,
                                                                           float* lightIntensityPercent)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    StoreIfWanted(exposureSeconds, exposure);
    StoreIfWanted(lightIntensityPercent, lightIntensity);
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::GetReferenceExposureAndIntensity(float* exposureSeconds,
                                                                                    float* lightIntensityPercent)
{
    const TGuard guard(lock.Get());
    if (activeEntry != nullptr) {
        StoreIfWanted(exposureSeconds, activeEntry->ReferenceExposureSeconds());
        StoreIfWanted(lightIntensityPercent, activeEntry->ReferenceIntensityPercent());
    }
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::GetCorrectionStatistics(unsigned short* minimum,
                                                                           unsigned short* maximum,
                                                                           unsigned short* average)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnlyStatistics);
    }
    if (activeEntry != nullptr && activeEntry->HasPixels()) {
        const Kernels::TStatistics& statistics = activeEntry->Statistics();
        StoreIfWanted(minimum, statistics.minimum);
        StoreIfWanted(maximum, statistics.maximum);
        StoreIfWanted(average, statistics.average);
    }
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::GetScaledCorrectionStatistics(unsigned short* minimum,
                                                                                 unsigned short* maximum,
                                                                                 unsigned short* average)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (activeEntry != nullptr && scaledBackground != nullptr) {
        const Kernels::TStatistics statistics =
            Kernels::CalculateStatistics(ScaledBackground(), scaledBackgroundLength);
        StoreIfWanted(minimum, statistics.minimum);
        StoreIfWanted(maximum, statistics.maximum);
        StoreIfWanted(average, statistics.average);
    }
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::SetRegion(int left, int top, int width, int height)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (left < 0 || (activeEntry != nullptr && ReachesBeyond(activeEntry->Width(), left, 1))) {
        return Fail(kFirstArgumentInvalid, Messages::kLeftOutOfRange, left);
    }
    if (top < 0 || (activeEntry != nullptr && ReachesBeyond(activeEntry->Height(), top, 1))) {
        return Fail(kSecondArgumentInvalid, Messages::kTopOutOfRange, top);
    }
    if (width < 1 || (activeEntry != nullptr && ReachesBeyond(activeEntry->Width(), left, width))) {
        return Fail(kThirdArgumentInvalid, Messages::kWidthOutOfRange, width);
    }
    if (height < 1 || (activeEntry != nullptr && ReachesBeyond(activeEntry->Height(), top, height))) {
        return Fail(kFourthArgumentInvalid, Messages::kHeightOutOfRange, height);
    }
    regionLeft = left;
    regionTop = top;
    regionWidth = width;
    regionHeight = height;
    RecalculateScaledBackground();
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::GetRegion(int* left, int* top, int* width, int* height)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (left == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kInputLeftNull);
    }
    if (top == nullptr) {
        return Fail(kSecondArgumentInvalid, Messages::kInputTopNull);
    }
    if (width == nullptr) {
        return Fail(kThirdArgumentInvalid, Messages::kInputWidthNull);
    }
    if (height == nullptr) {
        // Not the fourth argument's code: hosts have always seen 515 here.
        return Fail(kThirdArgumentInvalid, Messages::kInputHeightNull);
    }
    *left = regionLeft;
    *top = regionTop;
    *width = regionWidth;
    *height = regionHeight;
    return kSuccess;
}
