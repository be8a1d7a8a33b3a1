#include "data/TCorrectionList.h"

#include "boundary/Messages.h"
#include "boundary/TZRException.h"
#include "platform/Text.h"

#include <cstring>
#include <new>
#include <utility>

bool TCorrectionList::TKeyRule::AreEqual(const char* left, const char* right) noexcept
{
    return std::strcmp(left, right) == 0 || Platform::CompareIgnoringCase(left, right) == 0;
}

void TCorrectionList::CreateAndAddEntry(const char* key, const std::uint16_t* const* frames, std::uint32_t frameCount,
                                        std::uint32_t width, std::uint32_t height, float exposureSeconds,
                                        float lightIntensityPercent)
{
    try {
        TBackgroundCorrectionEntry entry;
        entry.Build(key, frames, frameCount, width, height, exposureSeconds, lightIntensityPercent, true);
        AddEntry(std::move(entry));
    } catch (const std::bad_alloc&) {
        throw TZRException(Messages::kOutOfMemoryCreating);
    }
}

void TCorrectionList::AddEntry(const TBackgroundCorrectionEntry& entry)
{
    AddUnique(entry);
}

void TCorrectionList::AddEntry(TBackgroundCorrectionEntry&& entry)
{
    AddUnique(std::move(entry));
}

template <typename TSource> void TCorrectionList::AddUnique(TSource&& entry)
{
    if (FindEntry(entry.Key()) != nullptr) {
        throw TZRException(Messages::kKeyNotUnique, entry.Key());
    }
    try {
        entries.Append(std::forward<TSource>(entry));
    } catch (const std::bad_alloc&) {
        throw TZRException(Messages::kOutOfMemoryAdding);
    }
}

TBackgroundCorrectionEntry* TCorrectionList::FindEntry(const char* key) const noexcept
{
    return entries.Find(key);
}

int TCorrectionList::RemoveEntry(const char* key) noexcept
{
    return entries.Remove(key) > 0 ? 0 : -1;
}

int TCorrectionList::ImportEntries(const TCorrectionList& source, bool overwrite)
{
    try {
        // Nothing is appended when the source is this list: every one of its keys is found.
        source.entries.ForEach([this, overwrite](const TBackgroundCorrectionEntry& entry) {
            TBackgroundCorrectionEntry* const existing = FindEntry(entry.Key());
            if (existing == nullptr) {
                entries.Append(entry);
            } else if (overwrite) {
                *existing = entry;
            }
        });
    } catch (const std::bad_alloc&) {
        throw TZRException(Messages::kOutOfMemoryImporting);
    }
    return 0;
}

void TCorrectionList::ClearEntries() noexcept
{
    entries.Clear();
}

TBackgroundCorrectionEntry& TCorrectionList::EntryAt(std::size_t index) const
{
    if (index >= Count()) {
        throw TZRException(Messages::kIndexOutOfRange, static_cast<int>(index), static_cast<int>(Count()));
    }
    return entries.At(index);
}
