// Importing into a store.
#include "offline/TBackgroundCorrectionFileManager.h"

#include "boundary/Messages.h"
#include "boundary/RunTimeType.h"

#include <string>
#include <utility>

using namespace QX_KRLSDK;

// The two kinds of object that a store imports from.
class TBackgroundCorrectionFileManager::TImportSource {
public:
    explicit TImportSource(QX_IBackgroundCorrection* object)
        : store(RunTimeType::Cast<TBackgroundCorrectionFileManager>(object)),
          processor(store == nullptr ? RunTimeType::Cast<TProcessor>(object) : nullptr)
    {}

    bool IsValid() const noexcept { return store != nullptr || processor != nullptr; }
    Platform::CRITICAL_SECTION* Lock() const noexcept
    {
        return store != nullptr ? store->lock.Get() : processor->Lock();
    }
    // The entry at a position of a processor; a store is asked by key, since its positions run over all groups.
    TBackgroundCorrectionEntry* Entry(unsigned int index, const TDualString& key) const
    {
        return store != nullptr ? store->FindEntryForKey(key) : processor->GetEntryAt(index);
    }

private:
    TBackgroundCorrectionFileManager* store;
    TProcessor* processor;
};

unsigned int TBackgroundCorrectionFileManager::ImportCorrections(QX_IBackgroundCorrection* source, bool overwrite)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    if (source == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kStoreImportSourceNull);
    }
    TImportSource importSource(source);
    if (!importSource.IsValid()) {
        return Fail(kFirstArgumentInvalid, Messages::kImportSourceWrongType);
    }
    const TGuard sourceGuard(importSource.Lock());

    const unsigned int count = source->GetNumberOfCorrections();
    // Nothing may be active while corrections are replaced; what was is made active again at the end.
    TDualString activeKey;
    if (const char* const key = GetActiveCorrectionKey()) {
        activeKey = TDualString(key);
        currentGroup.processor->SetActiveCorrection(nullptr);
    }
    unsigned int result = kSuccess;
    for (unsigned int index = 0; index < count && result == kSuccess; ++index) {
        // A store that imports itself loses keys meanwhile: the later ones move up, and the last rounds find none.
        if (const char* const key = source->GetCorrectionKey(index)) {
            result = ImportKey(importSource, index, TDualString(key), overwrite); // a copy: replacing frees the key
        }
    }
    if (!activeKey.IsEmpty()) {
        result = SelectGroup(activeKey);
        if (result == kSuccess) {
            result = currentGroup.processor->SetActiveCorrection(activeKey.Text());
        }
    }
    return result;
}

unsigned int TBackgroundCorrectionFileManager::ImportKey(TImportSource& source, unsigned int index,
                                                         const TDualString& key, bool overwrite)
{
    unsigned int result = SelectGroup(key);
    if (result != kSuccess) {
        return result;
    }
    if (keys->Find(key.Text()) != nullptr) {
        if (!overwrite) {
            return kSuccess;
        }
        result = currentGroup.processor->DeleteCorrection(key.Text());
        keys->Remove(key.Text());
        if (result != kSuccess) {
            return result;
        }
    }
    TKeyText newKey(key.Text());
    keys->ReserveOne();
    const TBackgroundCorrectionEntry* const entry = source.Entry(index, key);
    if (entry == nullptr) {
        return kSuccess;
    }
    result = currentGroup.processor->AddEntryCopy(*entry);
    if (result == kSuccess) {
        keys->Append(std::move(newKey));
    }
    return result;
}
