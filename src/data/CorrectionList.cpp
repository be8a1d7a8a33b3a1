#include "data/CorrectionList.h"

#include "boundary/Messages.h"
#include "boundary/TZRException.h"
#include "platform/Text.h"

#include <new>
#include <utility>

bool TCorrectionList::TKeyOrder::operator()(TNodes::iterator left, TNodes::iterator right) const noexcept
{
    return Platform::CompareIgnoringCase(left->entry.Key(), right->entry.Key()) < 0;
}

bool TCorrectionList::TKeyOrder::operator()(TNodes::iterator left, const char* right) const noexcept
{
    return Platform::CompareIgnoringCase(left->entry.Key(), right) < 0;
}

bool TCorrectionList::TKeyOrder::operator()(const char* left, TNodes::iterator right) const noexcept
{
    return Platform::CompareIgnoringCase(left, right->entry.Key()) < 0;
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
    if (FindEntry(entry.Key()) != nullptr) {
        throw TZRException(Messages::kKeyNotUnique, entry.Key());
    }
    try {
        Append(entry);
    } catch (const std::bad_alloc&) {
        throw TZRException(Messages::kOutOfMemoryAdding);
    }
}

void TCorrectionList::AddEntry(TBackgroundCorrectionEntry&& entry)
{
    if (FindEntry(entry.Key()) != nullptr) {
        throw TZRException(Messages::kKeyNotUnique, entry.Key());
    }
    try {
        Append(std::move(entry));
    } catch (const std::bad_alloc&) {
        throw TZRException(Messages::kOutOfMemoryAdding);
    }
}

TBackgroundCorrectionEntry* TCorrectionList::FindEntry(const char* key) const noexcept
{
    const auto found = keys.find(key);
    return found == keys.end() ? nullptr : &(*found)->entry;
}

int TCorrectionList::RemoveEntry(const char* key) noexcept
{
    const auto found = keys.find(key);
    if (found == keys.end()) {
        return -1;
    }
    const TNodes::iterator node = *found;
    keys.erase(found);
    positions.Remove(node->slot);
    nodes.erase(node);
    if (positions.IsWorthRenumbering()) {
        Renumber();
    }
    return 0;
}

int TCorrectionList::ImportEntries(const TCorrectionList& source, bool overwrite)
{
    try {
        // Nothing is appended when the source is this list: every one of its keys is found.
        for (const TNode& node : source.nodes) {
            TBackgroundCorrectionEntry* const existing = FindEntry(node.entry.Key());
            if (existing == nullptr) {
                Append(node.entry);
            } else if (overwrite) {
                *existing = node.entry;
            }
        }
    } catch (const std::bad_alloc&) {
        throw TZRException(Messages::kOutOfMemoryImporting);
    }
    return 0;
}

void TCorrectionList::ClearEntries() noexcept
{
    keys.clear();
    positions.Clear();
    slots.clear();
    nodes.clear();
}

TBackgroundCorrectionEntry& TCorrectionList::EntryAt(std::size_t index) const
{
    if (index >= nodes.size()) {
        throw TZRException(Messages::kIndexOutOfRange, static_cast<int>(index), static_cast<int>(nodes.size()));
    }
    return slots[positions.SlotAt(index)]->entry;
}

// The room in the two tables is made first and the node last, so that a failure leaves everything as it was.
template <typename TSource> void TCorrectionList::Append(TSource&& entry)
{
    positions.ReserveOne();
    if (slots.size() == slots.capacity()) {
        slots.reserve(slots.empty() ? 16 : slots.size() * 2);
    }
    const TNodes::iterator node = nodes.emplace(nodes.end(), std::forward<TSource>(entry));
    try {
        keys.insert(node);
    } catch (...) {
        nodes.erase(node);
        throw;
    }
    node->slot = positions.Append();
    slots.push_back(node);
}

void TCorrectionList::Renumber() noexcept
{
    positions.Clear();
    slots.clear();
    for (TNodes::iterator node = nodes.begin(); node != nodes.end(); ++node) {
        node->slot = positions.Append();
        slots.push_back(node);
    }
}
