// Switching between the groups of a store.
#include "offline/TBackgroundCorrectionFileManager.h"

#include "offline/GroupFiles.h"
#include "offline/GroupNaming.h"
#include "platform/FileStream.h"

#include <utility>

using namespace QX_KRLSDK;

namespace {

// A group file is there when it can be opened.
bool CanBeOpened(const TDualString& path)
{
    Platform::TFileStream probe;
    return probe.OpenForReading(path.Text());
}

} // namespace

// Makes the group that a key names the loaded one. On success a processor is loaded. A failure leaves the old group
// current; but a failure to write the old group back does not stop the switch, and its changes are then lost.
unsigned int TBackgroundCorrectionFileManager::SelectGroup(const TDualString& key)
{
    TTextList values;
    unsigned int result = GroupNaming::ExtractGroupValues(key, groupingNames, values);
    if (result != kSuccess) {
        return result;
    }
    if (!IsCurrentGroup(values)) {
        TDualString path;
        const bool exists =
            GroupNaming::BuildGroupFileName(baseFileName, groupingNames, values, path) == kSuccess && CanBeOpened(path);
        if (exists || !headerOnly) {
            auto processor = std::make_unique<TProcessor>();
            if (exists) {
                std::vector<std::string> fileNames; // what the file records is not compared with the store's names
                std::uint32_t structureVersion = 0;
                result = headerOnly ? processor->LoadGroupedFileHeaderOnly(path.Text(), fileNames, structureVersion)
                                    : processor->LoadGroupedFileFull(path.Text(), fileNames, structureVersion);
                if (result != kSuccess) {
                    return result;
                }
            }
            ApplyPendingSettings(*processor);
            if (currentGroup.processor != nullptr && !headerOnly && currentGroup.processor->IsModified()) {
                TDualString oldPath;
                result = GroupNaming::BuildGroupFileName(baseFileName, groupingNames, currentGroupValues, oldPath);
                if (result != kSuccess) {
                    return result;
                }
                currentGroup.processor->SaveGroupedFile(oldPath.Text(), GroupFiles::NarrowTexts(groupingNames));
            }
            ReplaceCurrentGroup(std::move(processor), std::move(values));
        }
    }
    if (currentGroup.processor == nullptr) {
        auto processor = std::make_unique<TProcessor>();
        ApplyPendingSettings(*processor);
        currentGroup.processor = std::move(processor);
    }
    return kSuccess;
}

// In an unnamed store every key belongs to the loaded group. Two empty lists are equal: without grouping names a named
// store never reads its file by itself.
bool TBackgroundCorrectionFileManager::IsCurrentGroup(const TTextList& values) const
{
    return baseFileName.IsEmpty() || values == currentGroupValues;
}

// A processor that refuses a setting keeps its own.
void TBackgroundCorrectionFileManager::ApplyPendingSettings(TProcessor& processor)
{
    if (exposureSeconds != -1.0f && lightIntensityPercent != -1.0f) {
        processor.SetExposureAndIntensity(exposureSeconds, lightIntensityPercent);
    }
    if (regionLeft != -1 && regionTop != -1 && regionWidth != -1 && regionHeight != -1) {
        processor.SetRegion(regionLeft, regionTop, regionWidth, regionHeight);
    }
    if (correctionLevel.load(std::memory_order_relaxed) != -1) {
        processor.SetCorrectionLevel(correctionLevel.load(std::memory_order_relaxed));
    }
}

void TBackgroundCorrectionFileManager::ReleaseCurrentGroup()
{
    const TGuard guard(lock.Get());
    ReplaceCurrentGroup(nullptr, TTextList());
}

// The old processor is destroyed: at once, or when the last running call of its ApplyCorrection returns.
void TBackgroundCorrectionFileManager::ReplaceCurrentGroup(std::unique_ptr<TProcessor> processor,
                                                           TTextList values) noexcept
{
    currentGroup.processor.swap(processor);
    currentGroupValues.swap(values);
    TApplying* last = nullptr; // the call that returns last
    for (TApplying* call = applying; call != nullptr; call = call->outer) {
        last = processor != nullptr && call->processor == processor.get() ? call : last;
    }
    if (last != nullptr) {
        last->dismissed = std::move(processor);
    }
}

// The entry of a key spelled exactly so, or null; valid until another group is loaded. Looks it up by key instead of
// walking the corrections: keys are unique with case ignored, so no other entry can be spelled like it.
TBackgroundCorrectionEntry* TBackgroundCorrectionFileManager::FindEntryForKey(const TDualString& key)
{
    const TGuard guard(lock.Get());
    return SelectGroup(key) == kSuccess ? currentGroup.processor->FindEntrySpelled(key.Text()) : nullptr;
}
