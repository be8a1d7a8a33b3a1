#include "support/RecordingDelegate.h"
#include "support/TemporaryFolder.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using testing::ElementsAre;

constexpr char kStatisticsText[] =
    "This file has been opened in header only mode. Cannot access correction data information.";

struct TRefusedCall {
    const char* name;
    const char* text;
    std::function<unsigned int(QX_KRLSDK::QX_IBackgroundCorrection&)> call;
};

// Every argument is bad as well: the mode is looked at first.
const TRefusedCall kRefusedWithBadArguments[] = {
    {"AddCorrection", kHeaderOnlyText,
     [](auto& object) { return object.AddCorrection(nullptr, nullptr, 0, 0, -1, 0.0f, -5.0f); }},
    {"DeleteCorrection", kHeaderOnlyText, [](auto& object) { return object.DeleteCorrection(nullptr); }},
    {"SetCorrectionLevel", kHeaderOnlyText, [](auto& object) { return object.SetCorrectionLevel(-1); }},
    {"SetExposureAndIntensity", kHeaderOnlyText,
     [](auto& object) { return object.SetExposureAndIntensity(0.0f, 0.0f); }},
    {"GetExposureAndIntensity", kHeaderOnlyText,
     [](auto& object) { return object.GetExposureAndIntensity(nullptr, nullptr); }},
    {"GetCorrectionStatistics", kStatisticsText,
     [](auto& object) { return object.GetCorrectionStatistics(nullptr, nullptr, nullptr); }},
    {"GetScaledCorrectionStatistics", kHeaderOnlyText,
     [](auto& object) { return object.GetScaledCorrectionStatistics(nullptr, nullptr, nullptr); }},
    {"ApplyCorrection", kHeaderOnlyText,
     [](auto& object) { return object.ApplyCorrection(nullptr, -1, nullptr, 0, nullptr, false, false, false); }},
    {"SetRegion", kHeaderOnlyText, [](auto& object) { return object.SetRegion(-1, -1, 0, 0); }},
    {"GetRegion", kHeaderOnlyText, [](auto& object) { return object.GetRegion(nullptr, nullptr, nullptr, nullptr); }},
    {"ImportCorrections", kHeaderOnlyText, [](auto& object) { return object.ImportCorrections(nullptr, true); }},
    {"SaveFile", kHeaderOnlyText, [](auto& object) { return object.SaveFile("no-such-folder/file"); }},
};

TEST(HeaderOnlyMode, RefusesWhatReadsOrChangesPixelsOrSettings)
{
    for (const TRefusedCall& refused : kRefusedWithBadArguments) {
        const TTestObject object;
        object.EnterHeaderOnlyMode();
        EXPECT_EQ(object.Outcome(refused.call(*object.Get())), (TOutcome{770, refused.text})) << refused.name;
    }
}

TEST(HeaderOnlyMode, RefusesGoodArgumentsTooAndChangesNothing)
{
    const TTestObject other;
    other.Store("other", {1, 1, {1}});
    const TTestObject object;
    object.Store("dark", {2, 1, {10, 20}});
    object->SetActiveCorrection("dark");
    object->SetExposureAndIntensity(3.0f, 1.0f);
    object.EnterHeaderOnlyMode();

    TRecordingDelegate delegate;
    unsigned short image[2] = {100, 100};
    unsigned short output[2] = {1, 2};
    int region[4] = {-9, -9, -9, -9};
    float values[2] = {7.0f, 7.0f};
    unsigned short statistics[3] = {9, 9, 9};
    EXPECT_EQ(object.AddFrames("new", {{1, 1, {1}}}), 770u);
    EXPECT_EQ(object->DeleteCorrection("DARK"), 770u);
    EXPECT_EQ(object->SetCorrectionLevel(50), 770u);
    EXPECT_EQ(object->SetExposureAndIntensity(5.0f, 5.0f), 770u);
    EXPECT_EQ(object->GetExposureAndIntensity(&values[0], &values[1]), 770u);
    EXPECT_EQ(object->GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]), 770u);
    EXPECT_EQ(object->GetScaledCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]), 770u);
    EXPECT_EQ(object->ApplyCorrection(image, 2, output, 2, nullptr, false, false, false), 770u);
    EXPECT_EQ(object->ApplyCorrection(image, 2, nullptr, 0, &delegate, true, false, false), 770u);
    EXPECT_EQ(object->SetRegion(0, 0, 1, 1), 770u);
    EXPECT_EQ(object->GetRegion(&region[0], &region[1], &region[2], &region[3]), 770u);
    EXPECT_EQ(object->ImportCorrections(other.Get(), true), 770u);
    EXPECT_THAT(image, ElementsAre(100, 100));
    EXPECT_THAT(output, ElementsAre(1, 2));
    EXPECT_THAT(region, testing::Each(-9));
    EXPECT_THAT(values, testing::Each(7.0f));
    EXPECT_THAT(statistics, testing::Each(9));
    EXPECT_THAT(delegate.calls, testing::IsEmpty());

    object.LeaveHeaderOnlyMode();
    EXPECT_THAT(object.Keys(), ElementsAre("dark"));
    EXPECT_EQ(object->GetCorrectionLevel(), 100);
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 2, 1));
    EXPECT_THAT(object.Background(), ElementsAre(30, 60));
}

TEST(HeaderOnlyMode, AllowsQueriesOfKeysLevelReferenceAndText)
{
    const TTestObject object;
    object.Store("dark", {2, 1, {10, 20}}, 0.5f, 80.0f);
    object->SetCorrectionLevel(50);
    object->SetActiveCorrection("dark");
    object.EnterHeaderOnlyMode();
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "dark");
    EXPECT_EQ(object->GetNumberOfCorrections(), 1u);
    EXPECT_STREQ(object->GetCorrectionKey(0), "dark");
    EXPECT_EQ(object->GetCorrectionKey(1), nullptr);
    EXPECT_EQ(object->GetCorrectionLevel(), 50);
    float exposure = 0.0f;
    float intensity = 0.0f;
    EXPECT_EQ(object->GetReferenceExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, 0.5f);
    EXPECT_EQ(intensity, 80.0f);
    EXPECT_STRNE(object->GetLastErrorMessage(), "");
    EXPECT_EQ(object->SetActiveCorrection(nullptr), 0u);
    EXPECT_EQ(object->ClearCorrections(), 0u);
}

TEST(HeaderOnlyMode, ActivationSucceedsWhileRegionAndTextSayOtherwise)
{
    const TTestObject object;
    object.Store("a", {2, 1, {10, 20}});
    object.Store("b", {3, 1, {1, 2, 3}});
    object->SetActiveCorrection("a");
    object.EnterHeaderOnlyMode();
    EXPECT_EQ(object.Outcome(object->SetActiveCorrection("B")), (TOutcome{0, kHeaderOnlyText}));
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "b");
    EXPECT_EQ(object.Outcome(object->SetActiveCorrection("c")),
              (TOutcome{513, "Background correction key not found - 'c'"}));
    object.LeaveHeaderOnlyMode();
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 2, 1));
    EXPECT_THAT(object.Background(), ElementsAre(10, 20)) << "the background stays until it is scaled anew";
    object->SetCorrectionLevel(100);
    EXPECT_THAT(object.Background(), ElementsAre(1, 2));
}

TEST(HeaderOnlyMode, OfAFileHasKeysAndReferencesButNoPixels)
{
    const TTemporaryFolder folder;
    const std::string path = folder.File("corrections.cal");
    const TTestObject writer;
    writer.Store("dark", {2, 1, {10, 20}}, 0.5f, 80.0f);
    ASSERT_EQ(writer->SaveFile(path.c_str()), 0u);
    const TTestObject object;
    ASSERT_EQ(object->LoadFileHeaderOnly(path.c_str()), 0u);
    EXPECT_THAT(object.Keys(), ElementsAre("dark"));
    ASSERT_EQ(object->SetActiveCorrection("dark"), 0u);
    float exposure = 0.0f;
    object->GetReferenceExposureAndIntensity(&exposure, nullptr);
    EXPECT_EQ(exposure, 0.5f);
    EXPECT_EQ(object->SetRegion(0, 0, 2, 1), 770u);
    object.LeaveHeaderOnlyMode();
    ASSERT_EQ(object->SetActiveCorrection("dark"), 0u);
    EXPECT_THAT(object.Background(), ElementsAre(0, 0));
}

} // namespace
