// How stores come and go, and their grouping names.
#include "offline/StoreSupport.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const unsigned short kPixels[4] = {1, 2, 3, 4};
const unsigned short* kFrames[1] = {kPixels};

TEST(StoreFactoryTest, TakesTheNames)
{
    TTestStore store({"A", "B"});
    EXPECT_EQ(store.Add("A,1,B,2"), 0u);
    EXPECT_EQ(store.Add("A,1"), 513u);
}

TEST(StoreFactoryTest, ReturnsTheStoreWhenTheNamesAreMissing)
{
    QX_KRLSDK::QX_IBackgroundCorrection* const store = CreateBackgroundCorrectionOffline(nullptr, 2);
    ASSERT_NE(store, nullptr);
    // The failure shows only in that there is a text to be cleared: without any, a store without group gives null.
    ASSERT_NE(store->GetLastErrorMessage(), nullptr);
    EXPECT_EQ(store->GetLastErrorMessage(), nullptr);
    const TStoreText text(*store);
    EXPECT_EQ(store->AddCorrection("no group at all", kFrames, 1, 1, 1, 1.0f, 1.0f), 0u);
    EXPECT_EQ(DeleteBackgroundCorrection(store), 0u);
}

TEST(StoreFactoryTest, KeepsTheNamesBeforeARefusedOne)
{
    char a[] = "A";
    char empty[] = "";
    char c[] = "C";
    char* names[] = {a, empty, c};
    QX_KRLSDK::QX_IBackgroundCorrection* const store = CreateBackgroundCorrectionOffline(names, 3);
    ASSERT_NE(store, nullptr);
    EXPECT_NE(store->GetLastErrorMessage(), nullptr);
    EXPECT_EQ(store->AddCorrection("A,1", kFrames, 1, 1, 1, 1.0f, 1.0f), 0u);   // C is not asked for
    EXPECT_EQ(store->AddCorrection("C,1", kFrames, 1, 1, 1, 1.0f, 1.0f), 513u); // A is
    EXPECT_EQ(DeleteBackgroundCorrection(store), 0u);
}

TEST(StoreFactoryTest, LeavesNoTextWhenAllNamesAreTaken)
{
    char a[] = "A";
    char* names[] = {a};
    QX_KRLSDK::QX_IBackgroundCorrection* const store = CreateBackgroundCorrectionOffline(names, 1);
    EXPECT_EQ(store->GetLastErrorMessage(), nullptr);
    DeleteBackgroundCorrection(store);
}

class GroupingParametersTest : public testing::Test {
protected:
    TOutcome Set(const std::vector<const char*>& names, int count)
    {
        const unsigned int code = store.SetGroupingParameters(names.data(), count);
        return {code, text.Text()};
    }
    bool Accepts(const char* key) { return store.AddCorrection(key, kFrames, 1, 1, 1, 1.0f, 1.0f) == 0; }

    TBackgroundCorrectionFileManager store;
    TStoreText text{store};
};

TEST_F(GroupingParametersTest, RefuseMissingNames)
{
    EXPECT_EQ((TOutcome{store.SetGroupingParameters(nullptr, 0), text.Text()}),
              (TOutcome{513, "Grouping parameters are NULL."}));
    EXPECT_EQ((TOutcome{store.SetGroupingParameters(nullptr, 2), text.Text()}),
              (TOutcome{513, "Grouping parameters are NULL."}));
}

TEST_F(GroupingParametersTest, RefuseACountBelowOne)
{
    EXPECT_EQ(Set({"A"}, 0), (TOutcome{513, "One of the grouping parameter is NULL."}));
    EXPECT_EQ(Set({"A"}, -1), (TOutcome{513, "One of the grouping parameter is NULL."}));
    EXPECT_TRUE(Accepts("x"));
}

TEST_F(GroupingParametersTest, RefuseANullOrEmptyName)
{
    EXPECT_EQ(Set({"A", nullptr, "C"}, 3), (TOutcome{513, "One of the grouping parameter is NULL."}));
    EXPECT_FALSE(Accepts("C,1"));
    EXPECT_TRUE(Accepts("A,1"));
    store.GetLastErrorMessage();
    EXPECT_EQ(Set({""}, 1), (TOutcome{513, "One of the grouping parameter is NULL."}));
}

TEST_F(GroupingParametersTest, AreAppendedByEveryCall)
{
    EXPECT_EQ(Set({"A"}, 1), (TOutcome{0, ""}));
    EXPECT_EQ(Set({"B"}, 1), (TOutcome{0, ""}));
    EXPECT_FALSE(Accepts("B,2"));
    EXPECT_FALSE(Accepts("A,1"));
    EXPECT_TRUE(Accepts("A,1,B,2"));
}

TEST_F(GroupingParametersTest, MayBeGivenTwice)
{
    EXPECT_EQ(Set({"A", "A"}, 2), (TOutcome{0, ""}));
    EXPECT_TRUE(Accepts("A,1"));
}

TEST_F(GroupingParametersTest, WriteAndClearANamedStoreFirst)
{
    const TStoreFolder folder;
    Set({"A"}, 1);
    Accepts("A,1");
    store.SaveFile("s");
    Accepts("A,2");
    EXPECT_EQ(Set({"B"}, 1), (TOutcome{0, ""}));
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"s_A_1", "s_A_2"}));
    EXPECT_EQ(store.GetNumberOfCorrections(), 0u);
    EXPECT_TRUE(Accepts("A,1,B,1"));
    EXPECT_EQ(store.SaveFile("t"), 0u);
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"s_A_1", "s_A_2", "t_A_1_B_1"}));
}

TEST_F(GroupingParametersTest, ClearANamedStoreEvenWhenTheCountIsRefused)
{
    const TStoreFolder folder;
    Set({"A"}, 1);
    Accepts("A,1");
    store.SaveFile("s");
    EXPECT_EQ(Set({"B"}, 0), (TOutcome{513, "One of the grouping parameter is NULL."}));
    EXPECT_EQ(store.GetNumberOfCorrections(), 0u);
}

TEST_F(GroupingParametersTest, LeaveAnUnnamedStoreAlone)
{
    Set({"A"}, 1);
    Accepts("A,1");
    Set({"B"}, 1);
    EXPECT_EQ(store.GetNumberOfCorrections(), 1u);
}

TEST_F(GroupingParametersTest, DoNotWriteAHeaderOnlyStore)
{
    const TStoreFolder folder;
    Set({"A"}, 1);
    Accepts("A,1");
    store.SaveFile("s");
    store.LoadFileHeaderOnly("s");
    store.SetActiveCorrection("A,1");
    const FileBytes::TBytes before = folder.Read("s_A_1");
    Set({"B"}, 1);
    EXPECT_EQ(folder.Read("s_A_1"), before);
    EXPECT_EQ(store.GetNumberOfCorrections(), 0u);
}

// Without names the store's one group is not read by itself, so that it can be written although the store cannot.
TEST_F(GroupingParametersTest, DoNotWriteANewGroupOfAHeaderOnlyStore)
{
    const TStoreFolder folder;
    const FileBytes::TBytes before = StoreFiles::Grouped({}, {StoreFiles::Flat("k", 100)});
    folder.Write("p", before);
    ASSERT_EQ(store.LoadFileHeaderOnly("p"), 0u);
    ASSERT_TRUE(Accepts("new"));
    Set({"A"}, 1);
    EXPECT_EQ(folder.Read("p"), before);
}

TEST(StoreLifetimeTest, DeletingDestroysTheStoreAndItsGroup)
{
    char a[] = "A";
    char* names[] = {a};
    QX_KRLSDK::QX_IBackgroundCorrection* const store = CreateBackgroundCorrectionOffline(names, 1);
    store->AddCorrection("A,1", kFrames, 1, 2, 2, 1.0f, 1.0f);
    const std::string before = GetLastBackgroundCorrectionDLLError();
    EXPECT_EQ(DeleteBackgroundCorrection(store), 0u);
    EXPECT_EQ(GetLastBackgroundCorrectionDLLError(), before);
}

} // namespace
