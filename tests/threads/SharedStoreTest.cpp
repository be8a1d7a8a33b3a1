// One store and many threads.
#include "support/TemporaryFolder.h"
#include "threads/ThreadHost.h"

#include <gtest/gtest.h>

using namespace ThreadHost;

namespace {

std::string GroupKey(int group, int number)
{
    return "A," + std::to_string(group) + ",B,1," + std::to_string(number);
}

TEST(SharedStore, TakesEveryOperationFromEveryThread)
{
    const TTemporaryFolder folder;
    const TObject store({"A", "B"});
    RunTogether(kThreads, [&](int number) {
        // Every file of the store is read and written under its lock, so that the threads may share names.
        TMixer mixer(*store.Get(), static_cast<unsigned int>(number),
                     {folder.File("s"), folder.File("t"), folder.File("s_A_1_B_1"), folder.File("none")});
        mixer.Do(250);
    });
    store->ClearCorrections();
    EXPECT_EQ(store->GetNumberOfCorrections(), 0u);
    EXPECT_EQ(AddFlat(*store.Get(), "A,1,B,1", 7), 0u);
}

TEST(SharedStore, KeepsEveryCorrectionOfEveryGroup)
{
    const TTemporaryFolder folder;
    const std::string base = folder.File("s");
    const TObject store({"A", "B"});
    ASSERT_EQ(AddFlat(*store.Get(), GroupKey(9, 9), 1), 0u);
    ASSERT_EQ(store->SaveFile(base.c_str()), 0u); // from here on one group at a time is loaded
    RunTogether(kThreads, [&](int number) {
        for (int i = 0; i < 12; ++i) {
            EXPECT_EQ(AddFlat(*store.Get(), GroupKey(number, i), static_cast<std::uint16_t>(100 * number)), 0u);
        }
    });
    ASSERT_EQ(store->SaveFile(base.c_str()), 0u);
    const TObject again({"A", "B"});
    ASSERT_EQ(again->LoadFile(base.c_str()), 0u);
    EXPECT_EQ(again->GetNumberOfCorrections(), 12u * kThreads + 1);
    for (int number = 0; number < kThreads; ++number) {
        for (int i = 0; i < 12; ++i) {
            unsigned short statistics[3] = {};
            ASSERT_EQ(again->SetActiveCorrection(GroupKey(number, i).c_str()), 0u);
            EXPECT_EQ(again->GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]), 0u);
            EXPECT_EQ(statistics[2], 100 * number);
        }
    }
}

TEST(SharedStore, CorrectsInOnePieceWhileGroupsAreSwitched)
{
    const TTemporaryFolder folder;
    const TObject store({"A", "B"});
    ASSERT_EQ(AddFlat(*store.Get(), GroupKey(1, 0), 100), 0u);
    ASSERT_EQ(AddFlat(*store.Get(), GroupKey(2, 0), 400), 0u);
    ASSERT_EQ(store->SaveFile(folder.File("s").c_str()), 0u);
    ASSERT_EQ(store->SetRegion(0, 0, kSide, kSide), 0u);
    RunTogether(kThreads, [&](int number) {
        for (int i = 0; i < 100; ++i) {
            if (number == 0) {
                EXPECT_EQ(store->SetActiveCorrection(GroupKey(1 + i % 2, 0).c_str()), 0u);
            } else {
                EXPECT_EQ(ApplyToFlat(*store.Get(), 1000, static_cast<unsigned int>(i % 3)), 0u);
            }
        }
    });
}

} // namespace
