// Positions in a sequence from which elements are removed.
#ifndef DATA_POSITIONINDEX_H
#define DATA_POSITIONINDEX_H

#include <cstddef>
#include <vector>

// Gives the n-th live element of a sequence that only grows at its end and loses elements anywhere. An element keeps
// the slot it got when it was appended until the slots are renumbered, which the owner is told.
//
// Appending and removing cost O(log n) amortised, finding O(log n); O(1) while nothing was removed. A Fenwick tree
// counts the live slots.
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
    std::size_t SlotCount() const noexcept { return counts.size(); }
    // True when most slots are dead: the owner should then Clear and Append anew, in order.
    bool IsWorthRenumbering() const noexcept { return counts.size() > 32 && liveCount < counts.size() / 2; }
    void Clear() noexcept;

private:
    std::vector<std::size_t> counts; // Fenwick tree; element i (from 0) is node i + 1
    std::size_t liveCount = 0;
};

#endif
