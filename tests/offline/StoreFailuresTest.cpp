// What is kept and what is lost when the disk fails.
#include "offline/StoreSupport.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using StoreFiles::Flat;
using StoreFiles::Grouped;

namespace {

using TNames = std::vector<std::string>;

// In the folder cal: s_A_1_B_1 (100) and s_A_2_B_1 (200); the first group is loaded and has the unsaved A,1,B,1,new.
class StoreFailuresTest : public testing::Test {
protected:
    StoreFailuresTest()
    {
        folder.MakeFolder("cal");
        store.Add("A,1,B,1", 100);
        store.Add("A,2,B,1", 200);
        store.Save("cal\\s");
        store.Add("A,1,B,1,new", 50);
        store.Select("A,1,B,1");
    }
    // The group's own text tells why; the store has none.
    void ExpectInnerText(const std::string& text)
    {
        EXPECT_EQ(store.Text(), "");
        EXPECT_EQ(store.InnerText(), text);
    }

    TStoreFolder folder;
    TTestStore store;
};

TEST_F(StoreFailuresTest, AWriteBackIntoAFolderThatIsGoneDoesNotStopTheSwitch)
{
    std::filesystem::rename("cal", "away");
    EXPECT_EQ(store.Add("A,3,B,1", 60), 0u);
    EXPECT_EQ(store.SortedKeys(), (TNames{"A,1,B,1", "A,1,B,1,new", "A,2,B,1", "A,3,B,1"})); // the keys stay
    std::filesystem::rename("away", "cal");
    EXPECT_EQ(store.Select("A,1,B,1,new"), 513u); // the correction is lost
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(folder.Read("cal/s_A_3_B_1"), Grouped(kAB, {Flat("A,3,B,1", 60)}));
}

TEST_F(StoreFailuresTest, NorDoesAFileInThePlaceOfTheFolder)
{
    folder.Remove("cal");
    folder.Write("cal", {1});
    EXPECT_EQ(store.Select("A,2,B,1"), 513u); // switched into an empty group
    EXPECT_EQ(store.ActiveKey(), "(null)");
    EXPECT_EQ(folder.Read("cal"), (FileBytes::TBytes{1}));
}

TEST_F(StoreFailuresTest, NorDoesAFolderInThePlaceOfTheFile)
{
    folder.Remove("cal/s_A_1_B_1");
    folder.MakeFolder("cal/s_A_1_B_1");
    EXPECT_EQ(store.Select("A,2,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 800);
    EXPECT_EQ(store.Select("A,1,B,1"), 513u); // cannot be opened, so it is a group without file
    EXPECT_EQ(folder.Names(), (TNames{"cal", "cal/s_A_1_B_1", "cal/s_A_2_B_1"}));
}

TEST_F(StoreFailuresTest, SavingToItselfReportsThatTheGroupCannotBeWritten)
{
    std::filesystem::rename("cal", "away");
    EXPECT_EQ(store.Save("cal\\s"), 769u);
    ExpectInnerText("Could not create file - 'cal\\s_A_1_B_1'");
    std::filesystem::rename("away", "cal");
    EXPECT_EQ(store.Save("cal\\s"), 0u); // nothing was lost
    EXPECT_EQ(folder.Read("cal/s_A_1_B_1"), Grouped(kAB, {Flat("A,1,B,1", 100), Flat("A,1,B,1,new", 50)}));
}

TEST_F(StoreFailuresTest, CopyingReportsThatTheGroupCannotBeWritten)
{
    std::filesystem::rename("cal", "away");
    EXPECT_EQ(store.Save("copy"), 769u);
    EXPECT_EQ(folder.Names(), (TNames{"away", "away/s_A_1_B_1", "away/s_A_2_B_1"}));
}

TEST_F(StoreFailuresTest, CopyingIntoAMissingFolderFailsAndKeepsTheStore)
{
    EXPECT_EQ(store.Save("gone\\copy"), 769u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    EXPECT_EQ(folder.Names(), (TNames{"cal", "cal/s_A_1_B_1", "cal/s_A_2_B_1"}));
}

TEST_F(StoreFailuresTest, SavingAFreshStoreIntoAMissingFolderLosesNothing)
{
    TTestStore fresh;
    fresh.Add("A,1,B,1", 100);
    fresh.Add("A,2,B,1", 200);
    EXPECT_EQ(fresh.Save("gone\\s"), 769u);
    EXPECT_TRUE(fresh.HasGroup());
    EXPECT_EQ(fresh.Select("A,1,B,1"), 0u);
    EXPECT_EQ(fresh.Corrected(), 900);
    EXPECT_EQ(fresh.Save("t"), 0u);
    EXPECT_EQ(folder.Read("t_A_2_B_1"), Grouped(kAB, {Flat("A,2,B,1", 200)}));
}

// No folder takes a name of more than 255 characters; a value may have more.
TEST_F(StoreFailuresTest, AFreshStoreThatIsSavedHalfWayIsReopenedFromWhatWasWritten)
{
    const std::string tooLong = "A," + std::string(300, 'v') + ",B,1";
    TTestStore fresh;
    fresh.Add("A,1,B,1", 100);
    fresh.Add(tooLong, 200);
    fresh.Add("A,3,B,1", 60);
    EXPECT_EQ(fresh.Save("t"), 769u);
    EXPECT_EQ(folder.Names(), (TNames{"cal", "cal/s_A_1_B_1", "cal/s_A_2_B_1", "t_A_1_B_1"}));
    EXPECT_EQ(fresh.Keys(), (TNames{"A,1,B,1"})); // the other two are lost
    EXPECT_FALSE(fresh.HasGroup());
    EXPECT_EQ(fresh.Text(), "");
}

TEST_F(StoreFailuresTest, AFreshStoreWhoseFirstGroupCannotBeWrittenKeepsEverything)
{
    const std::string tooLong = "A," + std::string(300, 'v') + ",B,1";
    TTestStore fresh;
    fresh.Add(tooLong, 200);
    fresh.Add("A,1,B,1", 100);
    EXPECT_EQ(fresh.Save("t"), 769u);
    EXPECT_EQ(fresh.Keys(), (TNames{tooLong, "A,1,B,1"}));
    EXPECT_EQ(fresh.Select(tooLong), 0u);
    EXPECT_EQ(fresh.Corrected(), 800);
}

TEST_F(StoreFailuresTest, AFreshStoreWhoseGroupCannotBeReopenedKeepsEverything)
{
    folder.MakeFolder("t_A_2_B_1");
    TTestStore fresh;
    fresh.Add("A,1,B,1", 100);
    fresh.Add("A,2,B,1", 200);
    EXPECT_EQ(fresh.Save("t"), 769u); // the folder is listed as a group file and cannot be opened
    EXPECT_EQ(folder.Names(), (TNames{"cal", "cal/s_A_1_B_1", "cal/s_A_2_B_1", "t_A_2_B_1"}));
    EXPECT_EQ(fresh.Select("A,2,B,1"), 0u);
    EXPECT_EQ(fresh.Corrected(), 800);
}

TEST_F(StoreFailuresTest, CorrectionsWithoutPixelsCannotBeWritten)
{
    TTestStore headers;
    headers->LoadFileHeaderOnly("cal\\s");
    TTestStore fresh;
    EXPECT_EQ(fresh->ImportCorrections(headers.Get(), false), 0u);
    EXPECT_EQ(fresh.Save("t"), 4294967295u);
}

TEST_F(StoreFailuresTest, AStoreWhoseFilesAreGoneIsStillUsable)
{
    folder.Remove("cal");
    EXPECT_EQ(store.Load("cal\\s"), 771u);
    EXPECT_EQ(store->LoadFileHeaderOnly("cal\\s_A_1_B_1"), 771u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    folder.MakeFolder("cal");
    EXPECT_EQ(store.Save("cal\\s"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"cal", "cal/s_A_1_B_1"}));
}

// It opens like an empty file, which belongs to no store.
TEST_F(StoreFailuresTest, TheNullDeviceIsNoStore)
{
    const std::string device = kBackslashSystem ? "nul" : "/dev/null";
    EXPECT_EQ(store.Load(device), 4294967295u);
    EXPECT_EQ(store->LoadFileHeaderOnly(device.c_str()), 4294967295u);
    EXPECT_EQ(store.Save(device), 4294967295u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    TTestStore fresh;
    fresh.Add("A,1,B,1", 100);
    EXPECT_EQ(fresh.Save(device), 4294967295u);
    EXPECT_EQ(fresh.Select("A,1,B,1"), 0u);
    EXPECT_EQ(fresh.Corrected(), 900);
    TBackgroundCorrectionProcessorUINT16 processor;
    EXPECT_EQ(processor.SaveFile(device.c_str()), 0u) << "the device is still there";
    EXPECT_EQ(folder.Names(), (TNames{"cal", "cal/s_A_1_B_1", "cal/s_A_2_B_1"}));
}

} // namespace
