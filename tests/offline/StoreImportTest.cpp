#include "offline/StoreSupport.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using StoreFiles::Flat;
using StoreFiles::Grouped;

namespace {

using TNames = std::vector<std::string>;

// Implements the interface, and is neither of the library's objects.
class TForeigner : public QX_KRLSDK::QX_IBackgroundCorrection {
public:
    using TText = const char*;
    unsigned int AddCorrection(TText, const unsigned short**, int, int, int, float, float) override { return 0; }
    unsigned int SetActiveCorrection(TText) override { return 0; }
    TText GetActiveCorrectionKey() override { return nullptr; }
    TText GetCorrectionKey(unsigned int) override { return nullptr; }
    unsigned int GetNumberOfCorrections() override { return 0; }
    unsigned int ClearCorrections() override { return 0; }
    unsigned int DeleteCorrection(TText) override { return 0; }
    unsigned int SetCorrectionLevel(int) override { return 0; }
    int GetCorrectionLevel() override { return 0; }
    unsigned int SetExposureAndIntensity(float, float) override { return 0; }
    unsigned int GetExposureAndIntensity(float*, float*) override { return 0; }
    unsigned int GetReferenceExposureAndIntensity(float*, float*) override { return 0; }
    unsigned int GetCorrectionStatistics(unsigned short*, unsigned short*, unsigned short*) override { return 0; }
    unsigned int GetScaledCorrectionStatistics(unsigned short*, unsigned short*, unsigned short*) override { return 0; }
    unsigned int ApplyCorrection(unsigned short*, int, unsigned short*, int, QX_KRLSDK::ICorrectionDelegate*, bool,
                                 bool, bool) override
    {
        return 0;
    }
    unsigned int SetRegion(int, int, int, int) override { return 0; }
    unsigned int GetRegion(int*, int*, int*, int*) override { return 0; }
    unsigned int ImportCorrections(QX_KRLSDK::QX_IBackgroundCorrection*, bool) override { return 0; }
    unsigned int LoadFileHeaderOnly(TText) override { return 0; }
    unsigned int LoadFile(TText) override { return 0; }
    unsigned int SaveFile(TText) override { return 0; }
    TText GetLastErrorMessage() override { return nullptr; }
};

class StoreImportTest : public testing::Test {
protected:
    unsigned int Import(const TTestObject& source, bool overwrite)
    {
        return store->ImportCorrections(source.Get(), overwrite);
    }
    unsigned int Import(const TTestStore& source, bool overwrite)
    {
        return store->ImportCorrections(source.Get(), overwrite);
    }

    TStoreFolder folder;
    TTestStore store;
    TTestObject live;
};

TEST_F(StoreImportTest, RefusesOtherObjects)
{
    TForeigner foreigner;
    EXPECT_EQ(store->ImportCorrections(&foreigner, false), 513u);
    EXPECT_EQ(store.Text(), "The supplied import source is not the correct type.");
}

TEST_F(StoreImportTest, TakesALiveProcessorInItsOrder)
{
    live.Store("A,2,B,1", {1, 1, {7}}, 0.5f, 20.0f);
    live.Store("A,1,B,1", {2, 1, {8, 9}});
    EXPECT_EQ(Import(live, false), 0u);
    EXPECT_EQ(store.Keys(), (TNames{"A,2,B,1", "A,1,B,1"}));
    store.Save("s");
    EXPECT_EQ(folder.Read("s_A_2_B_1"), Grouped(kAB, {{"A,2,B,1", 1, 1, 0.5f, 20.0f, {7}}}));
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {{"A,1,B,1", 2, 1, 1.0f, 1.0f, {8, 9}}}));
    EXPECT_EQ(live->GetNumberOfCorrections(), 2u);
}

TEST_F(StoreImportTest, AnEmptySourceChangesNothing)
{
    EXPECT_EQ(Import(live, true), 0u);
    EXPECT_FALSE(store.HasGroup());
}

TEST_F(StoreImportTest, WithoutOverwritingKnownKeysAreSkipped)
{
    store.Add("A,1,B,1", 100);
    live.Store("A,1,B,1", {1, 1, {7}});
    live.Store("A,1,B,2", {1, 1, {8}});
    EXPECT_EQ(Import(live, false), 0u);
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1", "A,1,B,2"}));
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Corrected(), 900);
}

TEST_F(StoreImportTest, OverwritingMovesAKeyToTheEnd)
{
    store.Add("A,1,B,1", 100);
    store.Add("A,1,B,2", 100);
    live.Store("A,1,B,1", {1, 1, {7}});
    EXPECT_EQ(Import(live, true), 0u);
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,2", "A,1,B,1"}));
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Corrected(), 993);
}

TEST_F(StoreImportTest, AKeyInAnotherLetterCaseIsUnknownToTheStoreAndTakenInTheProcessor)
{
    store.Add("A,1,B,1,Dark");
    live.Store("A,1,B,1,dark", {1, 1, {7}});
    live.Store("A,1,B,2", {1, 1, {8}});
    EXPECT_EQ(Import(live, true), 1024u);
    EXPECT_EQ(store.Text(), "");
    EXPECT_EQ(store.InnerText(),
              "Couldn't create new background entry - 'Supplied Key is not unique - 'A,1,B,1,dark''");
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1,Dark"})); // and the rest was not imported
}

TEST_F(StoreImportTest, AFailedDeletionRemovesTheKeyAndEndsTheWork)
{
    store.Add("A,1,B,1,x");
    store->DeleteCorrection("A,1,B,1,X"); // the key is still listed
    live.Store("A,1,B,1,x", {1, 1, {7}});
    live.Store("A,1,B,2", {1, 1, {8}});
    EXPECT_EQ(Import(live, true), 513u);
    EXPECT_EQ(store.Keys(), TNames{});
    EXPECT_EQ(store.InnerText(), "The supplied key was not found - 'A,1,B,1,x'");
}

TEST_F(StoreImportTest, ABrokenKeyEndsTheWork)
{
    live.Store("A,1,B,1", {1, 1, {7}});
    live.Store("plain", {1, 1, {8}});
    live.Store("A,1,B,2", {1, 1, {8}});
    EXPECT_EQ(Import(live, false), 513u);
    EXPECT_EQ(store.Text(), "");
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1"})); // what came before stays
}

TEST_F(StoreImportTest, TheActiveCorrectionIsActiveAgainAfterwards)
{
    store.Add("A,1,B,1", 100);
    store.Select("A,1,B,1");
    live.Store("A,1,B,2", {1, 1, {8}});
    EXPECT_EQ(Import(live, false), 0u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    live.Store("A,1,B,1", {1, 1, {7}});
    EXPECT_EQ(Import(live, true), 0u); // it was deactivated meanwhile, so it could be replaced
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    EXPECT_EQ(store.Corrected(), 993);
}

TEST_F(StoreImportTest, MakingItActiveAgainDecidesTheResult)
{
    store.Add("A,1,B,1", 100);
    store.Select("A,1,B,1");
    live.Store("plain", {1, 1, {8}});
    EXPECT_EQ(Import(live, false), 0u); // 513 of the broken key is replaced
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1"}));
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
}

TEST_F(StoreImportTest, ItsGroupIsLoadedAgain)
{
    store.Add("A,1,B,1", 100);
    store.Save("s");
    store.Select("A,1,B,1");
    live.Store("A,2,B,1", {1, 1, {8}});
    live.Store("A,3,B,1", {1, 1, {9}});
    EXPECT_EQ(Import(live, false), 0u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    EXPECT_EQ(folder.Names(), (TNames{"s_A_1_B_1", "s_A_2_B_1", "s_A_3_B_1"})); // written at the switches
    EXPECT_EQ(folder.Read("s_A_3_B_1"), Grouped(kAB, {{"A,3,B,1", 1, 1, 1.0f, 1.0f, {9}}}));
}

TEST_F(StoreImportTest, AFailureToMakeItActiveAgainIsTheResult)
{
    store.Add("A,1,B,1", 100);
    store.Save("s");
    store.Select("A,1,B,1");
    live.Store("A,2,B,1", {1, 1, {8}});
    folder.Write("s_A_1_B_1", {});
    EXPECT_EQ(Import(live, false), 4294967295u);
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1", "A,2,B,1"}));
}

TEST_F(StoreImportTest, TakesEveryGroupOfANamedStore)
{
    TTestStore source;
    source.Add("A,1,B,1", 10);
    source.Add("A,2,B,1", 20);
    source.Save("q");
    source.Add("A,2,B,1,unsaved", 30);
    EXPECT_EQ(Import(source, false), 0u);
    EXPECT_EQ(store.SortedKeys(), (TNames{"A,1,B,1", "A,2,B,1", "A,2,B,1,unsaved"}));
    store.Select("A,2,B,1,unsaved");
    EXPECT_EQ(store.Corrected(), 970);
    // The source switched through its groups, and so wrote what was modified.
    EXPECT_EQ(folder.Read("q_A_2_B_1"), Grouped(kAB, {Flat("A,2,B,1", 20), Flat("A,2,B,1,unsaved", 30)}));
}

TEST_F(StoreImportTest, GroupsOfTheTargetAreThoseOfItsOwnNames)
{
    TTestStore source({"G"});
    source.Add("G,1,A,1,B,1", 10);
    source.Add("G,1,A,2,B,1", 20);
    source.Save("q");
    EXPECT_EQ(Import(source, false), 0u);
    store.Save("s");
    EXPECT_EQ(folder.Names(), (TNames{"q_G_1", "s_A_1_B_1", "s_A_2_B_1"}));
    EXPECT_EQ(folder.Read("s_A_2_B_1"), Grouped(kAB, {Flat("G,1,A,2,B,1", 20)}));
}

TEST_F(StoreImportTest, KeysOfAStoreWithoutCorrectionBringNothing)
{
    TTestStore source;
    source.Add("A,1,B,1,Dark", 10);
    source->DeleteCorrection("A,1,B,1,dark"); // leaves the key
    source.Add("A,1,B,2", 20);
    EXPECT_EQ(Import(source, true), 0u);
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,2"}));
}

TEST_F(StoreImportTest, KeysLongerThanTheProcessorKeepsBringNothing)
{
    TTestStore source;
    source.Add("A,1,B,1," + std::string(600, 'k'), 10);
    EXPECT_EQ(Import(source, true), 0u);
    EXPECT_EQ(store.Keys(), TNames{});
}

TEST_F(StoreImportTest, AGroupOfTheSourceThatCannotBeReadBringsNothing)
{
    TTestStore source;
    source.Add("A,1,B,1", 10);
    source.Add("A,2,B,1", 20);
    source.Save("q");
    folder.Write("q_A_1_B_1", {});
    EXPECT_EQ(Import(source, false), 0u);
    EXPECT_EQ(store.Keys(), (TNames{"A,2,B,1"}));
}

TEST_F(StoreImportTest, AHeaderOnlySourceBringsCorrectionsWithoutPixels)
{
    TTestStore source;
    source.Add("A,1,B,1", 10, 0.5f, 40.0f);
    source.Save("q");
    source->LoadFileHeaderOnly("q");
    EXPECT_EQ(Import(source, false), 0u);
    ASSERT_EQ(store.Select("A,1,B,1"), 0u);
    EXPECT_EQ(store.Corrected(), 1000);
    float exposure = 0.0f;
    float intensity = 0.0f;
    store->GetReferenceExposureAndIntensity(&exposure, &intensity);
    EXPECT_EQ(exposure, 0.5f);
}

TEST_F(StoreImportTest, AStoreGivenToItselfWithoutOverwritingKeepsEverything)
{
    store.Add("A,1,B,1", 100);
    store.Add("A,2,B,1", 200);
    store.Save("s");
    EXPECT_EQ(Import(store, false), 0u);
    EXPECT_EQ(store.SortedKeys(), (TNames{"A,1,B,1", "A,2,B,1"}));
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped(kAB, {Flat("A,1,B,1", 100)}));
}

// Each key is deleted before it is looked for; the next moves up into its place and is passed over.
TEST_F(StoreImportTest, AStoreGivenToItselfWithOverwritingKeepsEverySecondCorrection)
{
    for (const char* const key : {"A,1,B,1", "A,1,B,1,C,2", "A,1,B,1,C,3", "A,1,B,1,C,4", "A,1,B,1,C,5"}) {
        store.Add(key, 100);
    }
    EXPECT_EQ(Import(store, true), 0u);
    EXPECT_EQ(store.Keys(), (TNames{"A,1,B,1,C,2", "A,1,B,1,C,4"}));
}

TEST_F(StoreImportTest, ANamedStoreGivenToItselfWithOverwritingLosesTheOthersFromTheirFiles)
{
    store.Add("A,1,B,1", 100);
    store.Add("A,2,B,1", 200);
    store.Save("s");
    const TNames keys = store.Keys(); // in the order of the folder
    const bool isFirstLost = keys.front() == "A,1,B,1";
    EXPECT_EQ(Import(store, true), 0u);
    EXPECT_EQ(store.Keys(), TNames{keys.back()});
    store.Select("A,9,B,9");
    EXPECT_EQ(folder.Read("s_A_1_B_1"), isFirstLost ? Grouped(kAB, {}) : Grouped(kAB, {Flat("A,1,B,1", 100)}));
    EXPECT_EQ(folder.Read("s_A_2_B_1"), isFirstLost ? Grouped(kAB, {Flat("A,2,B,1", 200)}) : Grouped(kAB, {}));
}

TEST_F(StoreImportTest, AStoreGivenToItselfWithOverwritingReadsAKeyAnewThatADeletionFrees)
{
    const std::string longKey = "A,1,B,1," + std::string(400, 'k'); // too long to lie within the list's node
    store.Add(longKey, 100);
    EXPECT_EQ(Import(store, true), 0u);
    EXPECT_EQ(store->GetNumberOfCorrections(), 0u);
}

TEST_F(StoreImportTest, ALiveProcessorRefusesAStore)
{
    store.Add("A,1,B,1");
    EXPECT_EQ(live->ImportCorrections(store.Get(), true), 513u);
    EXPECT_EQ(live.Message(), "The supplied import source is not the correct type.");
}

TEST_F(StoreImportTest, ASavedKeyOf512CharactersIsFoundAgain)
{
    const std::string key = "A,1,B,1," + std::string(504, 'k');
    store.Add(key, 100);
    store.Select(key);
    live.Store("A,1,B,2", {1, 1, {8}});
    EXPECT_EQ(Import(live, false), 0u);
    EXPECT_EQ(store.ActiveKey(), key);
}

} // namespace
