// Opening stores: what a name stands for, and what a store that was opened knows.
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

class StoreLoadTest : public testing::Test {
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

TEST_F(StoreLoadTest, OpeningAnyGroupFileOpensTheStore)
{
    MakeNamedStore();
    for (const char* const name : {"s", "s_A_1_B_1", "s_A_2_B_1"}) {
        TTestStore other({"X"}); // the names come from the file
        if (std::string(name) == "s") {
            EXPECT_EQ(other.Load(name), 771u); // but a base name is sought with the store's own
            continue;
        }
        EXPECT_EQ(other.Load(name), 0u);
        EXPECT_EQ(other.SortedKeys(), (TNames{"A,1,B,1", "A,2,B,1"}));
        EXPECT_FALSE(other.HasGroup());
        EXPECT_EQ(other.Select("A,2,B,1"), 0u);
        EXPECT_EQ(other.Corrected(), 800);
        EXPECT_EQ(other.Add("X,1"), 513u);
    }
}

TEST_F(StoreLoadTest, OpeningABaseNameWorksWithTheStoresNames)
{
    MakeNamedStore();
    TTestStore other;
    EXPECT_EQ(other.Load("s"), 0u);
    EXPECT_EQ(other.SortedKeys(), (TNames{"A,1,B,1", "A,2,B,1"}));
    EXPECT_EQ(other.Load("t"), 771u);
    EXPECT_EQ(other.Text(), "");
    EXPECT_EQ(other->GetNumberOfCorrections(), 2u);
}

TEST_F(StoreLoadTest, OpeningTakesEveryFileThatTheBaseClaims)
{
    MakeNamedStore();
    TTestStore longer;
    longer.Add("A,5,B,5", 5);
    longer.Save("st");
    EXPECT_EQ(store.Load("s_A_1_B_1"), 0u);
    EXPECT_EQ(store.SortedKeys(), (TNames{"A,1,B,1", "A,2,B,1", "A,5,B,5"}));
    EXPECT_EQ(store.Select("A,5,B,5"), 513u); // but its group would be in s_A_5_B_5
}

TEST_F(StoreLoadTest, HeaderOnlyLoadingReportsWhatIsThere)
{
    MakeNamedStore();
    EXPECT_EQ(store->LoadFileHeaderOnly("s_A_1_B_1"), 0u);
    EXPECT_EQ(store.SortedKeys(), (TNames{"A,1,B,1", "A,2,B,1"}));
    EXPECT_EQ(store.Add("A,1,B,1,x"), 770u);
    EXPECT_EQ(store.Load("s"), 0u); // leaves the mode
    EXPECT_EQ(store.Add("A,1,B,1,x"), 0u);
}

TEST_F(StoreLoadTest, LoadingForgetsWhatWasUnsaved)
{
    MakeNamedStore();
    store.Add("A,1,B,1,lost");
    EXPECT_EQ(store.Load("s"), 0u);
    EXPECT_EQ(store.SortedKeys(), (TNames{"A,1,B,1", "A,2,B,1"}));
    EXPECT_EQ(folder.Read("s_A_1_B_1"), first);
}

TEST_F(StoreLoadTest, AFailedLoadLeavesEverything)
{
    MakeNamedStore();
    folder.Write("notes", TBytes(40, 65));
    folder.Write("short", {66});
    TBytes newer = Grouped(kAB, {});
    newer[26] = 9;
    folder.Write("newer", newer);
    folder.Write("s.dat", Grouped(kAB, {}));
    folder.MakeFolder("folder");
    store.Add("A,1,B,1,new", 50);
    store.Select("A,1,B,1,new");
    EXPECT_EQ(store.Load("gone"), 771u);
    EXPECT_EQ(store.Load("notes"), 769u);
    EXPECT_EQ(store.Load("short"), 4294967295u);
    EXPECT_EQ(store.Load("newer"), 772u);
    EXPECT_EQ(store.Load("folder"), 769u);
    EXPECT_EQ(store.Text(), "");
    EXPECT_EQ(store.Load("s.dat"), 768u);
    EXPECT_EQ(store.Text(), "Incorrect file name.");
    EXPECT_EQ(store->LoadFileHeaderOnly("s.dat"), 768u);
    folder.Write("s_A_2_B_1", {}); // a file of the store itself
    EXPECT_EQ(store.Load("s_A_1_B_1"), 4294967295u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1,new");
    EXPECT_EQ(store.Corrected(), 950);
    EXPECT_EQ(store.SortedKeys(), (TNames{"A,1,B,1", "A,1,B,1,new", "A,2,B,1"}));
    EXPECT_EQ(store.Add("A,1,B,1,x"), 0u); // not header-only
}

TEST_F(StoreLoadTest, AnUngroupedFileIsOneUnnamedGroup)
{
    folder.Write("old", Ungrouped({Flat("k", 100), Flat("A,1,B,1", 200)}));
    ASSERT_EQ(store->LoadFileHeaderOnly("old"), 0u);
    EXPECT_TRUE(store.HasGroup());
    EXPECT_EQ(store.Keys(), (TNames{"k", "A,1,B,1"}));
    EXPECT_EQ(store.Select("k"), 513u); // the names stay, and this key has no values
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), -1);
    ASSERT_EQ(store.Load("old"), 0u);
    EXPECT_EQ(store.ActiveKey(), "(null)");
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 800);
    EXPECT_EQ(store->SetActiveCorrection(nullptr), 0u);
    EXPECT_EQ(store.Select("A,2,B,2"), 513u); // no switch: the store has no name
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(folder.Names(), (TNames{"old"}));
}

TEST_F(StoreLoadTest, AnUngroupedFileCutInItsLastPixelsFailsAfterTheOldStoreIsGone)
{
    MakeNamedStore();
    TBytes bytes = Ungrouped({Flat("A,1,B,1", 100), Flat("A,2,B,1", 200)});
    bytes.pop_back();
    folder.Write("old", bytes);
    EXPECT_EQ(store.Load("old"), 4294967295u); // only the pixels tell
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1", "A,2,B,1"}));
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.Select("A,2,B,1"), 513u);
    EXPECT_EQ(store.InnerText(), "Background correction key not found - 'A,2,B,1'");
}

TEST_F(StoreLoadTest, AGroupedFileWithoutNamesIsItsOwnBase)
{
    folder.Write("p", Grouped({}, {Flat("k", 100)}));
    folder.Write("pq", Grouped({}, {Flat("l", 100)}));
    ASSERT_EQ(store.Load("p"), 0u);
    EXPECT_EQ(store.SortedKeys(), (TNames{"k", "l"})); // the base claims the other file
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(store.Add("m"), 0u); // the store's names are those of the file: none
}

TEST_F(StoreLoadTest, ANameInTheFolderIsTakenForTheSplitPoint)
{
    folder.MakeFolder("f_A_x");
    store.Add("A,1,B,1", 100);
    ASSERT_EQ(store.Save("f_A_x\\s"), 0u); // a base name that does not exist is taken whole
    EXPECT_EQ(folder.Names(), (TNames{"f_A_x", "f_A_x/s_A_1_B_1"}));
    EXPECT_EQ(store.Select("A,1,B,1"), 0u);
    TTestStore other;
    EXPECT_EQ(other.Load("f_A_x\\s"), 0u);
    EXPECT_EQ(other.Load("f_A_x\\s_A_1_B_1"), 0u); // the base is "f": nothing is found there
    EXPECT_EQ(other->GetNumberOfCorrections(), 0u);
    EXPECT_EQ(other.Select("A,1,B,1"), 513u);
}

TEST_F(StoreLoadTest, AKeyMayBeTheNameToOpen)
{
    folder.Write("k", Ungrouped({Flat("k", 100)}));
    TTestStore plain(TNames{});
    ASSERT_EQ(plain.Load("k"), 0u);
    EXPECT_EQ(plain->LoadFile(plain->GetCorrectionKey(0)), 0u); // the text goes away on the way
    plain.Select("k");
    EXPECT_EQ(plain->LoadFileHeaderOnly(plain->GetActiveCorrectionKey()), 0u);
    EXPECT_EQ(plain->LoadFile(plain->GetCorrectionKey(0)), 0u);
    plain.Select("k");
    EXPECT_EQ(plain->SaveFile(plain->GetActiveCorrectionKey()), 0u);
    EXPECT_EQ(folder.Files(), (TFiles{{"k", Grouped({}, {Flat("k", 100)})}}));
}

TEST_F(StoreLoadTest, ALiveProcessorOpensNoGroupFile)
{
    MakeNamedStore();
    const TTestObject live;
    EXPECT_EQ(live->LoadFile("s_A_1_B_1"), 772u);
}

} // namespace
