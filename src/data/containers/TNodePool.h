// Memory for the nodes of a list.
#ifndef DATA_CONTAINERS_TNODEPOOL_H
#define DATA_CONTAINERS_TNODEPOOL_H

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

// Makes nodes side by side in blocks, in the order in which they are made. Nodes never move. Blocks are freed when the
// last node is destroyed, all of them, so that a list that is emptied and filled again lies in order again. Destroy
// every node before the pool. Not synchronised.
template <typename TNode> class TNodePool {
public:
    TNodePool() = default;
    TNodePool(const TNodePool&) = delete;
    TNodePool& operator=(const TNodePool&) = delete;

    // Makes room for one more node, so that the next Make needs no memory of the pool. Throws std::bad_alloc, unchanged
    // then.
    void ReserveOne()
    {
        if (freePlaces.empty()) {
            Grow();
        }
    }

    // Throws std::bad_alloc, or whatever making the node throws.
    template <typename... TArguments> TNode* Make(TArguments&&... arguments)
    {
        ReserveOne();
        TNode* const node = ::new (static_cast<void*>(freePlaces.back())) TNode(std::forward<TArguments>(arguments)...);
        freePlaces.pop_back();
        ++nodeCount;
        return node;
    }

    void Destroy(TNode* node) noexcept
    {
        node->~TNode();
        freePlaces.push_back(reinterpret_cast<TPlace*>(node)); // Grow made room for every place
        if (--nodeCount == 0) {
            freePlaces.clear();
            blocks.clear();
        }
    }

private:
    struct TPlace {
        alignas(TNode) unsigned char bytes[sizeof(TNode)];
    };

    // Small blocks for short lists, larger ones as they grow.
    void Grow()
    {
        constexpr std::size_t kSmallest = 8;
        constexpr std::size_t kLargest = 512;
        const std::size_t length = nodeCount < kSmallest ? kSmallest : nodeCount < kLargest ? nodeCount : kLargest;
        if (freePlaces.capacity() < nodeCount + length) {
            freePlaces.reserve((nodeCount + length) * 2);
        }
        blocks.reserve(blocks.size() + 1);
        blocks.emplace_back(new TPlace[length]);
        for (std::size_t i = length; i > 0; --i) {
            freePlaces.push_back(&blocks.back()[i - 1]);
        }
    }

    std::vector<std::unique_ptr<TPlace[]>> blocks;
    std::vector<TPlace*> freePlaces; // the next one last
    std::size_t nodeCount = 0;
};

#endif
