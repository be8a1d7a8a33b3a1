// An ordered sequence that is also found by text and by position.
#ifndef DATA_ORDEREDREGISTER_H
#define DATA_ORDEREDREGISTER_H

#include "data/PositionIndex.h"

#include <cstddef>
#include <iterator>
#include <list>
#include <set>
#include <utility>
#include <vector>

// Keeps values in the order of appending; a value never moves while it is stored. `TOrder` orders values by their text:
// it has Text(value) and Compare(text, text), which is negative, 0 or positive as the texts compare.
//
// Appending, finding, removing and reading by position cost O(log n). Not synchronised. What throws leaves it
// unchanged.
template <typename TValue, typename TOrder> class TOrderedRegister {
    struct TNode {
        template <typename TSource> explicit TNode(TSource&& source) : value(std::forward<TSource>(source)), slot(0) {}

        TValue value;
        std::size_t slot;
    };
    using TNodes = std::list<TNode>;
    struct TNodeOrder {
        using is_transparent = void;
        using TIterator = typename TNodes::iterator;
        bool operator()(TIterator left, TIterator right) const noexcept
        {
            return TOrder::Compare(TOrder::Text(left->value), TOrder::Text(right->value)) < 0;
        }
        bool operator()(TIterator left, const char* right) const noexcept
        {
            return TOrder::Compare(TOrder::Text(left->value), right) < 0;
        }
        bool operator()(const char* left, TIterator right) const noexcept
        {
            return TOrder::Compare(left, TOrder::Text(right->value)) < 0;
        }
    };
    using TIndex = std::multiset<typename TNodes::iterator, TNodeOrder>;

public:
    TOrderedRegister() = default;
    TOrderedRegister(const TOrderedRegister&) = delete;
    TOrderedRegister& operator=(const TOrderedRegister&) = delete;

    // A value that is ready to be appended, so that appending it cannot fail.
    class TPrepared {
        friend class TOrderedRegister;
        TNodes node;
        TIndex index; // that node alone
    };

    // Makes a value from `source`, and room for it. Throws std::bad_alloc, or whatever making the value throws. Only
    // the value prepared last may be appended, and nothing else in between.
    template <typename TSource> TPrepared Prepare(TSource&& source)
    {
        positions.ReserveOne();
        if (slots.size() == slots.capacity()) {
            slots.reserve(slots.empty() ? 16 : slots.size() * 2);
        }
        TPrepared prepared;
        prepared.node.emplace_back(std::forward<TSource>(source));
        prepared.index.insert(prepared.node.begin());
        return prepared;
    }

    void Append(TPrepared&& prepared) noexcept
    {
        const typename TNodes::iterator node = prepared.node.begin();
        nodes.splice(nodes.end(), prepared.node);
        byText.insert(prepared.index.extract(prepared.index.begin()));
        node->slot = positions.Append();
        slots.push_back(node);
    }

    // Prepares and appends.
    template <typename TSource> void Append(TSource&& source) { Append(Prepare(std::forward<TSource>(source))); }

    // A value with this text, or null.
    TValue* Find(const char* text) const noexcept
    {
        const auto found = byText.find(text);
        return found == byText.end() ? nullptr : &(*found)->value;
    }

    // Removes every value with this text and gives their number. `text` may be that of a value that goes.
    std::size_t Remove(const char* text) noexcept
    {
        const auto range = byText.equal_range(text);
        TNodes removed; // kept to the end, for the text may lie in one of them
        for (auto found = range.first; found != range.second; ++found) {
            positions.Remove((*found)->slot);
            removed.splice(removed.end(), nodes, *found);
        }
        byText.erase(range.first, range.second);
        if (positions.IsWorthRenumbering()) {
            Renumber();
        }
        return removed.size();
    }

    // The value at a position below Count().
    TValue& At(std::size_t position) const noexcept { return slots[positions.SlotAt(position)]->value; }

    std::size_t Count() const noexcept { return nodes.size(); }

    // Calls `action` with every value, in order.
    template <typename TAction> void ForEach(TAction action) const
    {
        for (const TNode& node : nodes) {
            action(node.value);
        }
    }

    void Clear() noexcept
    {
        byText.clear();
        positions.Clear();
        slots.clear();
        nodes.clear();
    }

    // Exchanges the contents; values stay where they are in memory.
    void Swap(TOrderedRegister& other) noexcept
    {
        nodes.swap(other.nodes);
        byText.swap(other.byText);
        std::swap(positions, other.positions);
        slots.swap(other.slots);
    }

private:
    void Renumber() noexcept
    {
        positions.Clear();
        slots.clear();
        for (auto node = nodes.begin(); node != nodes.end(); ++node) {
            node->slot = positions.Append();
            slots.push_back(node);
        }
    }

    TNodes nodes;
    TIndex byText;                                // every node
    TPositionIndex positions;                     // of the nodes' slots
    std::vector<typename TNodes::iterator> slots; // node of each slot; dead slots hold anything
};

#endif
