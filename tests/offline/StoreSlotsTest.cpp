// The operations of the store on corrections, and its text: their checks in their order, what they answer without a
// loaded group, and what they forward. Files and imports have tests of their own.
#include "offline/StoreOutcome.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const unsigned short kPixels[4] = {1, 2, 3, 4};
const unsigned short* kFrames[1] = {kPixels};

class StoreSlotsTest : public testing::Test {
protected:
    TStoreFolder folder;
    TTestStore store;
};

TEST_F(StoreSlotsTest, AddChecksTheKeyBeforeEverything)
{
    EXPECT_EQ(Left(store, store->AddCorrection(nullptr, nullptr, 0, 0, 0, 0.0f, 0.0f)),
              (TOutcome{513, "Input key is NULL."}));
    EXPECT_FALSE(store.HasGroup());
}

TEST_F(StoreSlotsTest, AddReturnsAFailedSwitchWithoutText)
{
    EXPECT_EQ(Left(store, store->AddCorrection("A,1", nullptr, 0, 0, 0, 0.0f, 0.0f)), (TOutcome{513, ""}));
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(store->GetNumberOfCorrections(), 0u);
}

TEST_F(StoreSlotsTest, AddForwardsAndLeavesTheTextWithTheProcessor)
{
    EXPECT_EQ(Left(store, store->AddCorrection("A,1,B,2", nullptr, 0, 0, 0, 0.0f, 0.0f)), (TOutcome{514, ""}));
    EXPECT_EQ(store.InnerText(), "Input images are NULL.");
    EXPECT_TRUE(store.HasGroup()); // the group was selected before
    EXPECT_EQ(store->AddCorrection("A,1,B,2", kFrames, 0, 0, 0, 0.0f, 0.0f), 515u);
    EXPECT_EQ(store->AddCorrection("A,1,B,2", kFrames, 1, 0, 0, 0.0f, 0.0f), 516u);
    EXPECT_EQ(store->AddCorrection("A,1,B,2", kFrames, 1, 1, 0, 0.0f, 0.0f), 517u);
    EXPECT_EQ(store->AddCorrection("A,1,B,2", kFrames, 1, 1, 1, 0.0f, 0.0f), 518u);
    EXPECT_EQ(store->AddCorrection("A,1,B,2", kFrames, 1, 1, 1, 1.0f, 0.0f), 519u);
    EXPECT_EQ(store->GetNumberOfCorrections(), 0u);
}

TEST_F(StoreSlotsTest, AddAppendsTheKeyOnSuccessOnly)
{
    EXPECT_EQ(store.Add("A,1,B,2,x"), 0u);
    EXPECT_EQ(store.Add("A,2,B,2"), 0u);
    EXPECT_EQ(store.Add("a,1,B,2,X"), 513u); // no value for A
    EXPECT_EQ(store.Add("A,1,B,2,X"), 513u); // taken, with case ignored
    EXPECT_EQ(store.InnerText(), "Could not add background correction - 'Supplied Key is not unique - 'A,1,B,2,X''");
    EXPECT_EQ(store.Keys(), (std::vector<std::string>{"A,1,B,2,x", "A,2,B,2"}));
}

TEST_F(StoreSlotsTest, KeysAreAppendedAsGivenNotCut)
{
    const std::string key = "A,1,B,2," + std::string(600, 'k');
    EXPECT_EQ(store.Add(key), 0u);
    EXPECT_EQ(store.Keys(), (std::vector<std::string>{key}));
    EXPECT_EQ(store.Select(key.substr(0, 512)), 0u); // what the processor knows it by
    EXPECT_EQ(store.ActiveKey(), key.substr(0, 512));
    EXPECT_EQ(store.Select(key), 513u);
}

TEST_F(StoreSlotsTest, AddWritesNothing)
{
    store.Add("A,1,B,2");
    EXPECT_TRUE(folder.Names().empty());
}

TEST_F(StoreSlotsTest, SelectingNothingNeedsNoGroup)
{
    EXPECT_EQ(Left(store, store->SetActiveCorrection(nullptr)), (TOutcome{0, ""}));
    EXPECT_FALSE(store.HasGroup());
    store.Add("A,1,B,2");
    store.Select("A,1,B,2");
    EXPECT_EQ(store->SetActiveCorrection(nullptr), 0u);
    EXPECT_EQ(store->GetActiveCorrectionKey(), nullptr);
}

TEST_F(StoreSlotsTest, SelectingSwitchesAndForwards)
{
    EXPECT_EQ(Left(store, store.Select("A,1")), (TOutcome{513, ""})); // no switch
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(Left(store, store.Select("A,1,B,2")), (TOutcome{513, ""})); // an empty group
    EXPECT_TRUE(store.HasGroup());
    EXPECT_EQ(store.InnerText(), "Background correction key not found - 'A,1,B,2'");
    store.Add("A,1,B,2");
    EXPECT_EQ(store.Select("A,1,B,2"), 0u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,2");
    EXPECT_EQ(store.Select("A,1,B,2,none"), 513u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,2"); // stays
}

TEST_F(StoreSlotsTest, SelectingIgnoresCaseOnlyOutsideTheGroup)
{
    store.Add("A,1,B,2,Dark");
    EXPECT_EQ(store.Select("A,1,B,2,DARK"), 0u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,2,Dark");
}

TEST_F(StoreSlotsTest, TheActiveKeyIsNullWithoutGroup)
{
    EXPECT_EQ(store->GetActiveCorrectionKey(), nullptr);
    store.Add("A,1,B,2");
    EXPECT_EQ(store->GetActiveCorrectionKey(), nullptr);
}

TEST_F(StoreSlotsTest, KeysComeFromTheStoresOwnList)
{
    store.Add("A,1,B,1");
    store.Add("A,1,B,2");
    store.Save("s"); // now no group is loaded
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
    EXPECT_EQ(store.SortedKeys(), (std::vector<std::string>{"A,1,B,1", "A,1,B,2"}));
    store.Select("A,1,B,1");
    EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
}

TEST_F(StoreSlotsTest, AnIndexIsTakenAsUnsigned)
{
    store.Add("A,1,B,1");
    EXPECT_STREQ(store->GetCorrectionKey(0), "A,1,B,1");
    EXPECT_EQ(store->GetCorrectionKey(1), nullptr);
    EXPECT_EQ(store->GetCorrectionKey(static_cast<unsigned int>(-1)), nullptr);
}

TEST_F(StoreSlotsTest, ClearingForgetsGroupKeysBaseAndMode)
{
    store.Add("A,1,B,1");
    store.Save("s");
    store->LoadFileHeaderOnly("s");
    EXPECT_EQ(Left(store, store->ClearCorrections()), (TOutcome{0, ""}));
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(store->GetNumberOfCorrections(), 0u);
    unsigned short pixel = 5;
    EXPECT_EQ(store->ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(store.Add("A,3,B,3"), 0u);                                // not header-only
    EXPECT_EQ(store.Add("A,4,B,3"), 0u);                                // unnamed: no switch,
    EXPECT_EQ(store.Select("A,3,B,3"), 0u);                             // so both are in memory
    EXPECT_EQ(store.Add("A,3"), 513u);                                  // the grouping names stay
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"s_A_1_B_1"})); // and so do the files
}

TEST_F(StoreSlotsTest, ClearingKeepsThePendingSettings)
{
    store->SetExposureAndIntensity(2.0f, 3.0f);
    store->SetRegion(1, 2, 3, 4);
    store->SetCorrectionLevel(29);
    store.Add("A,1,B,1");
    store->ClearCorrections();
    float exposure = 0.0f;
    float intensity = 0.0f;
    EXPECT_EQ(store->GetExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, 2.0f);
    EXPECT_EQ(intensity, 3.0f);
    int region[4];
    EXPECT_EQ(store->GetRegion(&region[0], &region[1], &region[2], &region[3]), 0u);
    EXPECT_EQ(std::vector<int>(region, region + 4), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(store->GetCorrectionLevel(), 29);
}

TEST_F(StoreSlotsTest, DeletingChecksTheKey)
{
    EXPECT_EQ(Left(store, store->DeleteCorrection(nullptr)), (TOutcome{513, "Input key is NULL."}));
}

TEST_F(StoreSlotsTest, DeletingSwitchesAndForwards)
{
    EXPECT_EQ(Left(store, store->DeleteCorrection("A,1")), (TOutcome{513, ""}));
    EXPECT_FALSE(store.HasGroup());
    store.Add("A,1,B,1");
    store.Add("A,1,B,1,x");
    EXPECT_EQ(store->DeleteCorrection("A,1,B,1,none"), 513u);
    EXPECT_EQ(store.InnerText(), "The supplied key was not found - 'A,1,B,1,none'");
    store.Select("A,1,B,1");
    EXPECT_EQ(store->DeleteCorrection("A,1,B,1"), 513u);
    EXPECT_EQ(store.InnerText(), "The supplied key is currently active.");
    EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
    EXPECT_EQ(store->DeleteCorrection("A,1,B,1,x"), 0u);
    EXPECT_EQ(store.Keys(), (std::vector<std::string>{"A,1,B,1"}));
}

TEST_F(StoreSlotsTest, DeletingByAnotherLetterCaseLeavesTheKey)
{
    store.Add("A,1,B,1,Dark");
    EXPECT_EQ(store->DeleteCorrection("A,1,B,1,dark"), 0u);
    EXPECT_EQ(store.Keys(), (std::vector<std::string>{"A,1,B,1,Dark"}));
    EXPECT_EQ(store.Select("A,1,B,1,Dark"), 513u); // the correction is gone
}

TEST_F(StoreSlotsTest, DeletingRemovesEveryElementEqualToTheKey)
{
    folder.Write("s_A_1_B_1", StoreFiles::Grouped({"A", "B"}, {StoreFiles::Flat("A,1,B,1"), StoreFiles::Flat("k")}));
    folder.Write("s_A_2_B_1", StoreFiles::Grouped({"A", "B"}, {StoreFiles::Flat("A,1,B,1")}));
    ASSERT_EQ(store.Load("s"), 0u);
    EXPECT_EQ(store.SortedKeys(), (std::vector<std::string>{"A,1,B,1", "A,1,B,1", "k"}));
    EXPECT_EQ(store->DeleteCorrection("A,1,B,1"), 0u);
    EXPECT_EQ(store.Keys(), (std::vector<std::string>{"k"}));
}

TEST_F(StoreSlotsTest, ImportChecksModeThenSource)
{
    const TTestObject source;
    EXPECT_EQ(Left(store, store->ImportCorrections(nullptr, true)),
              (TOutcome{513, "The supplied import source is NULL."}));
    store.Add("A,1,B,1");
    store.Save("s");
    store->LoadFileHeaderOnly("s");
    EXPECT_EQ(Left(store, store->ImportCorrections(nullptr, true)), (TOutcome{770, kHeaderOnlyText}));
    EXPECT_EQ(store->ImportCorrections(source.Get(), true), 770u);
}

TEST_F(StoreSlotsTest, FileOperationsCheckTheNameFirst)
{
    const TOutcome expected = {513, "Input file name is NULL."};
    EXPECT_EQ(Left(store, store->LoadFileHeaderOnly(nullptr)), expected);
    EXPECT_EQ(Left(store, store->LoadFile(nullptr)), expected);
    EXPECT_EQ(Left(store, store->SaveFile(nullptr)), expected);
    store.Add("A,1,B,1");
    store.Save("s");
    store->LoadFileHeaderOnly("s");
    EXPECT_EQ(Left(store, store->SaveFile(nullptr)), expected);
    EXPECT_EQ(Left(store, store.Save("t")), (TOutcome{770, kHeaderOnlyText}));
    EXPECT_EQ(Left(store, store.Save("s")), (TOutcome{770, kHeaderOnlyText}));
    EXPECT_EQ(store->GetNumberOfCorrections(), 1u);
}

TEST_F(StoreSlotsTest, TheMessageIsClearedBeforeItIsReturned)
{
    EXPECT_EQ(store->GetLastErrorMessage(), nullptr); // no text, no group
    store->AddCorrection(nullptr, nullptr, 0, 0, 0, 0.0f, 0.0f);
    const char* const message = store->GetLastErrorMessage();
    ASSERT_NE(message, nullptr);
    EXPECT_STREQ(message, "");
    for (int i = 0; i < 256; ++i) { // all of it
        EXPECT_EQ(message[i], '\0');
    }
    EXPECT_EQ(store->GetLastErrorMessage(), nullptr); // the text is gone
}

TEST_F(StoreSlotsTest, TheMessageIsTheProcessorsWhileTheStoreHasNone)
{
    store.Add("A,1,B,1");
    EXPECT_EQ(store.InnerText(), "");
    store.Select("A,1,B,1,none");
    EXPECT_EQ(store.InnerText(), "Background correction key not found - 'A,1,B,1,none'");
    EXPECT_EQ(store.InnerText(), "Background correction key not found - 'A,1,B,1,none'"); // that one stays
    store->DeleteCorrection(nullptr);
    EXPECT_EQ(store.InnerText(), "");
    EXPECT_EQ(store.InnerText(), "Background correction key not found - 'A,1,B,1,none'");
}

TEST_F(StoreSlotsTest, ASuccessLeavesTheTextOfAnEarlierFailure)
{
    store->DeleteCorrection(nullptr);
    EXPECT_EQ(store.Add("A,1,B,1"), 0u);
    EXPECT_EQ(store.Text(), "Input key is NULL.");
}

TEST_F(StoreSlotsTest, TheMessageItselfMayBeHandedBackIn)
{
    store->DeleteCorrection(nullptr);
    const char* const message = store->GetLastErrorMessage();
    EXPECT_EQ(store->LoadFile(message), 771u); // an empty name
    EXPECT_EQ(store->SetActiveCorrection(message), 513u);
}

TEST_F(StoreSlotsTest, AKeyOfAGroupThatGoesMayBeHandedIn)
{
    store.Add("A,1,B,1");
    store.Add("A,2,B,1");
    store.Save("s");
    store.Select("A,1,B,1");
    EXPECT_EQ(store->SetActiveCorrection(store->GetCorrectionKey(1)), 0u);
    const char* const other = store->GetActiveCorrectionKey();
    EXPECT_EQ(store->DeleteCorrection(other), 513u); // active itself
    EXPECT_EQ(store->AddCorrection(other, kFrames, 1, 1, 1, 1.0f, 1.0f), 513u);
    EXPECT_EQ(store->LoadFile(store->GetCorrectionKey(0)), 771u);
    EXPECT_EQ(store->SaveFile(store->GetCorrectionKey(0)), 0u); // a base of that name
    store->SetActiveCorrection(nullptr);
    const char* const key = store->GetCorrectionKey(1);
    EXPECT_EQ(store->DeleteCorrection(key), 0u);
}

// Its text goes with the loaded group, when it is spelled so that it names another one.
TEST_F(StoreSlotsTest, AKeyWhoseTextGoesOnTheWayMayBeHandedIn)
{
    if (kBackslashSystem) {
        GTEST_SKIP() << "where names of files ignore case, both groups have one file";
    }
    const std::string rest = ",B,1,n," + std::string(100, 'k'); // too long to lie within the list's node
    const std::string stored = "A,X" + rest;
    folder.Write("s_A_x_B_1", StoreFiles::Grouped({"A", "B"}, {StoreFiles::Flat(stored)}));
    for (int operation = 0; operation < 3; ++operation) {
        ASSERT_EQ(store.Load("s"), 0u);
        ASSERT_EQ(store.Select("A,x" + rest), 0u);
        ASSERT_EQ(store.ActiveKey(), stored);
        const char* const key = store->GetActiveCorrectionKey();
        if (operation == 0) {
            EXPECT_EQ(store->SetActiveCorrection(key), 513u);
            EXPECT_EQ(store.InnerText(), "Background correction key not found - '" + stored + "'");
        } else if (operation == 1) {
            EXPECT_EQ(store->DeleteCorrection(key), 513u);
            EXPECT_EQ(store.InnerText(), "The supplied key was not found - '" + stored + "'");
        } else {
            EXPECT_EQ(store->AddCorrection(key, kFrames, 1, 1, 1, 1.0f, 1.0f), 0u);
            EXPECT_EQ(store.Select(stored), 0u);
        }
    }
}

TEST_F(StoreSlotsTest, OperationsForwardToAStoreInHeaderOnlyMode)
{
    store.Add("A,1,B,1");
    store.Save("s");
    store->LoadFileHeaderOnly("s");
    ASSERT_EQ(store.Select("A,1,B,1"), 0u);
    float value = 0.0f;
    unsigned short number = 0;
    int pixel = 0;
    unsigned short image[2] = {};
    EXPECT_EQ(store.Add("A,1,B,1,x"), 770u);
    EXPECT_EQ(store->DeleteCorrection("A,1,B,1"), 770u);
    EXPECT_EQ(store->GetExposureAndIntensity(&value, &value), 770u);
    EXPECT_EQ(store->GetReferenceExposureAndIntensity(&value, &value), 0u);
    EXPECT_EQ(store->GetCorrectionStatistics(&number, &number, &number), 770u);
    EXPECT_EQ(store.InnerText(),
              "This file has been opened in header only mode. Cannot access correction data information.");
    EXPECT_EQ(store->GetScaledCorrectionStatistics(&number, &number, &number), 770u);
    EXPECT_EQ(store->ApplyCorrection(image, 2, nullptr, 0, nullptr, false, false, false), 770u);
    EXPECT_EQ(store->GetRegion(&pixel, &pixel, &pixel, &pixel), 770u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1");
    EXPECT_EQ(store.Text(), "");
}

TEST_F(StoreSlotsTest, TextsAreCutAt256Characters)
{
    store.Add("A,1,B,1");
    store.Select("A,1,B,1," + std::string(300, 'k'));
    EXPECT_EQ(store.InnerText(),
              ("Background correction key not found - 'A,1,B,1," + std::string(300, 'k')).substr(0, 256));
}

} // namespace
