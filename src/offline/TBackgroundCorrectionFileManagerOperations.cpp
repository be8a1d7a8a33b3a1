// The store's operations on corrections and settings: each answers from the loaded group, or from what the store keeps.
#include "offline/TBackgroundCorrectionFileManager.h"

#include "boundary/Messages.h"

#include <cstring>
#include <utility>

using namespace QX_KRLSDK;

// Keys are copied before the group is switched: a host may hand in a text that belongs to the old group.
unsigned int TBackgroundCorrectionFileManager::AddCorrection(const char* key, const unsigned short** frames,
                                                             int frameCount, int width, int height, float exposure,
                                                             float lightIntensity)
{
    const TGuard guard(lock.Get());
    if (key == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kInputKeyNull);
    }
    const TDualString ownKey(key);
    unsigned int result = SelectGroup(ownKey);
    if (result != kSuccess) {
        return result;
    }
    TKeyText newKey(ownKey.Text()); // and room for it: once the correction is there, nothing may fail
    keys->ReserveOne();
    result = currentGroup.processor->AddCorrection(ownKey.Text(), frames, frameCount, width, height, exposure,
                                                   lightIntensity);
    if (result == kSuccess) {
        keys->Append(std::move(newKey));
    }
    return result;
}

unsigned int TBackgroundCorrectionFileManager::SetActiveCorrection(const char* key)
{
    const TGuard guard(lock.Get());
    if (key == nullptr) {
        return currentGroup.processor != nullptr ? currentGroup.processor->SetActiveCorrection(nullptr) : kSuccess;
    }
    const TDualString ownKey(key);
    const unsigned int result = SelectGroup(ownKey);
    return result == kSuccess ? currentGroup.processor->SetActiveCorrection(ownKey.Text()) : result;
}

const char* TBackgroundCorrectionFileManager::GetActiveCorrectionKey()
{
    const TGuard guard(lock.Get());
    return currentGroup.processor != nullptr ? currentGroup.processor->GetActiveCorrectionKey() : nullptr;
}

const char* TBackgroundCorrectionFileManager::GetCorrectionKey(unsigned int index)
{
    const TGuard guard(lock.Get());
    return index < keys->Count() ? keys->At(index).Text() : nullptr;
}

unsigned int TBackgroundCorrectionFileManager::GetNumberOfCorrections()
{
    const TGuard guard(lock.Get());
    return static_cast<unsigned int>(keys->Count());
}

unsigned int TBackgroundCorrectionFileManager::ClearCorrections()
{
    const TGuard guard(lock.Get());
    ReleaseCurrentGroup();
    keys->Clear();
    baseFileName = TDualString();
    spareFileName = TDualString();
    headerOnly = false;
    return kSuccess;
}

unsigned int TBackgroundCorrectionFileManager::DeleteCorrection(const char* key)
{
    const TGuard guard(lock.Get());
    if (key == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kInputKeyNull);
    }
    const TDualString ownKey(key);
    unsigned int result = SelectGroup(ownKey);
    if (result != kSuccess) {
        return result;
    }
    result = currentGroup.processor->DeleteCorrection(ownKey.Text());
    if (result == kSuccess) {
        keys->Remove(ownKey.Text()); // spelled exactly so: another spelling of the key stays
    }
    return result;
}

unsigned int TBackgroundCorrectionFileManager::SetCorrectionLevel(int percent)
{
    const TGuard guard(lock.Get());
    if (currentGroup.processor != nullptr) {
        const unsigned int result = currentGroup.processor->SetCorrectionLevel(percent);
        if (result != kSuccess) {
            return result;
        }
    }
    correctionLevel.store(percent, std::memory_order_relaxed);
    return kSuccess;
}

int TBackgroundCorrectionFileManager::GetCorrectionLevel()
{
    return correctionLevel.load(std::memory_order_relaxed);
}

unsigned int TBackgroundCorrectionFileManager::SetExposureAndIntensity(float exposure, float lightIntensity)
{
    const TGuard guard(lock.Get());
    if (currentGroup.processor != nullptr) {
        const unsigned int result = currentGroup.processor->SetExposureAndIntensity(exposure, lightIntensity);
        if (result != kSuccess) {
            return result;
        }
    }
    exposureSeconds = exposure;
    lightIntensityPercent = lightIntensity;
    return kSuccess;
}

unsigned int TBackgroundCorrectionFileManager::GetExposureAndIntensity(float* exposure, float* lightIntensity)
{
    const TGuard guard(lock.Get());
    if (exposure == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kExposurePointerNull);
    }
    if (lightIntensity == nullptr) {
        return Fail(kSecondArgumentInvalid, Messages::kIntensityPointerNull);
    }
    if (currentGroup.processor != nullptr) {
        return currentGroup.processor->GetExposureAndIntensity(exposure, lightIntensity);
    }
    *exposure = exposureSeconds;
    *lightIntensity = lightIntensityPercent;
    return kSuccess;
}

unsigned int TBackgroundCorrectionFileManager::GetReferenceExposureAndIntensity(float* exposure, float* lightIntensity)
{
    const TGuard guard(lock.Get());
    if (exposure == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kReferenceExposurePointerNull);
    }
    if (lightIntensity == nullptr) {
        return Fail(kSecondArgumentInvalid, Messages::kReferenceIntensityPointerNull);
    }
    if (currentGroup.processor == nullptr) {
        return Fail(kNoCorrectionActive, Messages::kNoCorrectionActive);
    }
    return currentGroup.processor->GetReferenceExposureAndIntensity(exposure, lightIntensity);
}

// The checks that both statistics operations begin with.
unsigned int TBackgroundCorrectionFileManager::CheckStatistics(const unsigned short* minimum,
                                                               const unsigned short* maximum,
                                                               const unsigned short* average)
{
    if (minimum == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kMinimumPointerNull);
    }
    if (maximum == nullptr) {
        return Fail(kSecondArgumentInvalid, Messages::kMaximumPointerNull);
    }
    if (average == nullptr) {
        return Fail(kThirdArgumentInvalid, Messages::kAveragePointerNull);
    }
    if (currentGroup.processor == nullptr) {
        return Fail(kNoCorrectionActive, Messages::kNoCorrectionActive);
    }
    return kSuccess;
}

unsigned int TBackgroundCorrectionFileManager::GetCorrectionStatistics(unsigned short* minimum, unsigned short* maximum,
                                                                       unsigned short* average)
{
    const TGuard guard(lock.Get());
    const unsigned int result = CheckStatistics(minimum, maximum, average);
    return result == kSuccess ? currentGroup.processor->GetCorrectionStatistics(minimum, maximum, average) : result;
}

unsigned int TBackgroundCorrectionFileManager::GetScaledCorrectionStatistics(unsigned short* minimum,
                                                                             unsigned short* maximum,
                                                                             unsigned short* average)
{
    const TGuard guard(lock.Get());
    const unsigned int result = CheckStatistics(minimum, maximum, average);
    return result == kSuccess ? currentGroup.processor->GetScaledCorrectionStatistics(minimum, maximum, average)
                              : result;
}

unsigned int TBackgroundCorrectionFileManager::ApplyCorrection(unsigned short* image, int imageLength,
                                                               unsigned short* output, int outputLength,
                                                               ICorrectionDelegate* delegate, bool useDelegate,
                                                               bool delegateProcessing, bool delegateOption)
{
    const TGuard guard(lock.Get());
    if (image == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kStoreImageNull);
    }
    if (currentGroup.processor != nullptr) {
        const TApplying call(*this);
        return call.processor->ApplyCorrection(image, imageLength, output, outputLength, delegate, useDelegate,
                                               delegateProcessing, delegateOption);
    }
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (output != nullptr) {
        if (imageLength != outputLength) {
            return Fail(kFourthArgumentInvalid, Messages::kImageSizesDiffer);
        }
        if (output != image && imageLength > 0) {
            std::memmove(output, image, static_cast<std::size_t>(imageLength) * sizeof *image);
        }
    }
    return useDelegate && delegate != nullptr ? delegate->ProcessInPlace(image, regionWidth, regionHeight) : kSuccess;
}

unsigned int TBackgroundCorrectionFileManager::SetRegion(int left, int top, int width, int height)
{
    const TGuard guard(lock.Get());
    if (currentGroup.processor != nullptr) {
        const unsigned int result = currentGroup.processor->SetRegion(left, top, width, height);
        if (result != kSuccess) {
            return result;
        }
    }
    regionLeft = left;
    regionTop = top;
    regionWidth = width;
    regionHeight = height;
    return kSuccess;
}

unsigned int TBackgroundCorrectionFileManager::GetRegion(int* left, int* top, int* width, int* height)
{
    const TGuard guard(lock.Get());
    if (left == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kLeftPointerNull);
    }
    if (top == nullptr) {
        return Fail(kSecondArgumentInvalid, Messages::kTopPointerNull);
    }
    if (width == nullptr) {
        return Fail(kThirdArgumentInvalid, Messages::kWidthPointerNull);
    }
    if (height == nullptr) {
        return Fail(kFourthArgumentInvalid, Messages::kHeightPointerNull);
    }
    if (currentGroup.processor != nullptr) {
        return currentGroup.processor->GetRegion(left, top, width, height);
    }
    *left = regionLeft;
    *top = regionTop;
    *width = regionWidth;
    *height = regionHeight;
    return kSuccess;
}
