// Switching between groups: when files are read and written, which settings a group gets, what a failed switch leaves.
#include "offline/StoreSupport.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using FileBytes::TBytes;
using StoreFiles::Flat;
using StoreFiles::Grouped;

namespace {

using TNames = std::vector<std::string>;

class StoreGroupsTest : public testing::Test {
protected:
    // Two groups on disk, none loaded: s_A_1_B_1 with the key A,1,B,1 (100) and s_A_2_B_1 with A,2,B,1 (200).
    void MakeNamedStore()
    {
        store.Add("A,1,B,1", 100);
        store.Add("A,2,B,1", 200);
        ASSERT_EQ(store.Save("s"), 0u);
        ASSERT_FALSE(store.HasGroup());
    }
    std::vector<int> Region() const
    {
        std::vector<int> region(4, 99);
        store->GetRegion(&region[0], &region[1], &region[2], &region[3]);
        return region;
    }

    TStoreFolder folder;
    TTestStore store;
};

TEST_F(StoreGroupsTest, AnUnnamedStoreHoldsEveryGroupInOneProcessor)
{
    store.Add("A,1,B,1", 100);
    store.Add("A,2,B,1", 200);
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 900);
    EXPECT_EQ(store.Select("A,2,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 800);
    EXPECT_TRUE(folder.Names().empty());
}

TEST_F(StoreGroupsTest, AKeyNamesTheGroupInAnyOrderOfItsPairs)
{
    MakeNamedStore();
    EXPECT_EQ(store.Add("B,1,x,y,A,1", 50), 0u); // into the same group
    EXPECT_EQ(store.Add("A,3,B,1"), 0u);         // writes it
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {Flat("A,1,B,1", 100), Flat("B,1,x,y,A,1", 50)}));
}

TEST_F(StoreGroupsTest, SelectingReadsTheGroupsFile)
{
    MakeNamedStore();
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 900);
    EXPECT_EQ(store.Select("A,2,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 800);
}

TEST_F(StoreGroupsTest, ABrokenKeySwitchesNothing)
{
    MakeNamedStore();
    store.Select("A,1,B,1");
    for (const char* const key : {"A,1", "A,,B,2", "", "a,1,b,1", "B,1"}) {
        EXPECT_EQ(store.Select(key), 513u) << key;
        EXPECT_EQ(store.Text(), "");
        EXPECT_EQ(store.ActiveKey(), "A,1,B,1") << key;
    }
}

TEST_F(StoreGroupsTest, AKeyOfTheLoadedGroupDoesNotTouchTheDisk)
{
    MakeNamedStore();
    store.Select("A,1,B,1");
    folder.Remove("s_A_1_B_1");
    EXPECT_EQ(store.Add("A,1,B,1,x", 50), 0u);
    EXPECT_EQ(store.Select("B,1,A,1,none"), 513u);
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 900);
    EXPECT_EQ(store->DeleteCorrection("A,1,B,1,x"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_2_B_1"}));
}

TEST_F(StoreGroupsTest, AGroupWithoutFileStartsEmpty)
{
    MakeNamedStore();
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Select("A,9,B,9"), 513u); // switched, and the key is not there
    EXPECT_EQ(store.ActiveKey(), "(null)");
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1", "s_A_2_B_1"})); // nothing was in it: not modified, not written
}

TEST_F(StoreGroupsTest, ValuesAreComparedWithLetterCase)
{
    store.Add("A,x,B,1", 100);
    ASSERT_EQ(store.Save("s"), 0u);
    store.Select("A,x,B,1");
    EXPECT_EQ(store.Select("A,y,B,1"), 513u);
    if (!kBackslashSystem) { // where names of files ignore case as well, both groups have one file
        EXPECT_EQ(store.Select("A,X,B,1"), 513u);
        EXPECT_EQ(store.Add("A,X,B,1", 70), 0u);
        store.Select("A,x,B,1");
        EXPECT_EQ(folder.Names(), (TNames{"s_A_X_B_1", "s_A_x_B_1"}));
    }
}

TEST_F(StoreGroupsTest, AModifiedGroupIsWrittenWhenItIsLeft)
{
    MakeNamedStore();
    const TBytes second = folder.Read("s_A_2_B_1");
    store.Add("A,1,B,1,new", 50);
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {Flat("A,1,B,1", 100)})); // not yet
    EXPECT_EQ(store.Select("A,2,B,1"), 0u);
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {Flat("A,1,B,1", 100), Flat("A,1,B,1,new", 50)}));
    EXPECT_EQ(folder.Read("s_A_2_B_1"), second);
}

TEST_F(StoreGroupsTest, ANewGroupGetsItsFileWhenItIsLeft)
{
    MakeNamedStore();
    store.Add("B,7,A,3", 50);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1", "s_A_2_B_1"}));
    store.Select("A,2,B,1");
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1", "s_A_2_B_1", "s_A_3_B_7"}));
    EXPECT_EQ(folder.Read("s_A_3_B_7"), Grouped(kAB, {Flat("B,7,A,3", 50)}));
}

TEST_F(StoreGroupsTest, DeletingAndImportingModifyAGroup)
{
    MakeNamedStore();
    store->DeleteCorrection("A,1,B,1");
    store.Select("A,2,B,1");
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {})); // an empty group keeps its file
    const TTestObject source;
    source.Store("A,1,B,1,i", {2, 1, {5, 6}});
    EXPECT_EQ(store->ImportCorrections(source.Get(), false), 0u);
    store.Select("A,2,B,1");
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {{"A,1,B,1,i", 2, 1, 1.0f, 1.0f, {5, 6}}}));
}

TEST_F(StoreGroupsTest, AnUnmodifiedGroupIsNotWritten)
{
    MakeNamedStore();
    store.Select("A,1,B,1");
    store->SetCorrectionLevel(50);
    store.Corrected();
    folder.Write("s_A_1_B_1", {1, 2, 3});
    EXPECT_EQ(store.Select("A,2,B,1"), 0u);
    EXPECT_EQ(folder.Read("s_A_1_B_1"), (TBytes{1, 2, 3}));
}

TEST_F(StoreGroupsTest, AGroupThatWasSavedCountsAsModifiedStill)
{
    MakeNamedStore();
    store.Add("A,1,B,1,new", 50);
    EXPECT_EQ(store.Save("s"), 0u);
    folder.Remove("s_A_1_B_1");
    EXPECT_EQ(store.Select("A,2,B,1"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1", "s_A_2_B_1"}));
}

TEST_F(StoreGroupsTest, DestroyingAStoreWritesNothing)
{
    {
        TTestStore other;
        other.Add("A,1,B,1");
        other.Save("s");
        other.Add("A,2,B,1"); // written at the switch
        other.Add("A,1,B,1,lost");
    }
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1", "s_A_2_B_1"}));
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {Flat("A,1,B,1")}));
}

TEST_F(StoreGroupsTest, PendingSettingsReachEveryGroupLoadedLater)
{
    store->SetExposureAndIntensity(2.0f, 1.0f);
    store->SetRegion(1, 0, 1, 1);
    store->SetCorrectionLevel(50);
    MakeNamedStore();
    for (const char* const key : {"A,1,B,1", "A,2,B,1", "A,3,B,1"}) {
        store.Select(std::string(key) + ",none"); // the group, and no correction that would set the region anew
        EXPECT_EQ(Region(), (std::vector<int>{1, 0, 1, 1})) << key;
        float exposure = 0.0f;
        float intensity = 0.0f;
        store->GetExposureAndIntensity(&exposure, &intensity);
        EXPECT_EQ(exposure, 2.0f);
        EXPECT_EQ(intensity, 1.0f);
    }
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Corrected(), 900); // twice the exposure, half the level
}

TEST_F(StoreGroupsTest, TheFirstGroupOfAFreshStoreGetsThemToo)
{
    store->SetCorrectionLevel(50);
    store.Add("A,1,B,1", 100);
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Corrected(), 950);
}

TEST_F(StoreGroupsTest, ExposureAndIntensityArePendingOnlyTogether)
{
    MakeNamedStore();
    float exposure = 0.0f;
    float intensity = 0.0f;
    store->SetExposureAndIntensity(-1.0f, 5.0f);
    store.Select("A,1,B,1");
    store->GetExposureAndIntensity(&exposure, &intensity);
    EXPECT_EQ(intensity, -1.0f);
    store->ClearCorrections();
    store->SetExposureAndIntensity(5.0f, -1.0f);
    store.Add("A,1,B,1");
    store->GetExposureAndIntensity(&exposure, &intensity);
    EXPECT_EQ(exposure, -1.0f);
}

TEST_F(StoreGroupsTest, ARegionIsPendingOnlyWithAllFourValues)
{
    for (int unset = 0; unset < 4; ++unset) {
        store->ClearCorrections();
        int values[4] = {2, 3, 4, 5};
        values[unset] = -1;
        store->SetRegion(values[0], values[1], values[2], values[3]);
        store.Add("A,1,B,1");
        EXPECT_EQ(Region(), (std::vector<int>{0, 0, 1, 1})) << unset;
        EXPECT_EQ(store.InnerText(), "") << unset; // nor was it tried
    }
    store->ClearCorrections();
    store->SetRegion(2, 3, 4, 5); // not checked against anything while nothing is active
    store.Add("A,1,B,1");
    EXPECT_EQ(Region(), (std::vector<int>{2, 3, 4, 5}));
}

TEST_F(StoreGroupsTest, ALevelOfMinusOneIsNotPending)
{
    store->SetCorrectionLevel(-1);
    store.Add("A,1,B,1", 100);
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Corrected(), 900);
    store->ClearCorrections();
    store->SetCorrectionLevel(-2); // clamped to 0 by the processor
    store.Add("A,1,B,1", 100);
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Corrected(), 1000);
}

TEST_F(StoreGroupsTest, APendingSettingThatTheProcessorRefusesIsIgnored)
{
    store->SetRegion(-5, 0, 1, 1);
    EXPECT_EQ(store.Add("A,1,B,1"), 0u);
    EXPECT_EQ(Region(), (std::vector<int>{0, 0, 1, 1}));
    EXPECT_EQ(store.InnerText(), "The input left [ -5 ] is out of range.");
}

TEST_F(StoreGroupsTest, AGroupFileThatCannotBeReadLeavesTheOldGroup)
{
    MakeNamedStore();
    store.Add("A,1,B,1,new", 50);
    store.Select("A,1,B,1");
    folder.Write("s_A_2_B_1", Grouped(kAB, {Flat("A,2,B,1")}));
    TBytes bytes = folder.Read("s_A_2_B_1");
    bytes.pop_back();
    folder.Write("s_A_2_B_1", bytes);
    EXPECT_EQ(store.Select("A,2,B,1"), 4294967295u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    EXPECT_EQ(store.Text(), "");
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {Flat("A,1,B,1")})); // and has not been written
    folder.Write("s_A_2_B_1", {});
    EXPECT_EQ(store.Add("A,2,B,1,x"), 4294967295u);
    folder.Write("s_A_2_B_1", TBytes(40, 7));
    EXPECT_EQ(store->DeleteCorrection("A,2,B,1"), 769u);
    bytes = Grouped(kAB, {});
    bytes[26] = 3;
    folder.Write("s_A_2_B_1", bytes);
    EXPECT_EQ(store.Select("A,2,B,1"), 772u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    EXPECT_EQ(store.Add("A,1,B,1,y", 51), 0u); // still the loaded group
}

TEST_F(StoreGroupsTest, TheNamesThatAGroupFileRecordsAreNotCompared)
{
    MakeNamedStore();
    folder.Write("s_A_2_B_1", Grouped({"Other"}, {Flat("k", 70)}));
    EXPECT_EQ(store.Select("A,2,B,1"), 513u);
    folder.Write("s_A_3_B_1", StoreFiles::Ungrouped({Flat("A,3,B,1", 70)})); // nor its version, when it is 1
    EXPECT_EQ(store.Select("A,3,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 930);
}

TEST_F(StoreGroupsTest, WithoutNamesANamedStoreNeverReadsItsFileByItself)
{
    TTestStore plain(TNames{});
    plain.Add("a", 100);
    plain.Add("b", 200);
    ASSERT_EQ(plain.Save("p"), 0u);
    EXPECT_EQ(folder.Read("p"), Grouped({}, {Flat("a", 100), Flat("b", 200)}));
    EXPECT_EQ(plain.Keys(), (TNames{"a", "b"}));
    EXPECT_EQ(plain.Select("a"), 513u); // the empty list of values is that of the loaded group
    EXPECT_EQ(plain.InnerText(), "Background correction key not found - 'a'");
    EXPECT_EQ(plain.Add("c", 70), 0u);
    EXPECT_EQ(plain.Save("p"), 0u);
    EXPECT_EQ(folder.Read("p"), Grouped({}, {Flat("c", 70)})); // a and b are lost
}

TEST_F(StoreGroupsTest, AHeaderOnlyStoreReadsGroupsWithoutPixels)
{
    MakeNamedStore();
    ASSERT_EQ(store->LoadFileHeaderOnly("s"), 0u);
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    EXPECT_EQ(store.Corrected(), -1);
    EXPECT_EQ(store.Select("A,2,B,1"), 0u);
    EXPECT_EQ(store.ActiveKey(), "A,2,B,1");
}

TEST_F(StoreGroupsTest, AHeaderOnlyStoreStaysInItsGroupWhenTheNextHasNoFile)
{
    MakeNamedStore();
    store->LoadFileHeaderOnly("s");
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Select("A,9,B,9"), 513u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1"); // no switch
    EXPECT_EQ(store.Add("A,9,B,9"), 770u);
}

TEST_F(StoreGroupsTest, AHeaderOnlyStoreWithoutGroupGetsAnEmptyOneWhenThereIsNoFile)
{
    MakeNamedStore();
    store->SetCorrectionLevel(50);
    store->LoadFileHeaderOnly("s");
    EXPECT_EQ(store.Add("A,9,B,9", 100), 0u); // a full processor, not a header-only one
    EXPECT_EQ(store.Select("A,9,B,9"), 0u);
    EXPECT_EQ(store.Corrected(), 950); // with the pending settings
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1", "s_A_2_B_1"})); // nothing is written in this mode
}

TEST_F(StoreGroupsTest, AHeaderOnlyStoreWritesNothing)
{
    MakeNamedStore();
    const auto before = folder.Files();
    store->LoadFileHeaderOnly("s");
    store.Select("A,1,B,1");
    store->DeleteCorrection("A,1,B,1");
    store.Select("A,2,B,1");
    store.Save("s");
    store.Save("t");
    EXPECT_EQ(folder.Files(), before);
}

} // namespace
