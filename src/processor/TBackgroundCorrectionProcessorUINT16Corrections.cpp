// The processor's corrections: adding, choosing, listing, removing, importing.
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include "boundary/Messages.h"
#include "boundary/RunTimeType.h"
#include "boundary/TZRException.h"

#include <cstring>

using namespace QX_KRLSDK;

unsigned int TBackgroundCorrectionProcessorUINT16::AddCorrection(const char* key, const unsigned short** frames,
                                                                 int frameCount, int width, int height,
                                                                 float exposureSeconds, float lightIntensityPercent)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (key == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kInputKeyNull);
    }
    if (frames == nullptr) {
        return Fail(kSecondArgumentInvalid, Messages::kInputImagesNull);
    }
    if (frameCount < 1) {
        return Fail(kThirdArgumentInvalid, Messages::kInvalidNumberOfImages);
    }
    if (width < 1) {
        return Fail(kFourthArgumentInvalid, Messages::kInvalidWidth);
    }
    if (height < 1) {
        return Fail(kFifthArgumentInvalid, Messages::kInvalidHeight);
    }
    // Written so that a NaN passes: such a correction is stored with NaN as its reference.
    if (0.0f >= exposureSeconds) {
        return Fail(kSixthArgumentInvalid, Messages::kExposureNotPositive);
    }
    if (0.0f >= lightIntensityPercent) {
        return Fail(kSeventhArgumentInvalid, Messages::kIntensityNotPositive);
    }
    try {
        corrections->CreateAndAddEntry(key, frames, static_cast<std::uint32_t>(frameCount),
                                       static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                                       exposureSeconds, lightIntensityPercent);
    } catch (const TZRException& error) {
        return Fail(kFirstArgumentInvalid, Messages::kCouldNotAdd, error.what());
    }
    modified = true;
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::SetActiveCorrection(const char* key)
{
    const TGuard guard(lock.Get());
    if (key == nullptr) {
        Deactivate();
        return kSuccess;
    }
    TBackgroundCorrectionEntry* const found = corrections->FindEntry(key);
    if (found == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kKeyNotFound, key);
    }
    activeEntry = found;
    SetRegion(0, 0, static_cast<int>(found->Width()), static_cast<int>(found->Height()));
    correctionActive = true;
    return kSuccess;
}

const char* TBackgroundCorrectionProcessorUINT16::GetActiveCorrectionKey()
{
    const TGuard guard(lock.Get());
    return activeEntry != nullptr ? activeEntry->Key() : nullptr;
}

const char* TBackgroundCorrectionProcessorUINT16::GetCorrectionKey(unsigned int index)
{
    const TGuard guard(lock.Get());
    return index < corrections->Count() ? corrections->EntryAt(index).Key() : nullptr;
}

unsigned int TBackgroundCorrectionProcessorUINT16::GetNumberOfCorrections()
{
    const TGuard guard(lock.Get());
    return static_cast<unsigned int>(corrections->Count());
}

unsigned int TBackgroundCorrectionProcessorUINT16::ClearCorrections()
{
    const TGuard guard(lock.Get());
    corrections->ClearEntries();
    SetActiveCorrection(nullptr);
    headerOnly = false;
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::DeleteCorrection(const char* key)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (key == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kSuppliedKeyNull);
    }
    if (activeEntry != nullptr && std::strcmp(activeEntry->Key(), key) == 0) {
        return Fail(kFirstArgumentInvalid, Messages::kSuppliedKeyActive);
    }
    // The test above is exact while the list ignores letter case, so the active correction may be the one that goes.
    const TBackgroundCorrectionEntry* const found = corrections->FindEntry(key);
    if (found == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kSuppliedKeyNotFound, key);
    }
    if (found == activeEntry) {
        Deactivate();
    }
    corrections->RemoveEntry(key);
    modified = true;
    return kSuccess;
}

unsigned int TBackgroundCorrectionProcessorUINT16::ImportCorrections(QX_IBackgroundCorrection* source, bool overwrite)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (source == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kImportSourceNull);
    }
    auto* const processor = RunTimeType::Cast<TBackgroundCorrectionProcessorUINT16>(source);
    if (processor == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kImportSourceWrongType);
    }
    const TGuard sourceGuard(processor->lock.Get());
    if (corrections->ImportEntries(*processor->corrections, overwrite) != 0) {
        return Fail(kFirstArgumentInvalid, Messages::kImportFailed);
    }
    modified = true;
    return kSuccess;
}

TBackgroundCorrectionEntry* TBackgroundCorrectionProcessorUINT16::GetEntryAt(unsigned int index)
{
    const TGuard guard(lock.Get());
    return index < static_cast<unsigned int>(corrections->Count()) ? &corrections->EntryAt(index) : nullptr;
}

TBackgroundCorrectionEntry* TBackgroundCorrectionProcessorUINT16::FindEntrySpelled(const char* key)
{
    const TGuard guard(lock.Get());
    TBackgroundCorrectionEntry* const found = corrections->FindEntry(key);
    return found != nullptr && std::strcmp(found->Key(), key) == 0 ? found : nullptr;
}

unsigned int TBackgroundCorrectionProcessorUINT16::AddEntryCopy(const TBackgroundCorrectionEntry& entry)
{
    const TGuard guard(lock.Get());
    try {
        corrections->AddEntry(entry);
    } catch (const TZRException& error) {
        return Fail(kOperationFailed, Messages::kCouldNotCreateEntry, error.what());
    }
    modified = true;
    return kSuccess;
}
