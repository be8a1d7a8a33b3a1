// Memory for the nodes of a list.
#include "data/containers/TNodePool.h"

#include "support/AllocationFaults.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <new>
#include <set>
#include <stdexcept>
#include <vector>

namespace {

struct TNode {
    explicit TNode(int newNumber) : number(newNumber)
    {
        if (number < 0) {
            throw std::runtime_error("negative");
        }
        ++alive;
    }
    ~TNode() { --alive; }
    TNode(const TNode&) = delete;
    TNode& operator=(const TNode&) = delete;

    int number;
    char rest[61] = {};
    static int alive;
};
int TNode::alive = 0;

TEST(NodePool, GivesEachNodeAPlaceOfItsOwn)
{
    const std::size_t before = TAllocationFaults::LiveBlocks();
    {
        TNodePool<TNode> pool;
        TRandomImages random(1);
        std::vector<TNode*> nodes;
        for (int step = 0; step < 20000; ++step) {
            const bool growing = step / 2500 % 2 == 0;
            if (nodes.empty() || random.Number(0, 9) < (growing ? 8u : 2u)) {
                nodes.push_back(pool.Make(step));
            } else {
                const std::size_t index = random.Number(0, static_cast<unsigned int>(nodes.size() - 1));
                const int number = nodes[index]->number;
                ASSERT_GE(number, 0);
                pool.Destroy(nodes[index]);
                nodes.erase(nodes.begin() + static_cast<std::ptrdiff_t>(index));
            }
            ASSERT_EQ(TNode::alive, static_cast<int>(nodes.size()));
        }
        std::set<int> numbers;
        for (TNode* const node : nodes) {
            numbers.insert(node->number);
        }
        EXPECT_EQ(numbers.size(), nodes.size()) << "a node was written over";
        for (TNode* const node : nodes) {
            pool.Destroy(node);
        }
    }
    EXPECT_EQ(TNode::alive, 0);
    EXPECT_EQ(TAllocationFaults::LiveBlocks(), before);
}

TEST(NodePool, FreesItsBlocksWithTheLastNode)
{
    TNodePool<TNode> pool;
    TNode* const first = pool.Make(1);
    const std::size_t withOne = TAllocationFaults::LiveBlocks();
    std::vector<TNode*> nodes;
    nodes.reserve(1000);
    for (int i = 0; i < 1000; ++i) {
        nodes.push_back(pool.Make(i));
    }
    for (TNode* const node : nodes) {
        pool.Destroy(node);
    }
    EXPECT_GT(TAllocationFaults::LiveBlocks(), withOne) << "there still is a node";
    EXPECT_EQ(first->number, 1);
    const std::size_t before = TAllocationFaults::LiveBlocks();
    pool.Destroy(first);
    EXPECT_LT(TAllocationFaults::LiveBlocks(), before - 3);
    pool.Destroy(pool.Make(2));
}

TEST(NodePool, KeepsThePlaceOfANodeThatWasNotMade)
{
    TNodePool<TNode> pool;
    TNode* const node = pool.Make(1);
    const std::size_t before = TAllocationFaults::LiveBlocks();
    for (int i = 0; i < 100; ++i) { // more than a block has places
        EXPECT_THROW(pool.Make(-1), std::runtime_error);
    }
    TNode* const other = pool.Make(2);
    EXPECT_EQ(TAllocationFaults::LiveBlocks(), before);
    EXPECT_EQ(node->number, 1);
    EXPECT_EQ(other->number, 2);
    pool.Destroy(node);
    pool.Destroy(other);
}

TEST(NodePool, StaysAsItWasWithoutMemory)
{
    for (std::size_t failing = 1; failing <= 3; ++failing) {
        TNodePool<TNode> pool;
        bool hasFailed = false;
        TAllocationFaults noMemory(failing);
        try {
            pool.Destroy(pool.Make(1));
        } catch (const std::bad_alloc&) {
            hasFailed = true;
        }
        noMemory.Disarm();
        EXPECT_TRUE(hasFailed) << failing;
        TNode* const node = pool.Make(2);
        EXPECT_EQ(node->number, 2);
        pool.Destroy(node);
    }
    EXPECT_EQ(TNode::alive, 0);
}

TEST(NodePool, NeedsNoMemoryForANodeThatRoomWasMadeFor)
{
    TNodePool<TNode> pool;
    std::vector<TNode*> nodes;
    for (int i = 0; i < 200; ++i) { // across several blocks
        pool.ReserveOne();
        const std::size_t before = TAllocationFaults::LiveBlocks();
        TNode* const node = pool.Make(i);
        ASSERT_EQ(TAllocationFaults::LiveBlocks(), before) << i;
        nodes.push_back(node);
    }
    for (TNode* const node : nodes) {
        pool.Destroy(node);
    }
}

} // namespace
