#include "support/RandomImages.h"
#include "support/TemporaryFolder.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

const Literal::TImage kWide{3, 2, {10, 20, 30, 40, 50, 60}};
const Literal::TImage kTall{1, 2, {7, 8}};

TEST(Activation, MakesTheRegionTheWholeCorrection)
{
    const TTestObject object;
    object.Store("wide", kWide);
    object.Store("tall", kTall);
    EXPECT_EQ(object->SetActiveCorrection("wide"), 0u);
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 3, 2));
    EXPECT_THAT(object.Background(), ElementsAre(10, 20, 30, 40, 50, 60));
    object->SetRegion(1, 1, 1, 1);
    EXPECT_EQ(object->SetActiveCorrection("tall"), 0u);
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 1, 2));
    EXPECT_THAT(object.Background(), ElementsAre(7, 8));
    EXPECT_EQ(object.Message(), "");
}

TEST(Activation, OfTheActiveCorrectionResetsItsRegion)
{
    const TTestObject object;
    object.Store("wide", kWide);
    object->SetActiveCorrection("wide");
    object->SetRegion(1, 1, 1, 1);
    EXPECT_EQ(object->SetActiveCorrection("wide"), 0u);
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 3, 2));
}

TEST(Activation, IgnoresCaseAndReportsTheStoredSpelling)
{
    const TTestObject object;
    object.Store("Dark", kWide);
    EXPECT_EQ(object->SetActiveCorrection("dARK"), 0u);
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "Dark");
}

TEST(Activation, OfAnUnknownKeyKeepsThePreviousOne)
{
    const TTestObject object;
    EXPECT_EQ(object.Outcome(object->SetActiveCorrection("none")),
              (TOutcome{513, "Background correction key not found - 'none'"}));
    EXPECT_EQ(object->GetActiveCorrectionKey(), nullptr);
    object.Store("wide", kWide);
    object->SetActiveCorrection("wide");
    object->SetRegion(1, 0, 2, 1);
    EXPECT_EQ(object.Outcome(object->SetActiveCorrection("")),
              (TOutcome{513, "Background correction key not found - ''"}));
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "wide");
    EXPECT_THAT(object.Region(), ElementsAre(1, 0, 2, 1));
    EXPECT_THAT(object.Background(), ElementsAre(20, 30));
}

TEST(Activation, OfNullDeactivatesAndKeepsTheRegion)
{
    const TTestObject object;
    object.Store("wide", kWide);
    object->SetActiveCorrection("wide");
    object->SetRegion(1, 0, 2, 1);
    EXPECT_EQ(object->SetActiveCorrection(nullptr), 0u);
    EXPECT_EQ(object->GetActiveCorrectionKey(), nullptr);
    EXPECT_THAT(object.Region(), ElementsAre(1, 0, 2, 1));
    unsigned short image[2] = {100, 100};
    EXPECT_EQ(object->ApplyCorrection(image, 2, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_THAT(image, ElementsAre(100, 100));
    EXPECT_EQ(object->SetActiveCorrection(nullptr), 0u);
}

TEST(Activation, FollowsTheSettingsMadeBeforeIt)
{
    const TTestObject object;
    object->SetCorrectionLevel(50);
    object->SetExposureAndIntensity(2.0f, 3.0f);
    object.Store("tall", kTall);
    object->SetActiveCorrection("tall");
    EXPECT_THAT(object.Background(), ElementsAre(21, 24));
}

TEST(Activation, KeysStayWhereTheyAreWhileOthersComeAndGo)
{
    const TTestObject object;
    object.Store("kept", kTall);
    const char* const key = object->GetCorrectionKey(0);
    for (int i = 0; i < 100; ++i) {
        object.Store(("k" + std::to_string(i)).c_str(), kTall);
    }
    for (int i = 0; i < 99; ++i) {
        object->DeleteCorrection(("K" + std::to_string(i)).c_str());
    }
    EXPECT_EQ(object->GetCorrectionKey(0), key);
    EXPECT_STREQ(key, "kept");
    EXPECT_EQ(object->GetNumberOfCorrections(), 2u);
    EXPECT_STREQ(object->GetCorrectionKey(1), "k99");
    EXPECT_EQ(object->GetCorrectionKey(2), nullptr);
    EXPECT_EQ(object->GetCorrectionKey(0xFFFFFFFFu), nullptr);
    object->SetActiveCorrection("kept");
    EXPECT_EQ(object->GetActiveCorrectionKey(), key);
}

TEST(Activation, SurvivesAnImportOverItAndIsNotScaledAnewByIt)
{
    const TTestObject source;
    source.Store("DARK", {2, 2, {1, 2, 3, 4}});
    const TTestObject object;
    object.Store("dark", kWide);
    object->SetActiveCorrection("dark");
    ASSERT_EQ(object->ImportCorrections(source.Get(), true), 0u);
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "DARK");
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 3, 2));
    EXPECT_THAT(object.Background(), ElementsAre(10, 20, 30, 40, 50, 60)) << "as scaled before";
    object->SetCorrectionLevel(100);
    EXPECT_THAT(object.Background(), ElementsAre(1, 2, 3, 3, 4, 0)) << "in rows of two; beyond the pixels is nothing";
}

// The region keeps its size, and counts its addresses in the rows of the correction that came into its place.
TEST(Activation, OverAnImportOfAnotherShapeGoesByAddress)
{
    const TTestObject source;
    source.Store("dark", {2, 8, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}});
    const TTestObject object;
    object.Store("dark", {4, 4, std::vector<std::uint16_t>(16, 100)});
    object->SetActiveCorrection("dark");
    ASSERT_EQ(object->ImportCorrections(source.Get(), true), 0u);
    object->SetCorrectionLevel(100);
    EXPECT_THAT(object.Background(), ElementsAre(0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7, 8, 9));
    object->SetActiveCorrection("dark");
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 2, 8)) << "chosen anew it is the new correction's";
}

TEST(Activation, SurvivesAnImportThatSkipsIt)
{
    const TTestObject source;
    source.Store("DARK", kTall);
    const TTestObject object;
    object.Store("dark", kWide);
    object->SetActiveCorrection("dark");
    ASSERT_EQ(object->ImportCorrections(source.Get(), false), 0u);
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "dark");
    object->SetCorrectionLevel(100);
    EXPECT_THAT(object.Background(), ElementsAre(10, 20, 30, 40, 50, 60));
}

TEST(Activation, LosesItsPixelsWhenTheProcessorImportsItself)
{
    const TTestObject object;
    object.Store("dark", kWide);
    object->SetActiveCorrection("dark");
    ASSERT_EQ(object->ImportCorrections(object.Get(), true), 0u);
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "dark");
    object->SetCorrectionLevel(100);
    EXPECT_THAT(object.Background(), testing::Each(0));
}

TEST(Activation, SurvivesALoadThatFailsBeforeItClearsTheList)
{
    const TTestObject object;
    object.Store("wide", kWide);
    object->SetActiveCorrection("wide");
    EXPECT_EQ(object->LoadFile(TTestObject::kMissingFile), 769u);
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "wide");
    EXPECT_THAT(object.Background(), ElementsAre(10, 20, 30, 40, 50, 60));
}

TEST(Activation, EndsWithALoadThatReplacesTheList)
{
    const TTemporaryFolder folder;
    const std::string path = folder.File("corrections.cal");
    const TTestObject object;
    object.Store("wide", kWide);
    ASSERT_EQ(object->SaveFile(path.c_str()), 0u);
    object->SetActiveCorrection("wide");
    ASSERT_EQ(object->LoadFile(path.c_str()), 0u);
    EXPECT_EQ(object->GetActiveCorrectionKey(), nullptr);
    EXPECT_THAT(object.Keys(), ElementsAre("wide"));
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 3, 2));
    unsigned short image[6] = {9, 9, 9, 9, 9, 9};
    EXPECT_EQ(object->ApplyCorrection(image, 6, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_THAT(image, testing::Each(9));
}

TEST(Activation, EndsWithAFailedLoadExactlyWhenThatClearedTheList)
{
    const TTemporaryFolder folder;
    const std::string path = folder.File("corrections.cal");
    const TTestObject writer;
    writer.Store("other", kTall);
    ASSERT_EQ(writer->SaveFile(path.c_str()), 0u);
    std::ifstream whole(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(whole)), std::istreambuf_iterator<char>());
    whole.close();

    int survivals = 0;
    int ends = 0;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes.substr(0, length);
        const TTestObject object;
        object.Store("kept", kTall);
        object->SetActiveCorrection("kept");
        const unsigned int code = object->LoadFile(path.c_str());
        EXPECT_NE(code, 0u) << length;
        const bool isListKept = object.Keys() == std::vector<std::string>{"kept"};
        if (isListKept) {
            EXPECT_STREQ(object->GetActiveCorrectionKey(), "kept") << length;
            EXPECT_THAT(object.Background(), ElementsAre(7, 8)) << length;
        } else {
            EXPECT_EQ(object->GetActiveCorrectionKey(), nullptr) << length;
        }
        if (code == 0xFFFFFFFFu) {
            (isListKept ? survivals : ends) += 1;
        }
    }
    EXPECT_GT(survivals, 0) << "no file ended before the list was cleared";
    EXPECT_GT(ends, 0) << "no file ended after that";
}

// Operations that use others of the same object go through the interface.
class TWatchedProcessor : public TBackgroundCorrectionProcessorUINT16 {
public:
    unsigned int SetRegion(int left, int top, int width, int height) override
    {
        regions.push_back({left, top, width, height});
        return 4711; // ignored by the caller
    }
    unsigned int SetActiveCorrection(const char* key) override
    {
        activatedNull = activatedNull || key == nullptr;
        return TBackgroundCorrectionProcessorUINT16::SetActiveCorrection(key);
    }

    std::vector<std::vector<int>> regions;
    bool activatedNull = false;
};

TEST(Activation, SetsTheRegionThroughTheInterface)
{
    TWatchedProcessor processor;
    const unsigned short pixels[6] = {1, 2, 3, 4, 5, 6};
    const unsigned short* frames[1] = {pixels};
    ASSERT_EQ(processor.AddCorrection("k", frames, 1, 3, 2, 1.0f, 1.0f), 0u);
    processor.regions.clear();
    EXPECT_EQ(processor.SetActiveCorrection("k"), 0u);
    EXPECT_THAT(processor.regions, ElementsAre(ElementsAre(0, 0, 3, 2)));
    EXPECT_STREQ(processor.GetActiveCorrectionKey(), "k");
}

TEST(Activation, IsEndedThroughTheInterfaceWhenAllIsCleared)
{
    TWatchedProcessor processor;
    EXPECT_EQ(processor.ClearCorrections(), 0u);
    EXPECT_TRUE(processor.activatedNull);
}

} // namespace
