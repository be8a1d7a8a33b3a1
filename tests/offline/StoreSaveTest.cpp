// Saving stores: which files there are afterwards, byte for byte, and what the store then is.
#include "offline/StoreSupport.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using FileBytes::TBytes;
using StoreFiles::Flat;
using StoreFiles::Grouped;
using StoreFiles::Ungrouped;

namespace {

using TNames = std::vector<std::string>;
using TFiles = std::map<std::string, TBytes>;

class StoreSaveTest : public testing::Test {
protected:
    // s_A_1_B_1 and s_A_2_B_1, no group loaded.
    void MakeNamedStore()
    {
        store.Add("A,1,B,1", 100);
        store.Add("A,2,B,1", 200);
        ASSERT_EQ(store.Save("s"), 0u);
    }
    const TBytes first = Grouped(kAB, {Flat("A,1,B,1", 100)});
    const TBytes second = Grouped(kAB, {Flat("A,2,B,1", 200)});

    TStoreFolder folder;
    TTestStore store;
};

// One file written down number by number.
TEST_F(StoreSaveTest, AGroupFileHasTheseBytes)
{
    const std::uint16_t row[3] = {0x0102, 0x1234, 0xFFFF};
    const std::uint16_t* frames[1] = {row};
    TTestStore named({"Gain", "ANameLongerThanSixteen"});
    ASSERT_EQ(named->AddCorrection("Gain,2,ANameLongerThanSixteen,hot,dark", frames, 1, 3, 1, 0.5f, 100.0f), 0u);
    ASSERT_EQ(named.Save("s"), 0u);
    EXPECT_EQ(FileBytes::Difference(
                  folder.Read("s_Gain_2_ANameLongerThanSixteen_hot"),
                  FileBytes::Join({
                      FileBytes::Hex("42 61 63 6B 67 72 6F 75 6E 64 20 43 6F 72 72 65 63 74 69 6F 6E 20 46 69 6C 65"),
                      FileBytes::Hex("02 00 00 00"),
                      FileBytes::Hex("45 00 00 00  02 00 00 00  04 00 00 00  02 00 00 00"), // two grouping names
                      FileBytes::Hex("46 00 00 00  02 00 00 00  10 00 00 00"),
                      FileBytes::Hex("47 61 69 6E"),
                      FileBytes::Zeros(12), // "Gain"
                      FileBytes::Hex("46 00 00 00  02 00 00 00  10 00 00 00"),
                      FileBytes::Hex("41 4E 61 6D 65 4C 6F 6E 67 65 72 54 68 61 6E 53"),    // cut at 16 characters
                      FileBytes::Hex("3D 00 00 00  01 00 00 00  04 00 00 00  01 00 00 00"), // one correction
                      FileBytes::Hex("3E 00 00 00  01 00 00 00  46 02 00 00"),              // 576 + 2 * 3 * 1
                      FileBytes::Hex("3F 00 00 00  01 00 00 00  00 02 00 00"),
                      FileBytes::Hex("47 61 69 6E 2C 32 2C"),
                      FileBytes::Hex("41 4E 61 6D 65 4C 6F 6E 67 65 72 54 68 61 6E 53 69 78 74 65 65 6E"),
                      FileBytes::Hex("2C 68 6F 74 2C 64 61 72 6B"),
                      FileBytes::Zeros(512 - 7 - 22 - 9),
                      FileBytes::Hex("40 00 00 00  01 00 00 00  04 00 00 00  03 00 00 00"),
                      FileBytes::Hex("41 00 00 00  01 00 00 00  04 00 00 00  01 00 00 00"),
                      FileBytes::Hex("42 00 00 00  01 00 00 00  04 00 00 00  00 00 00 3F"),
                      FileBytes::Hex("43 00 00 00  01 00 00 00  04 00 00 00  00 00 C8 42"),
                      FileBytes::Hex("44 00 00 00  01 00 00 00  06 00 00 00"),
                      // The median filter, mirrored on the left and continued on the right.
                      FileBytes::Hex("34 12  34 12  FF FF"),
                  })),
              "");
}

TEST_F(StoreSaveTest, SavingAFreshStoreSplitsItByGroup)
{
    store.Add("A,2,B,1,x", 1);
    store.Add("B,1,A,1", 2);
    store.Add("A,2,B,1,y", 3);
    store.Add("A,1,B,2", 4);
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_2_B_1", Grouped(kAB, {Flat("A,2,B,1,x", 1), Flat("A,2,B,1,y", 3)})},
                                      {"s_A_1_B_1", Grouped(kAB, {Flat("B,1,A,1", 2)})},
                                      {"s_A_1_B_2", Grouped(kAB, {Flat("A,1,B,2", 4)})}}));
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(store->GetNumberOfCorrections(), 4u);
    EXPECT_EQ(store.SortedKeys(), (TNames{"A,1,B,2", "A,2,B,1,x", "A,2,B,1,y", "B,1,A,1"}));
    EXPECT_EQ(store.Text(), "");
}

TEST_F(StoreSaveTest, SavingAFreshStoreNamesIt)
{
    MakeNamedStore();
    store.Add("A,1,B,1,new", 50); // in its group
    store.Add("A,3,B,1", 60);     // the switch writes it
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {Flat("A,1,B,1", 100), Flat("A,1,B,1,new", 50)}));
    EXPECT_EQ(store.Save("s"), 0u); // to itself
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1", "s_A_2_B_1", "s_A_3_B_1"}));
}

TEST_F(StoreSaveTest, AFolderMayBeSpelledWithBackslashes)
{
    folder.MakeFolder("cal");
    store.Add("A,1,B,1", 100);
    EXPECT_EQ(store.Save("cal\\s"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"cal", "cal/s_A_1_B_1"}));
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    TTestStore other;
    EXPECT_EQ(other.Load("cal\\s_A_1_B_1"), 0u);
    EXPECT_EQ(other.Keys(), (TNames{"A,1,B,1"}));
    EXPECT_EQ(other.Select("A,1,B,1"), 0u);
}

TEST_F(StoreSaveTest, AWholePathWorksToo)
{
    store.Add("A,1,B,1", 100);
    const std::string path = folder.BackslashPath("s");
    EXPECT_EQ(store.Save(path), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1"}));
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.Load(path + "_A_1_B_1"), 0u);
    EXPECT_EQ(store.Load(path), 0u);
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
}

TEST_F(StoreSaveTest, ForwardSlashesAreTurnedWhereTheyAreTheSystemsOwn)
{
    folder.MakeFolder("cal");
    store.Add("A,1,B,1", 100);
    EXPECT_EQ(store.Save("cal/s"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"cal", "cal/s_A_1_B_1"}));
    if (kBackslashSystem) { // the texts know only the backslash: nothing is found in the current folder
        EXPECT_TRUE(store.HasGroup());
        EXPECT_EQ(store.Load("cal/s"), 771u);
    } else {
        EXPECT_FALSE(store.HasGroup());
        EXPECT_EQ(store.Select("A,1,B,1"), 0u);
        EXPECT_EQ(store.Load("cal/s_A_1_B_1"), 0u);
        EXPECT_EQ(store->LoadFileHeaderOnly("cal/s"), 0u);
    }
}

TEST_F(StoreSaveTest, SavingAnEmptyFreshStoreWritesNothing)
{
    EXPECT_EQ(store.Save("s"), 0u);
    store.Select("A,1,B,1"); // now there is an empty group
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_TRUE(folder.Names().empty());
    store.Add("A,2,B,1");
    store.Select("A,1,B,1");
    EXPECT_TRUE(folder.Names().empty()); // still unnamed
}

TEST_F(StoreSaveTest, SavingAFreshStoreReplacesTheTarget)
{
    MakeNamedStore();
    TTestStore other;
    other.Add("A,7,B,7", 7);
    EXPECT_EQ(other.Save("s"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_7_B_7", Grouped(kAB, {Flat("A,7,B,7", 7)})}}));
}

TEST_F(StoreSaveTest, AnEmptyFreshStoreRemovesTheTargetToo)
{
    MakeNamedStore();
    TTestStore other;
    EXPECT_EQ(other.Save("s"), 0u);
    EXPECT_TRUE(folder.Names().empty());
}

TEST_F(StoreSaveTest, SavingOntoAGroupFileReplacesItsStore)
{
    MakeNamedStore();
    TTestStore other;
    other.Add("A,7,B,7", 7);
    EXPECT_EQ(other.Save("s_A_1_B_1"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_7_B_7"}));
    // The name that was given exists no more, neither as a file nor as a base: the store stays unnamed, and whole.
    EXPECT_TRUE(other.HasGroup());
    EXPECT_EQ(other.Select("A,7,B,7"), 0u);
}

TEST_F(StoreSaveTest, SavingOntoAGroupFileThatIsWrittenAgainNamesTheStore)
{
    MakeNamedStore();
    TTestStore other;
    other.Add("A,1,B,1", 7);
    EXPECT_EQ(other.Save("s_A_1_B_1"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_1_B_1", Grouped(kAB, {Flat("A,1,B,1", 7)})}}));
    EXPECT_FALSE(other.HasGroup());
}

TEST_F(StoreSaveTest, SavingOntoAnUngroupedFileRemovesWhateverItsNameClaims)
{
    folder.Write("old", Ungrouped({Flat("k")}));
    folder.Write("older.txt", {1});
    folder.Write("old_x", {2});
    store.Add("A,1,B,1", 100);
    EXPECT_EQ(store.Save("old"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"old_A_1_B_1", first}, {"old_x", {2}}}));
}

TEST_F(StoreSaveTest, SavingOntoAFileOfOtherNamesRemovesItsStoreByThoseNames)
{
    folder.Write("s_X_1", Grouped({"X"}, {}));
    folder.Write("s_X_2", Grouped({"X"}, {}));
    folder.Write("s_Y_2", Grouped({"Y"}, {}));
    store.Add("A,1,B,1", 100);
    EXPECT_EQ(store.Save("s_X_1"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_1_B_1", first}, {"s_Y_2", Grouped({"Y"}, {})}}));
}

TEST_F(StoreSaveTest, ABaseClaimsTheFilesOfEveryBaseThatItBegins)
{
    store.Add("A,1,B,1", 100);
    ASSERT_EQ(store.Save("store"), 0u);
    TTestStore other;
    other.Add("A,2,B,1", 200);
    EXPECT_EQ(other.Save("s"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_2_B_1", second}})); // store_A_1_B_1 is gone
}

TEST_F(StoreSaveTest, SavingOntoAFileOfAnotherStoresNamesIsRefused)
{
    folder.Write("s.dat", Grouped(kAB, {}));
    store.Add("A,1,B,1", 100);
    EXPECT_EQ(store.Save("s.dat"), 768u);
    EXPECT_EQ(store.Text(), "Incorrect file name.");
    EXPECT_EQ(folder.Names(), (TNames{"s.dat"}));
    EXPECT_EQ(store.Select("A,1,B,1"), 0u); // nothing is lost
}

TEST_F(StoreSaveTest, SavingOntoSomethingElseIsRefused)
{
    folder.Write("text", {1, 2, 3});
    folder.Write("notes", TBytes(40, 65));
    TBytes newer = Grouped(kAB, {});
    newer[26] = 3;
    folder.Write("newer", newer);
    folder.MakeFolder("folder");
    const TFiles before = folder.Files();
    store.Add("A,1,B,1", 100);
    EXPECT_EQ(store.Save("text"), 4294967295u);
    EXPECT_EQ(store.Save("notes"), 769u);
    EXPECT_EQ(store.Save("newer"), 772u);
    EXPECT_EQ(store.Save("folder"), 769u);
    EXPECT_EQ(store.Text(), ""); // those texts stay with the object that read the file
    EXPECT_EQ(folder.Files(), before);
}

TEST_F(StoreSaveTest, AListedFileThatBelongsElsewhereStopsTheSave)
{
    folder.Write("s_A_1_B_1", Grouped({"Other"}, {}));
    store.Add("A,1,B,1", 100);
    EXPECT_EQ(store.Save("s"), 768u);
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped({"Other"}, {}));
    folder.Write("s_A_1_B_1", {});
    EXPECT_EQ(store.Save("s"), 4294967295u);
}

TEST_F(StoreSaveTest, EachListedFileTakesItsOwnStoreAlong)
{
    // Recorded under one name only, s_A_1_B_1 belongs to the store s of that name, and takes s_A_5 along.
    folder.Write("s_A_1_B_1", Grouped({"A"}, {}));
    folder.Write("s_A_5", Grouped({"A"}, {}));
    store.Add("A,2,B,1", 200);
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_1_B_1", Grouped({"A"}, {})}, {"s_A_2_B_1", second}}));
}

TEST_F(StoreSaveTest, FoldersAreNeverRemoved)
{
    folder.MakeFolder("s_A_1");
    TTestStore one({"A"});
    one.Add("A,2", 5);
    EXPECT_EQ(one.Save("s"), 769u); // it is listed, and cannot be read
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1"}));
    folder.Write("s_A_3", Grouped({"A"}, {}));
    EXPECT_EQ(one.Save("s_A_3"), 769u); // nor does it go with the files of the store that claims it
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1"}));
}

TEST_F(StoreSaveTest, ABrokenKeyStopsTheSaveAfterTheTargetIsGone)
{
    MakeNamedStore();
    // A version 1 file brings keys that lack values, and leaves the names.
    folder.Write("old", Ungrouped({Flat("A,1,B,1"), Flat("plain")}));
    TTestStore other;
    ASSERT_EQ(other.Load("old"), 0u);
    EXPECT_EQ(other.Save("s"), 513u);
    EXPECT_EQ(other.Text(), "");
    EXPECT_EQ(folder.Names(), (TNames{"old"}));
    EXPECT_EQ(other.Keys(), (TNames{"A,1,B,1", "plain"})); // in memory nothing is lost
    EXPECT_EQ(other.Select("A,1,B,1"), 0u);
}

TEST_F(StoreSaveTest, KeysThatDifferInCaseOrLieBeyond512CharactersMakeTheFilesOfAFullCopyPerGroup)
{
    const std::string longKey = "A,2,B,1," + std::string(600, 'k');
    store.Add(longKey, 1);
    store.Add("A,1,B,1,Dark", 2);
    store->DeleteCorrection("A,1,B,1,dark"); // the key stays
    store.Add("A,1,B,1,dark", 3);            // and so there are two that differ in case
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_1_B_1", Grouped(kAB, {Flat("A,1,B,1,dark", 3)})},
                                      {"s_A_2_B_1", Grouped(kAB, {})}})); // its key is stored otherwise
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1,dark"}));
}

TEST_F(StoreSaveTest, SavingANamedStoreToItselfWritesTheLoadedGroup)
{
    MakeNamedStore();
    store.Add("A,1,B,1,new", 50);
    for (const char* const name : {"s", "s_A_1_B_1", "s_A_9_B_9", "starts_A_1_B_1"}) { // all name the store
        folder.Write("s_A_1_B_1", {});
        EXPECT_EQ(store.Save(name), 0u);
        EXPECT_EQ(folder.Files(), (TFiles{{"s_A_1_B_1", Grouped(kAB, {Flat("A,1,B,1", 100), Flat("A,1,B,1,new", 50)})},
                                          {"s_A_2_B_1", second}}))
            << name;
    }
    EXPECT_TRUE(store.HasGroup());
}

TEST_F(StoreSaveTest, SavingANamedStoreWritesTheLoadedGroupEvenUnmodified)
{
    MakeNamedStore();
    store.Select("A,1,B,1");
    folder.Remove("s_A_1_B_1");
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_1_B_1", first}, {"s_A_2_B_1", second}}));
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1"); // the group is still the loaded one
    folder.Remove("s_A_1_B_1");
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
}

TEST_F(StoreSaveTest, SavingWritesAnEmptyGroupThatWasOnlyAskedFor)
{
    MakeNamedStore();
    EXPECT_EQ(store.Select("A,9,B,9"), 513u);
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_1_B_1", first}, {"s_A_2_B_1", second}, {"s_A_9_B_9", Grouped(kAB, {})}}));
}

TEST_F(StoreSaveTest, SavingANamedStoreWithoutGroupToItselfWritesNothing)
{
    MakeNamedStore();
    folder.Remove("s_A_1_B_1");
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_2_B_1"}));
}

TEST_F(StoreSaveTest, SavingANamedStoreElsewhereCopiesIt)
{
    MakeNamedStore();
    store.Add("A,1,B,1,new", 50);
    EXPECT_EQ(store.Save("copy"), 0u);
    const TBytes both = Grouped(kAB, {Flat("A,1,B,1", 100), Flat("A,1,B,1,new", 50)});
    EXPECT_EQ(folder.Files(), (TFiles{{"s_A_1_B_1", both}, // the loaded group was written first
                                      {"s_A_2_B_1", second},
                                      {"copy_A_1_B_1", both},
                                      {"copy_A_2_B_1", second}}));
    store.Add("A,3,B,1", 60);
    store.Select("A,2,B,1");
    EXPECT_EQ(folder.Names(), (TNames{"copy_A_1_B_1", "copy_A_2_B_1", "s_A_1_B_1", "s_A_2_B_1", "s_A_3_B_1"}));
}

TEST_F(StoreSaveTest, CopyingReplacesTheTarget)
{
    TTestStore other;
    other.Add("A,7,B,7", 7);
    other.Save("copy");
    MakeNamedStore();
    EXPECT_EQ(store.Save("copy_A_7_B_7"), 0u); // one of its files: the base is what its name carries
    EXPECT_EQ(folder.Names(), (TNames{"copy_A_1_B_1", "copy_A_2_B_1", "s_A_1_B_1", "s_A_2_B_1"}));
}

TEST_F(StoreSaveTest, CopyingToABaseThatBeginsTheOwnOneRemovesTheStoreItself)
{
    store.Add("A,1,B,1", 100);
    ASSERT_EQ(store.Save("store"), 0u);
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_TRUE(folder.Names().empty()); // the target's old files were those of the store
}

TEST_F(StoreSaveTest, CopyingStopsAtAFileWhoseNameHasNoValues)
{
    MakeNamedStore();
    folder.Write("stray_A_1_B_1", first); // claimed, and not to be parsed: the tokens are tray, A, 1, B, 1
    EXPECT_EQ(store.Save("copy"), 513u);
    EXPECT_EQ(store.Text(), "");
}

TEST_F(StoreSaveTest, CopyingStopsAtAFileThatCannotBeRead)
{
    MakeNamedStore();
    folder.Remove("s_A_2_B_1");
    folder.Write("s_A_1_B_1", {});
    EXPECT_EQ(store.Save("copy"), 4294967295u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1"}));
}

TEST_F(StoreSaveTest, ACopyRecordsTheStoresOwnNames)
{
    MakeNamedStore();
    folder.Write("s_A_1_B_1", Ungrouped({Flat("A,1,B,1", 100)}));
    EXPECT_EQ(store.Save("copy"), 0u);
    EXPECT_EQ(folder.Read("copy_A_1_B_1"), first);
}

TEST_F(StoreSaveTest, AnUngroupedFileIsSplitWhenItIsSaved)
{
    folder.Write("old", Ungrouped({Flat("A,1,B,1", 100), Flat("A,2,B,1", 200)}));
    ASSERT_EQ(store.Load("old"), 0u);
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"old", Ungrouped({Flat("A,1,B,1", 100), Flat("A,2,B,1", 200)})},
                                      {"s_A_1_B_1", first},
                                      {"s_A_2_B_1", second}}));
    EXPECT_EQ(store.Load("old"), 0u); // a named store takes it as well
    EXPECT_EQ(store.Save("old"), 0u); // onto itself: it is replaced by its groups
    EXPECT_EQ(folder.Names(), (TNames{"old_A_1_B_1", "old_A_2_B_1", "s_A_1_B_1", "s_A_2_B_1"}));
}

TEST_F(StoreSaveTest, NamesLongerThan16CharactersWorkByBaseNameOnly)
{
    TTestStore named({"SensorTemperature"});
    named.Add("SensorTemperature,20", 100);
    ASSERT_EQ(named.Save("s"), 0u);
    EXPECT_EQ(folder.Files(),
              (TFiles{{"s_SensorTemperature_20", Grouped({"SensorTemperatur"}, {Flat("SensorTemperature,20", 100)})}}));
    EXPECT_EQ(named.Select("SensorTemperature,20"), 0u);
    EXPECT_EQ(named.Load("s"), 0u);
    EXPECT_EQ(named.Load("s_SensorTemperature_20"), 768u); // its name does not carry the recorded 16 characters
    EXPECT_EQ(named.Select("SensorTemperature,20"), 0u);
    EXPECT_EQ(named.Save("s"), 0u);
    EXPECT_EQ(named.Save("copy"), 0u);
    EXPECT_EQ(named.Save("copy"), 768u); // nor can what is there be replaced
    TTestStore exact({"SensorTemperatur"});
    exact.Add("SensorTemperatur,20", 100);
    exact.Save("t");
    EXPECT_EQ(exact.Load("t_SensorTemperatur_20"), 0u); // 16 are recorded whole
}

TEST_F(StoreSaveTest, ValuesWithUnderscoresCannotBeFoundAgain)
{
    store.Add("A,1_2,B,1", 100);
    EXPECT_EQ(store.Save("s"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_2_B_1"}));
    EXPECT_TRUE(store.HasGroup()); // reopening found nothing, so the store is still the unnamed one
    EXPECT_EQ(store.Select("A,1_2,B,1"), 0u);
}

TEST_F(StoreSaveTest, TheEmptyNameIsABaseWithoutText)
{
    store.Add("A,1,B,1", 100);
    EXPECT_EQ(store.Save(""), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"_A_1_B_1", first}}));
    EXPECT_FALSE(store.HasGroup()); // reopened, and unnamed again: such a base counts as none
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1"}));
    EXPECT_EQ(store.Select("A,1,B,1"), 513u);
}

} // namespace
