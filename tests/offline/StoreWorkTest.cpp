// How much work the store does, and what it keeps when the disk is full.
#include "offline/MemoryDisk.h"
#include "offline/StoreSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using TNames = std::vector<std::string>;

class StoreWorkTest : public testing::Test {
protected:
    StoreWorkTest() { MemoryDisk().Restart(); }
    ~StoreWorkTest() override
    {
        EXPECT_EQ(MemoryDisk().openFiles, 0);
        EXPECT_EQ(MemoryDisk().openSearches, 0);
    }

    static std::string Key(int group, int number)
    {
        return "A," + std::to_string(group) + ",B,1,n," + std::to_string(number);
    }
    static std::string GroupFile(const std::string& base, int group)
    {
        return base + "_A_" + std::to_string(group) + "_B_1";
    }
    void Fill(int groups, int perGroup, int size)
    {
        for (int number = 0; number < perGroup; ++number) {
            for (int group = 0; group < groups; ++group) {
                const Literal::TImage image{size, size,
                                            std::vector<std::uint16_t>(static_cast<std::size_t>(size * size), 100)};
                ASSERT_EQ(store.AddFrames(Key(group, number), {image}, 1.0f, 1.0f), 0u);
            }
        }
    }
    static std::size_t SizeOf(const std::string& file) { return MemoryDisk().files.at(file).size(); }

    TTestStore store;
};

TEST_F(StoreWorkTest, SavingAFreshStoreWritesEachCorrectionOnce)
{
    Fill(20, 3, 16);
    ASSERT_EQ(store.Save("s"), 0u);
    ASSERT_EQ(MemoryDisk().files.size(), 20u);
    std::size_t headersRead = 0;
    for (const auto& file : MemoryDisk().files) {
        const TMemoryDisk::TUse& use = MemoryDisk().uses.at(file.first);
        EXPECT_EQ(use.writings, 1) << file.first;
        EXPECT_EQ(use.bytesWritten, file.second.size()) << file.first;
        EXPECT_EQ(use.readings, 1) << file.first; // the store is reopened from them, without their pixels
        headersRead += use.bytesRead;
    }
    EXPECT_LE(headersRead, 20u * (118 + 3 * 612)); // nothing but headers, keys and numbers
}

TEST_F(StoreWorkTest, SavingAFreshStoreHoldsAtMostOneFurtherEntry)
{
    constexpr std::size_t kEntryBytes = 2 * 512 * 512;
    Fill(10, 2, 512);
    const TMemoryWatch watch;
    ASSERT_EQ(store.Save("s"), 0u);
    EXPECT_GE(watch.PeakBytes(), kEntryBytes);                   // each entry is copied before it is written
    EXPECT_LT(watch.PeakBytes(), kEntryBytes + kEntryBytes / 4); // the rest are names and keys
}

TEST_F(StoreWorkTest, ReopeningHoldsNoPixels)
{
    Fill(30, 2, 128);
    store.Save("s");
    const TMemoryWatch watch;
    ASSERT_EQ(store.Load("s"), 0u);
    EXPECT_LT(watch.PeakBytes(), 60u * 2000);
}

TEST_F(StoreWorkTest, SelectingAGroupTouchesItsFileAlone)
{
    Fill(20, 3, 16);
    store.Save("s");
    MemoryDisk().ForgetUses();
    ASSERT_EQ(store.Select(Key(7, 0)), 0u);
    ASSERT_EQ(MemoryDisk().FilesWithUses(), 1u);
    const TMemoryDisk::TUse& use = MemoryDisk().uses.at(GroupFile("s", 7));
    EXPECT_EQ(use.readings, 2); // whether it is there, and what is in it
    EXPECT_EQ(use.bytesRead, SizeOf(GroupFile("s", 7)));
    EXPECT_EQ(use.writings, 0);
    EXPECT_EQ(MemoryDisk().listings, 0);
}

TEST_F(StoreWorkTest, LeavingAModifiedGroupWritesItsFileAlone)
{
    Fill(20, 3, 16);
    store.Save("s");
    ASSERT_EQ(store.Add(Key(7, 99)), 0u);
    MemoryDisk().ForgetUses();
    ASSERT_EQ(store.Select(Key(8, 0)), 0u);
    ASSERT_EQ(MemoryDisk().FilesWithUses(), 2u);
    EXPECT_EQ(MemoryDisk().uses.at(GroupFile("s", 7)).bytesWritten, SizeOf(GroupFile("s", 7)));
    EXPECT_EQ(MemoryDisk().uses.at(GroupFile("s", 7)).readings, 0);
    EXPECT_EQ(MemoryDisk().listings, 0);
}

TEST_F(StoreWorkTest, AKeyOfTheLoadedGroupNeverTouchesTheDisk)
{
    Fill(3, 3, 4);
    store.Save("s");
    store.Select(Key(1, 0));
    MemoryDisk().ForgetUses();
    EXPECT_EQ(store.Select(Key(1, 1)), 0u);
    EXPECT_EQ(store.Select(Key(1, 77)), 513u);
    EXPECT_EQ(store.Add(Key(1, 5)), 0u);
    EXPECT_EQ(store->DeleteCorrection(Key(1, 5).c_str()), 0u);
    EXPECT_EQ(store.Select("broken"), 513u);
    EXPECT_EQ(store.Corrected(), 900);
    EXPECT_EQ(MemoryDisk().FilesWithUses(), 0u);
    EXPECT_EQ(MemoryDisk().listings, 0);
    EXPECT_EQ(MemoryDisk().existenceTests, 0);
}

TEST_F(StoreWorkTest, AnUnnamedStoreNeverTouchesTheDisk)
{
    Fill(5, 2, 4);
    EXPECT_EQ(store.Select(Key(3, 1)), 0u);
    EXPECT_EQ(MemoryDisk().FilesWithUses(), 0u);
    EXPECT_EQ(MemoryDisk().listings, 0);
}

TEST_F(StoreWorkTest, CopyingReadsAndWritesEachFileOnce)
{
    Fill(20, 3, 16);
    store.Save("s");
    MemoryDisk().ForgetUses();
    const TMemoryWatch watch;
    ASSERT_EQ(store.Save("copy"), 0u);
    ASSERT_EQ(MemoryDisk().files.size(), 40u);
    for (int group = 0; group < 20; ++group) {
        EXPECT_EQ(MemoryDisk().files.at(GroupFile("copy", group)), MemoryDisk().files.at(GroupFile("s", group)));
        EXPECT_EQ(MemoryDisk().uses.at(GroupFile("s", group)).readings, 1);
        EXPECT_EQ(MemoryDisk().uses.at(GroupFile("s", group)).bytesRead, SizeOf(GroupFile("s", group)));
        EXPECT_EQ(MemoryDisk().uses.at(GroupFile("s", group)).writings, 0);
        EXPECT_EQ(MemoryDisk().uses.at(GroupFile("copy", group)).writings, 1);
        EXPECT_EQ(MemoryDisk().uses.at(GroupFile("copy", group)).readings, 0);
    }
}

TEST_F(StoreWorkTest, CopyingHoldsOneGroupAtATime)
{
    constexpr std::size_t kEntryBytes = 2 * 128 * 128;
    Fill(20, 2, 128);
    store.Save("s");
    const TMemoryWatch watch;
    ASSERT_EQ(store.Save("copy"), 0u);
    EXPECT_LT(watch.PeakBytes(), 6 * kEntryBytes); // of 40: one group, the next one coming in, one copy
}

TEST_F(StoreWorkTest, AnotherRegionHoldsOneBackgroundAtATime)
{
    Fill(1, 1, 512);
    ASSERT_EQ(store.Select(Key(0, 0)), 0u);
    const TMemoryWatch watch;
    ASSERT_EQ(store->SetRegion(0, 0, 512, 511), 0u);
    ASSERT_EQ(store->SetRegion(0, 0, 512, 512), 0u);
    EXPECT_LT(watch.PeakBytes(), 1000u); // the old one goes before the new one is asked for
}

TEST_F(StoreWorkTest, AFileThatCannotBeRemovedIsNoFailure)
{
    Fill(2, 1, 4);
    store.Save("s");
    MemoryDisk().refusesRemovals = true;
    TTestStore other;
    other.Add("A,1,B,1,other", 5);
    other.Add("A,9,B,1,other", 5);
    EXPECT_EQ(other.Save("s"), 0u);
    EXPECT_EQ(MemoryDisk().files.size(), 3u);
    EXPECT_EQ(other.SortedKeys(), (TNames{"A,0,B,1,n,0", "A,1,B,1,other", "A,9,B,1,other"})); // one is left over
}

TEST_F(StoreWorkTest, AWriteBackOntoAFullDiskDoesNotStopTheSwitch)
{
    Fill(2, 1, 4);
    store.Save("s");
    store.Add("A,0,B,1,new", 50);
    MemoryDisk().freeBytes = 100;
    EXPECT_EQ(store.Select(Key(1, 0)), 0u);
    EXPECT_EQ(store.ActiveKey(), Key(1, 0));
    EXPECT_EQ(SizeOf(GroupFile("s", 0)), 100u); // and so the old content is lost as well
    EXPECT_EQ(store.Select(Key(0, 0)), 4294967295u);
    EXPECT_EQ(store.ActiveKey(), Key(1, 0));
}

TEST_F(StoreWorkTest, SavingToItselfOntoAFullDiskIsReportedAndCanBeRepeated)
{
    Fill(2, 1, 4);
    store.Save("s");
    store.Add("A,0,B,1,new", 50);
    MemoryDisk().freeBytes = 100;
    EXPECT_EQ(store.Save("s"), 4294967295u);
    MemoryDisk().freeBytes = SIZE_MAX;
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(store.Select(Key(1, 0)), 0u);
    EXPECT_EQ(store.Select("A,0,B,1,new"), 0u);
    EXPECT_EQ(store.Corrected(), 950);
}

// Every length at which the second of two files may end. Where the headers can be read, the store is reopened from what
// there is, and only the cut correction is lost; where they cannot, it stays as it was.
TEST_F(StoreWorkTest, AFullDiskWhileSplittingKeepsTheStoreOrReopensIt)
{
    Fill(2, 1, 4);
    store.Save("s");
    const std::size_t size = SizeOf(GroupFile("s", 0));
    const std::size_t pixels = 2 * 4 * 4;
    ASSERT_EQ(SizeOf(GroupFile("s", 1)), size);
    for (std::size_t written = 0; written < size; ++written) {
        MemoryDisk().Restart();
        store->ClearCorrections();
        Fill(2, 1, 4);
        MemoryDisk().freeBytes = size + written;
        ASSERT_EQ(store.Save("s"), 4294967295u) << written;
        ASSERT_EQ(SizeOf(GroupFile("s", 1)), written);
        ASSERT_EQ(store.SortedKeys(), (TNames{Key(0, 0), Key(1, 0)})) << written;
        ASSERT_EQ(store.Select(Key(0, 0)), 0u) << written;
        const bool isReopened = written >= size - pixels;
        ASSERT_EQ(store.Select(Key(1, 0)), isReopened ? 4294967295u : 0u) << written;
    }
}

TEST_F(StoreWorkTest, AFullDiskWhileCopyingLeavesTheStoreAlone)
{
    Fill(3, 1, 4);
    store.Save("s");
    const auto before = MemoryDisk().files;
    MemoryDisk().freeBytes = 1000;
    EXPECT_EQ(store.Save("copy"), 4294967295u);
    for (const auto& file : before) {
        EXPECT_EQ(MemoryDisk().files.at(file.first), file.second);
    }
    EXPECT_EQ(store.Select(Key(2, 0)), 0u);
}

} // namespace
