// Positions in a sequence from which elements are removed.
#ifndef DATA_CONTAINERS_TPOSITIONINDEX_H
#define DATA_CONTAINERS_TPOSITIONINDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

// Gives the n-th live element of a sequence that only grows at its end and loses elements anywhere. An element keeps
// the slot it got when it was appended until the slots are renumbered, which the owner is told.
//
// Appending costs O(1) amortised, removing and finding O(log n); O(1) as well while elements were removed at the front
// only. A Fenwick tree counts the live slots.
class TPositionIndex {
public:
    // Makes room for one more slot, so that the next Append cannot fail. Throws std::bad_alloc, unchanged then.
    void ReserveOne();
    // Appends a live slot and gives its number.
    std::size_t Append() noexcept;
    // Removes a live slot.
    void Remove(std::size_t slot) noexcept;
    // The slot of the element at `position`, which is below Count().
    std::size_t SlotAt(std::size_t position) const noexcept;

    std::size_t Count() const noexcept { return liveCount; }
    // True when so many slots are dead that the owner should Clear and Append anew, in order. Not earlier: it touches
    // every element that is left.
    bool IsWorthRenumbering() const noexcept { return counts.size() > 32 && liveCount < counts.size() / 8; }
    void Clear() noexcept;

private:
    std::vector<std::uint32_t> counts; // Fenwick tree; element i (from 0) is node i + 1
    std::size_t liveCount = 0;
    std::size_t removedAtFront = 0; // the first slots, all dead; the tree still counts them
};

#endif
