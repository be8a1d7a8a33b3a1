#include "support/AllocationFaults.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace {

struct alignas(64) TWide {
    char bytes[64];
};

// Compilers may leave out memory that nobody looks at.
const void* Keep(const void* block)
{
    const void* const volatile kept = block;
    return kept;
}

TEST(AllocationFaults, FailsOnlyTheChosenAllocation)
{
    TAllocationFaults faults(2);
    void* const first = ::operator new(10, std::nothrow);
    void* const second = ::operator new(20, std::nothrow);
    void* const third = ::operator new(30, std::nothrow);
    faults.Disarm();
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_NE(third, nullptr);
    EXPECT_TRUE(faults.Fired());
    EXPECT_EQ(faults.FailedSize(), 20u);
    EXPECT_EQ(faults.Count(), 3u);
    ::operator delete(first);
    ::operator delete(third);
}

TEST(AllocationFaults, FailsForGood)
{
    int thrown = 0;
    {
        const TAllocationFaults faults(1, TFaultRepeat::kForGood);
        for (int i = 0; i < 3; ++i) {
            try {
                Keep(std::vector<char>(100).data());
            } catch (const std::bad_alloc&) {
                ++thrown;
            }
        }
    }
    EXPECT_EQ(thrown, 3);
    EXPECT_NO_THROW(Keep(std::vector<char>(100).data()));
}

TEST(AllocationFaults, CountsLiveBlocksOfEveryForm)
{
    const std::size_t before = TAllocationFaults::LiveBlocks();
    std::size_t within = 0;
    bool isAligned = false;
    {
        const auto single = std::make_unique<int>(1);
        const auto several = std::make_unique<int[]>(5);
        const auto wide = std::make_unique<TWide>();
        const auto manyWide = std::make_unique<TWide[]>(3);
        Keep(single.get());
        Keep(several.get());
        Keep(wide.get());
        Keep(manyWide.get());
        within = TAllocationFaults::LiveBlocks();
        isAligned = reinterpret_cast<std::uintptr_t>(wide.get()) % 64 == 0 &&
                    reinterpret_cast<std::uintptr_t>(manyWide.get()) % 64 == 0;
    }
    const std::size_t after = TAllocationFaults::LiveBlocks();
    EXPECT_EQ(within, before + 4);
    EXPECT_EQ(after, before);
    EXPECT_TRUE(isAligned);
}

} // namespace
