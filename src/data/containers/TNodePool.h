// Memory for the nodes of a list.
#ifndef DATA_CONTAINERS_TNODEPOOL_H
#define DATA_CONTAINERS_TNODEPOOL_H

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

// Makes nodes that lie side by side in blocks, in the order in which they are made: walking or finding them misses the
// caches less than when each has a block of its own among everything else that the host allocates. Nodes never move.
// Blocks are freed when the last node is destroyed, all of them. Destroy every node before the pool. Not synchronised.
template <typename TNode> class TNodePool {
public:
    TNodePool() = default;
    TNodePool(const TNodePool&) = delete;
    TNodePool& operator=(const TNodePool&) = delete;

    // Throws std::bad_alloc, or whatever making the node throws.
    template <typename... TArguments> TNode* Make(TArguments&&... arguments)
    {
        if (firstFree == nullptr) {
            Grow();
        }
        TPlace* const place = firstFree;
        TPlace* const next = place->nextFree;
        try {
            TNode* const node = ::new (static_cast<void*>(place->bytes)) TNode(std::forward<TArguments>(arguments)...);
            firstFree = next;
            ++nodeCount;
            return node;
        } catch (...) {
            ::new (static_cast<void*>(place)) TPlace{next};
            throw;
        }
    }

    void Destroy(TNode* node) noexcept
    {
        node->~TNode();
        firstFree = ::new (static_cast<void*>(node)) TPlace{firstFree};
        if (--nodeCount == 0) {
            firstFree = nullptr;
            blocks.clear();
        }
    }

    void Swap(TNodePool& other) noexcept
    {
        blocks.swap(other.blocks);
        std::swap(firstFree, other.firstFree);
        std::swap(nodeCount, other.nodeCount);
    }

private:
    union TPlace {
        TPlace* nextFree;
        alignas(TNode) unsigned char bytes[sizeof(TNode)];
    };

    // Small blocks for short lists, larger ones as they grow.
    void Grow()
    {
        constexpr std::size_t kSmallest = 8;
        constexpr std::size_t kLargest = 512;
        const std::size_t length = nodeCount < kSmallest ? kSmallest : nodeCount < kLargest ? nodeCount : kLargest;
        blocks.reserve(blocks.size() + 1);
        blocks.emplace_back(new TPlace[length]);
        for (std::size_t i = length; i > 0; --i) {
            TPlace& place = blocks.back()[i - 1];
            place.nextFree = firstFree;
            firstFree = &place;
        }
    }

    std::vector<std::unique_ptr<TPlace[]>> blocks;
    TPlace* firstFree = nullptr;
    std::size_t nodeCount = 0;
};

#endif
