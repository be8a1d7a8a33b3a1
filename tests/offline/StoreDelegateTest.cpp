// Delegates that call the store back while it applies a correction. What goes wrong here shows under the sanitizers
// first: the processor that called the delegate must outlive the call.
#include "offline/StoreSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using StoreFiles::Flat;
using StoreFiles::Grouped;

namespace {

class TCallingBack : public QX_KRLSDK::ICorrectionDelegate {
public:
    explicit TCallingBack(std::function<void()> call) : work(std::move(call)) {}

    unsigned int SubtractInPlace(unsigned short*, const unsigned short* background, int width, int height, bool,
                                 bool) override
    {
        WorkBesides(background, width * height);
        return 71;
    }
    unsigned int SubtractInto(unsigned short*, const unsigned short*, const unsigned short* background, int width,
                              int height, bool, bool) override
    {
        WorkBesides(background, width * height);
        return 72;
    }
    unsigned int ProcessInPlace(unsigned short*, int, int) override
    {
        work();
        return 73;
    }

private:
    // The background belongs to the processor that called, and must still be there afterwards.
    void WorkBesides(const unsigned short* background, int length)
    {
        const std::vector<unsigned short> before(background, background + length);
        work();
        EXPECT_EQ(std::vector<unsigned short>(background, background + length), before);
    }

    std::function<void()> work;
};

// s_A_1_B_1 (100) and s_A_2_B_1 (200) on disk, the first group loaded and its correction active.
class StoreDelegateTest : public testing::Test {
protected:
    StoreDelegateTest()
    {
        store.Add("A,1,B,1", 100);
        store.Add("A,2,B,1", 200);
        store.Save("s");
        store.Select("A,1,B,1");
    }
    unsigned int Apply(TCallingBack& delegate)
    {
        unsigned short image[2] = {1000, 1000};
        return store->ApplyCorrection(image, 2, nullptr, 0, &delegate, true, true, false);
    }

    TStoreFolder folder;
    TTestStore store;
};

TEST_F(StoreDelegateTest, MaySelectAnotherGroup)
{
    TCallingBack delegate([this] { EXPECT_EQ(store.Select("A,2,B,1"), 0u); });
    EXPECT_EQ(Apply(delegate), 71u);
    EXPECT_EQ(store.ActiveKey(), "A,2,B,1");
    EXPECT_EQ(store.Corrected(), 800);
}

TEST_F(StoreDelegateTest, MaySelectAnotherGroupWithAnOutput)
{
    TCallingBack delegate([this] { EXPECT_EQ(store.Select("A,2,B,1"), 0u); });
    unsigned short image[2] = {1000, 1000};
    unsigned short output[2] = {};
    EXPECT_EQ(store->ApplyCorrection(image, 2, output, 2, &delegate, true, false, false), 72u);
    EXPECT_EQ(store.ActiveKey(), "A,2,B,1");
}

TEST_F(StoreDelegateTest, MaySelectAnotherGroupAndComeBack)
{
    TCallingBack delegate([this] {
        EXPECT_EQ(store.Add("A,1,B,1,new", 50), 0u);
        EXPECT_EQ(store.Select("A,2,B,1"), 0u);
        EXPECT_EQ(store.Select("A,1,B,1,new"), 0u);
    });
    EXPECT_EQ(Apply(delegate), 71u);
    EXPECT_EQ(store.Corrected(), 950);
    EXPECT_EQ(folder.Read("s_A_1_B_1"), Grouped({"A", "B"}, {Flat("A,1,B,1", 100), Flat("A,1,B,1,new", 50)}));
}

TEST_F(StoreDelegateTest, MayClearTheStore)
{
    TCallingBack delegate([this] { EXPECT_EQ(store->ClearCorrections(), 0u); });
    EXPECT_EQ(Apply(delegate), 71u);
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(Apply(delegate), 73u); // now the store itself calls the delegate
}

TEST_F(StoreDelegateTest, MayLoadAndSaveTheStore)
{
    TCallingBack delegate([this] {
        EXPECT_EQ(store.Save("copy"), 0u);
        EXPECT_EQ(store.Load("copy"), 0u);
    });
    EXPECT_EQ(Apply(delegate), 71u);
    EXPECT_FALSE(store.HasGroup());
    EXPECT_EQ(store.SortedKeys(), (std::vector<std::string>{"A,1,B,1", "A,2,B,1"}));
}

TEST_F(StoreDelegateTest, MayApplyAgainAndSelectInThere)
{
    TCallingBack inner([this] { EXPECT_EQ(store.Select("A,2,B,1"), 0u); });
    TCallingBack outer([this, &inner] {
        EXPECT_EQ(Apply(inner), 71u);           // the group that both calls began in goes
        EXPECT_EQ(store.Select("A,1,B,1"), 0u); // and another processor holds it now,
        EXPECT_EQ(Apply(inner), 71u);           // which goes as well
        EXPECT_EQ(store.ActiveKey(), "A,2,B,1");
    });
    EXPECT_EQ(Apply(outer), 71u);
    EXPECT_EQ(store.Corrected(), 800);
}

TEST_F(StoreDelegateTest, MayCallBackWhenNothingIsActive)
{
    store->SetActiveCorrection(nullptr);
    TCallingBack delegate([this] { EXPECT_EQ(store.Select("A,2,B,1"), 0u); });
    EXPECT_EQ(Apply(delegate), 73u);
    EXPECT_EQ(store.ActiveKey(), "A,2,B,1");
}

} // namespace
