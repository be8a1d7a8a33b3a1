// A processor's corrections.
#ifndef DATA_TCORRECTIONLIST_H
#define DATA_TCORRECTIONLIST_H

#include "data/TBackgroundCorrectionEntry.h"
#include "data/containers/TOrderedRegister.h"

#include <cstddef>
#include <cstdint>

// Ordered corrections, unique by key (case ignored).
//
// Owns its entries by value: every copy in or out is deep, and an entry never moves while it is stored. Finding,
// adding, removing and reading by position cost O(log n) at most. Not synchronised: the owning processor's lock covers
// it. Fails by throwing; the list is then unchanged unless said otherwise.
class TCorrectionList {
public:
    TCorrectionList() = default;
    TCorrectionList(const TCorrectionList&) = delete;
    TCorrectionList& operator=(const TCorrectionList&) = delete;

    // Builds an entry with the median filter (see TBackgroundCorrectionEntry::Build) and adds it. Throws TZRException.
    void CreateAndAddEntry(const char* key, const std::uint16_t* const* frames, std::uint32_t frameCount,
                           std::uint32_t width, std::uint32_t height, float exposureSeconds,
                           float lightIntensityPercent);

    // Appends a copy. Throws TZRException when the key is taken or memory runs out.
    void AddEntry(const TBackgroundCorrectionEntry& entry);
    // The same for an entry that is not needed any more: its pixels are taken over (and may be gone on failure).
    void AddEntry(TBackgroundCorrectionEntry&& entry);

    // The entry with this key, or null. Valid until that entry is removed.
    TBackgroundCorrectionEntry* FindEntry(const char* key) const noexcept;

    // Removes the entry with this key. Returns 0, or -1 when there is none.
    int RemoveEntry(const char* key) noexcept;

    // Copies the entries of `source` in, in their order: a key that is here already is skipped, or with `overwrite`
    // its entry is assigned in place. Returns 0. Throws TZRException when memory runs out; what was imported before
    // stays. `source` may be this list.
    int ImportEntries(const TCorrectionList& source, bool overwrite);

    void ClearEntries() noexcept;

    std::size_t Count() const noexcept { return entries.Count(); }

    // The entry at a position from 0. Throws TZRException when `index` is not below Count().
    TBackgroundCorrectionEntry& EntryAt(std::size_t index) const;

private:
    struct TKeyRule {
        static const char* Text(const TBackgroundCorrectionEntry& entry) noexcept { return entry.Key(); }
        static bool AreEqual(const char* left, const char* right) noexcept;
        static std::uint64_t Hash(const char* text, const TextHash::TSeed& seed) noexcept
        {
            return TextHash::OfIgnoringCase(text, seed);
        }
    };

    template <typename TSource> void AddUnique(TSource&& entry);

    TOrderedRegister<TBackgroundCorrectionEntry, TKeyRule> entries; // insertion order is file order
};

#endif
