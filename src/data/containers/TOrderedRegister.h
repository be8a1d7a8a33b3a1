// An ordered sequence that is also found by text and by position.
#ifndef DATA_CONTAINERS_TORDEREDREGISTER_H
#define DATA_CONTAINERS_TORDEREDREGISTER_H

#include "data/containers/TNodePool.h"
#include "data/containers/TPositionIndex.h"
#include "data/containers/TextHash.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// Keeps values in the order of appending; a value never moves while it is stored. `TRule` says what their texts are and
// which are equal: it has Text(value), AreEqual(text, text) and Hash(text, seed), which is the same for equal texts.
//
// Appending, finding and removing cost O(1), but for O(log n) of adding up positions when something was removed; so
// does reading by position. Values with equal texts hang in a chain, so that many of them cost no more. Not
// synchronised. What throws leaves it unchanged.
template <typename TValue, typename TRule> class TOrderedRegister {
    struct TNode {
        template <typename TSource> explicit TNode(TSource&& source) : value(std::forward<TSource>(source)) {}

        TValue value;
        std::size_t slot = 0;
        TNode* next = nullptr; // of those with an equal text
    };

    // An open table of the first nodes of all texts; collisions move on to the next cell. The hashes stand beside the
    // nodes, so that a search looks into no other node than the one it is for.
    struct TCell {
        std::uint64_t hash;
        TNode* first; // null: empty
    };

public:
    TOrderedRegister() : seed(TextHash::SeedFor(reinterpret_cast<std::uintptr_t>(this))) {}
    ~TOrderedRegister() { Clear(); }
    TOrderedRegister(const TOrderedRegister&) = delete;
    TOrderedRegister& operator=(const TOrderedRegister&) = delete;

    // Makes room for one more value. Throws std::bad_alloc, unchanged then.
    void ReserveOne()
    {
        positions.ReserveOne();
        if (slots.size() == slots.capacity()) {
            slots.reserve(slots.empty() ? 16 : slots.size() * 2);
        }
        if ((textCount + 1) * 5 > cells.size() * 4) {
            Widen();
        }
        pool.ReserveOne();
    }

    // Makes a value from `source` and appends it. Throws std::bad_alloc, or whatever making the value throws; after
    // ReserveOne only the latter.
    template <typename TSource> void Append(TSource&& source)
    {
        ReserveOne();
        TNode* const node = pool.Make(std::forward<TSource>(source));
        const char* const text = TRule::Text(node->value);
        const std::uint64_t hash = TRule::Hash(text, seed);
        TCell& cell = cells[CellOf(text, hash)];
        if (cell.first == nullptr) {
            cell = {hash, node};
            ++textCount;
        } else {
            node->next = cell.first->next;
            cell.first->next = node;
        }
        node->slot = positions.Append();
        slots.push_back(node);
    }

    // The first value with this text, or null.
    TValue* Find(const char* text) const noexcept
    {
        if (textCount == 0) {
            return nullptr;
        }
        TNode* const node = cells[CellOf(text, TRule::Hash(text, seed))].first;
        return node == nullptr ? nullptr : &node->value;
    }

    // Removes every value with this text and gives their number. `text` may be that of a value that goes.
    std::size_t Remove(const char* text) noexcept
    {
        if (textCount == 0) {
            return 0;
        }
        const std::size_t found = CellOf(text, TRule::Hash(text, seed));
        TNode* node = cells[found].first;
        if (node == nullptr) {
            return 0;
        }
        Vacate(found);
        std::size_t removed = 0;
        while (node != nullptr) {
            TNode* const next = node->next;
            positions.Remove(node->slot);
            slots[node->slot] = nullptr;
            pool.Destroy(node);
            node = next;
            ++removed;
        }
        if (positions.IsWorthRenumbering()) {
            Renumber();
        }
        return removed;
    }

    // The value at a position below Count().
    TValue& At(std::size_t position) const noexcept { return slots[positions.SlotAt(position)]->value; }

    std::size_t Count() const noexcept { return positions.Count(); }

    // Calls `action` with every value, in order.
    template <typename TAction> void ForEach(TAction action) const
    {
        for (const TNode* const node : slots) {
            if (node != nullptr) {
                action(node->value);
            }
        }
    }

    void Clear() noexcept
    {
        for (TNode* const node : slots) {
            if (node != nullptr) {
                pool.Destroy(node);
            }
        }
        positions.Clear();
        slots.clear();
        cells.clear();
        textCount = 0;
    }

private:
    std::size_t Mask() const noexcept { return cells.size() - 1; }

    // The cell of this text, or the empty one where it would stand. There always is an empty one.
    std::size_t CellOf(const char* text, std::uint64_t hash) const noexcept
    {
        std::size_t cell = static_cast<std::size_t>(hash) & Mask();
        while (cells[cell].first != nullptr &&
               !(cells[cell].hash == hash && TRule::AreEqual(TRule::Text(cells[cell].first->value), text))) {
            cell = (cell + 1) & Mask();
        }
        return cell;
    }

    // Twice as many cells, or the first ones.
    void Widen()
    {
        std::vector<TCell> wider(cells.empty() ? 16 : cells.size() * 2, TCell{0, nullptr});
        cells.swap(wider);
        for (const TCell& old : wider) {
            if (old.first != nullptr) {
                std::size_t cell = static_cast<std::size_t>(old.hash) & Mask();
                while (cells[cell].first != nullptr) {
                    cell = (cell + 1) & Mask();
                }
                cells[cell] = old;
            }
        }
    }

    // Empties a cell. Those behind it that had been moved on by it move back, so that no search stops before them.
    void Vacate(std::size_t hole) noexcept
    {
        for (std::size_t cell = (hole + 1) & Mask(); cells[cell].first != nullptr; cell = (cell + 1) & Mask()) {
            const std::size_t moved = (cell - static_cast<std::size_t>(cells[cell].hash)) & Mask(); // from its own cell
            if (moved >= ((cell - hole) & Mask())) {
                cells[hole] = cells[cell];
                hole = cell;
            }
        }
        cells[hole].first = nullptr;
        --textCount;
    }

    // Closes the gaps that removed values left.
    void Renumber() noexcept
    {
        positions.Clear();
        std::size_t live = 0;
        for (std::size_t slot = 0; slot < slots.size(); ++slot) {
            if (slots[slot] != nullptr) {
                slots[slot]->slot = positions.Append();
                slots[live] = slots[slot];
                ++live;
            }
        }
        slots.resize(live);
    }

    const TextHash::TSeed seed;
    TNodePool<TNode> pool;
    TPositionIndex positions;  // of the values' slots
    std::vector<TNode*> slots; // in order; null: removed
    std::vector<TCell> cells;  // none, or a power of two
    std::size_t textCount = 0; // different texts
};

#endif
