// The settings and queries of the store, and ApplyCorrection: their checks in their order with their texts, what they
// answer without a loaded group, and what they forward.
#include "offline/StoreOutcome.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class StoreSettingsTest : public testing::Test {
protected:
    TStoreFolder folder;
    TTestStore store;
};

TEST_F(StoreSettingsTest, TheLevelComesBackAsGiven)
{
    EXPECT_EQ(store->GetCorrectionLevel(), -1);
    for (const int level : {29, -5, 250, 0}) {
        EXPECT_EQ(store->SetCorrectionLevel(level), 0u);
        EXPECT_EQ(store->GetCorrectionLevel(), level);
    }
    store.Add("A,1,B,1");
    EXPECT_EQ(store->SetCorrectionLevel(29), 0u);
    EXPECT_EQ(store->GetCorrectionLevel(), 29);
}

TEST_F(StoreSettingsTest, TheLevelIsUnsetAfterLoading)
{
    store.Add("A,1,B,1");
    store.Save("s");
    store.Select("A,1,B,1");
    EXPECT_EQ(store->GetCorrectionLevel(), -1);
}

TEST_F(StoreSettingsTest, SettingsReachTheLoadedGroup)
{
    store.Add("A,1,B,1", 100, 1.0f, 1.0f);
    store.Select("A,1,B,1");
    EXPECT_EQ(store.Corrected(), 900);
    store->SetCorrectionLevel(50);
    EXPECT_EQ(store.Corrected(), 950);
    store->SetExposureAndIntensity(2.0f, 2.0f);
    EXPECT_EQ(store.Corrected(), 800);
}

TEST_F(StoreSettingsTest, ARefusedSettingIsNotStored)
{
    store.Add("A,1,B,1");
    store.Save("s");
    store->SetCorrectionLevel(7);
    store->SetExposureAndIntensity(7.0f, 8.0f);
    store->SetRegion(0, 0, 1, 1);
    store->LoadFileHeaderOnly("s");
    store.Select("A,1,B,1");
    EXPECT_EQ(Left(store, store->SetCorrectionLevel(50)), (TOutcome{770, ""}));
    EXPECT_EQ(store.InnerText(), kHeaderOnlyText);
    EXPECT_EQ(store->SetExposureAndIntensity(1.0f, 1.0f), 770u);
    EXPECT_EQ(store->SetRegion(1, 0, 1, 1), 770u);
    EXPECT_EQ(store->GetCorrectionLevel(), 7);
    store->ClearCorrections();
    float exposure = 0.0f;
    float intensity = 0.0f;
    store->GetExposureAndIntensity(&exposure, &intensity);
    EXPECT_EQ(exposure, 7.0f);
    EXPECT_EQ(intensity, 8.0f);
    int region[4];
    store->GetRegion(&region[0], &region[1], &region[2], &region[3]);
    EXPECT_EQ(region[0], 0);
}

TEST_F(StoreSettingsTest, GetExposureChecksItsPointers)
{
    float value = 5.0f;
    EXPECT_EQ(Left(store, store->GetExposureAndIntensity(nullptr, nullptr)),
              (TOutcome{513, "Exposure seconds pointer is NULL."}));
    EXPECT_EQ(Left(store, store->GetExposureAndIntensity(&value, nullptr)),
              (TOutcome{514, "Light intensity percent pointer is NULL."}));
    EXPECT_EQ(value, 5.0f);
}

TEST_F(StoreSettingsTest, GetExposureGivesThePendingValuesOrThoseOfTheGroup)
{
    float exposure = 0.0f;
    float intensity = 0.0f;
    EXPECT_EQ(store->GetExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, -1.0f);
    EXPECT_EQ(intensity, -1.0f);
    EXPECT_EQ(store->SetExposureAndIntensity(0.5f, -1.0f), 0u); // half of it unset: not applied to a group
    store.Add("A,1,B,1");
    EXPECT_EQ(store->GetExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, -1.0f);
    EXPECT_EQ(intensity, -1.0f);
}

TEST_F(StoreSettingsTest, GetReferenceChecksItsPointersThenTheGroup)
{
    float value = 5.0f;
    EXPECT_EQ(Left(store, store->GetReferenceExposureAndIntensity(nullptr, nullptr)),
              (TOutcome{513, "Reference exposure seconds pointer is NULL."}));
    EXPECT_EQ(Left(store, store->GetReferenceExposureAndIntensity(&value, nullptr)),
              (TOutcome{514, "Reference light intensity percent pointer is NULL."}));
    EXPECT_EQ(Left(store, store->GetReferenceExposureAndIntensity(&value, &value)),
              (TOutcome{1280, "No correction active."}));
    EXPECT_EQ(value, 5.0f);
}

TEST_F(StoreSettingsTest, GetReferenceForwards)
{
    store.Add("A,1,B,1", 100, 0.25f, 40.0f);
    float exposure = 5.0f;
    float intensity = 6.0f;
    EXPECT_EQ(store->GetReferenceExposureAndIntensity(&exposure, &intensity), 0u); // a group, nothing active
    EXPECT_EQ(exposure, 5.0f);
    store.Select("A,1,B,1");
    EXPECT_EQ(store->GetReferenceExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, 0.25f);
    EXPECT_EQ(intensity, 40.0f);
}

using TStatisticsOperation = unsigned int (QX_KRLSDK::QX_IBackgroundCorrection::*)(unsigned short*, unsigned short*,
                                                                                   unsigned short*);

TEST_F(StoreSettingsTest, StatisticsCheckTheirPointersThenTheGroup)
{
    for (const TStatisticsOperation operation : {&QX_KRLSDK::QX_IBackgroundCorrection::GetCorrectionStatistics,
                                                 &QX_KRLSDK::QX_IBackgroundCorrection::GetScaledCorrectionStatistics}) {
        unsigned short value = 5;
        EXPECT_EQ(Left(store, (store.Get()->*operation)(nullptr, nullptr, nullptr)),
                  (TOutcome{513, "Min pointer is NULL."}));
        EXPECT_EQ(Left(store, (store.Get()->*operation)(&value, nullptr, nullptr)),
                  (TOutcome{514, "Max pointer is NULL."}));
        EXPECT_EQ(Left(store, (store.Get()->*operation)(&value, &value, nullptr)),
                  (TOutcome{515, "Average pointer is NULL."}));
        EXPECT_EQ(Left(store, (store.Get()->*operation)(&value, &value, &value)),
                  (TOutcome{1280, "No correction active."}));
        EXPECT_EQ(value, 5);
    }
}

TEST_F(StoreSettingsTest, StatisticsForward)
{
    store.AddFrames("A,1,B,1", {{1, 1, {40}}}, 1.0f, 1.0f);
    store.Select("A,1,B,1");
    store->SetCorrectionLevel(50);
    unsigned short values[3] = {};
    EXPECT_EQ(store->GetCorrectionStatistics(&values[0], &values[1], &values[2]), 0u);
    EXPECT_EQ(std::vector<int>(values, values + 3), (std::vector<int>{40, 40, 40}));
    EXPECT_EQ(store->GetScaledCorrectionStatistics(&values[0], &values[1], &values[2]), 0u);
    EXPECT_EQ(std::vector<int>(values, values + 3), (std::vector<int>{20, 20, 20}));
}

class TCountingDelegate : public QX_KRLSDK::ICorrectionDelegate {
public:
    unsigned int SubtractInPlace(unsigned short*, const unsigned short*, int, int, bool, bool) override { return 71; }
    unsigned int SubtractInto(unsigned short*, const unsigned short*, const unsigned short*, int, int, bool,
                              bool) override
    {
        return 72;
    }
    unsigned int ProcessInPlace(unsigned short* givenImage, int givenWidth, int givenHeight) override
    {
        image = givenImage;
        width = givenWidth;
        height = givenHeight;
        return 73;
    }

    unsigned short* image = nullptr;
    int width = 0;
    int height = 0;
};

TEST_F(StoreSettingsTest, ApplyRefusesEveryNullImage)
{
    TCountingDelegate delegate;
    const TOutcome expected = {513, "Input Source image 1 pointer is NULL."};
    EXPECT_EQ(Left(store, store->ApplyCorrection(nullptr, 1, nullptr, 0, nullptr, false, false, false)), expected);
    store.Add("A,1,B,1");
    store->GetLastErrorMessage();
    // The processor itself would accept this one.
    EXPECT_EQ(Left(store, store->ApplyCorrection(nullptr, 1, nullptr, 0, &delegate, true, false, false)), expected);
    store.Save("s");
    store->LoadFileHeaderOnly("s"); // also before the mode
    EXPECT_EQ(Left(store, store->ApplyCorrection(nullptr, 1, nullptr, 0, nullptr, false, false, false)), expected);
}

TEST_F(StoreSettingsTest, ApplyWithoutGroupPassesTheImageThrough)
{
    unsigned short image[3] = {1, 2, 3};
    unsigned short output[3] = {7, 7, 7};
    EXPECT_EQ(store->ApplyCorrection(image, 3, nullptr, 99, nullptr, false, true, true), 0u);
    EXPECT_EQ(image[0], 1);
    EXPECT_EQ(store->ApplyCorrection(image, 2, output, 2, nullptr, false, false, false), 0u);
    EXPECT_EQ(std::vector<int>(output, output + 3), (std::vector<int>{1, 2, 7}));
    EXPECT_EQ(store->ApplyCorrection(image, 3, image, 3, nullptr, false, false, false), 0u);
    EXPECT_EQ(store->ApplyCorrection(image + 2, 1, output, 1, nullptr, false, false, false), 0u);
    EXPECT_EQ(std::vector<int>(output, output + 3), (std::vector<int>{3, 2, 7}));
    EXPECT_EQ(store.Text(), "");
}

TEST_F(StoreSettingsTest, ApplyWithoutGroupWantsEqualLengths)
{
    unsigned short image[3] = {1, 2, 3};
    unsigned short output[3] = {7, 7, 7};
    TCountingDelegate delegate;
    EXPECT_EQ(Left(store, store->ApplyCorrection(image, 3, output, 2, &delegate, true, false, false)),
              (TOutcome{516, "The input image sizes do not match."}));
    EXPECT_EQ(output[0], 7);
    EXPECT_EQ(delegate.image, nullptr);
    EXPECT_EQ(store->ApplyCorrection(image, 3, image, 2, nullptr, false, false, false), 516u);
    EXPECT_EQ(store->ApplyCorrection(image, 2, output, 3, nullptr, false, false, false), 516u);
}

TEST_F(StoreSettingsTest, ApplyWithoutGroupCopiesNothingForALengthBelowOne)
{
    unsigned short image[1] = {1};
    unsigned short output[1] = {7};
    EXPECT_EQ(store->ApplyCorrection(image, 0, output, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(store->ApplyCorrection(image, -3, output, -3, nullptr, false, false, false), 0u);
    EXPECT_EQ(output[0], 7);
}

TEST_F(StoreSettingsTest, ApplyWithoutGroupHandsTheImageToTheDelegate)
{
    unsigned short image[2] = {1, 2};
    unsigned short output[2] = {};
    for (const bool flag : {false, true}) { // the two further flags are ignored
        TCountingDelegate delegate;
        EXPECT_EQ(store->ApplyCorrection(image, 2, output, 2, &delegate, true, flag, flag), 73u);
        EXPECT_EQ(delegate.image, image);
        EXPECT_EQ(delegate.width, -1);
        EXPECT_EQ(delegate.height, -1);
        EXPECT_EQ(output[1], 2);
    }
    TCountingDelegate delegate;
    store->SetRegion(1, 2, 3, 4);
    EXPECT_EQ(store->ApplyCorrection(image, 2, nullptr, 0, &delegate, true, false, false), 73u);
    EXPECT_EQ(delegate.width, 3);
    EXPECT_EQ(delegate.height, 4);
    EXPECT_EQ(store->ApplyCorrection(image, 2, nullptr, 0, &delegate, false, true, true), 0u);
    EXPECT_EQ(store->ApplyCorrection(image, 2, nullptr, 0, nullptr, true, true, true), 0u); // no delegate there
}

TEST_F(StoreSettingsTest, ApplyWithoutGroupIsRefusedInHeaderOnlyMode)
{
    store.Add("A,1,B,1");
    store.Save("s");
    store->LoadFileHeaderOnly("s");
    unsigned short image[2] = {1, 2};
    unsigned short output[2] = {};
    EXPECT_EQ(Left(store, store->ApplyCorrection(image, 2, output, 1, nullptr, false, false, false)),
              (TOutcome{770, kHeaderOnlyText}));
    EXPECT_EQ(output[0], 0);
}

TEST_F(StoreSettingsTest, ApplyForwardsEveryArgument)
{
    store.Add("A,1,B,1");
    store.Select("A,1,B,1");
    unsigned short image[2] = {1000, 50};
    unsigned short output[2] = {};
    TCountingDelegate delegate;
    EXPECT_EQ(store->ApplyCorrection(image, 2, output, 2, nullptr, false, false, false), 0u);
    EXPECT_EQ(std::vector<int>(output, output + 2), (std::vector<int>{900, 0}));
    EXPECT_EQ(store->ApplyCorrection(image, 2, output, 2, &delegate, true, false, false), 72u);
    EXPECT_EQ(store->ApplyCorrection(image, 2, nullptr, 2, &delegate, true, false, false), 71u);
    EXPECT_EQ(store->ApplyCorrection(image, 2, output, 1, &delegate, true, false, false), 516u);
    EXPECT_EQ(store->ApplyCorrection(image, 1, nullptr, 0, &delegate, true, false, false), 514u);
    EXPECT_EQ(store.Text(), "");
    store->SetActiveCorrection(nullptr);
    EXPECT_EQ(store->ApplyCorrection(image, 2, nullptr, 2, &delegate, true, false, false), 0u);
    EXPECT_EQ(store->ApplyCorrection(image, 2, nullptr, 2, &delegate, true, true, false), 73u);
}

TEST_F(StoreSettingsTest, GetRegionChecksItsPointers)
{
    int value = 5;
    EXPECT_EQ(Left(store, store->GetRegion(nullptr, nullptr, nullptr, nullptr)),
              (TOutcome{513, "Left pointer is NULL."}));
    EXPECT_EQ(Left(store, store->GetRegion(&value, nullptr, nullptr, nullptr)),
              (TOutcome{514, "Top pointer is NULL."}));
    EXPECT_EQ(Left(store, store->GetRegion(&value, &value, nullptr, nullptr)),
              (TOutcome{515, "Width pointer is NULL."}));
    EXPECT_EQ(Left(store, store->GetRegion(&value, &value, &value, nullptr)),
              (TOutcome{516, "Height pointer is NULL."})); // not the processor's 515
    EXPECT_EQ(value, 5);
}

TEST_F(StoreSettingsTest, TheRegionIsUncheckedWithoutGroup)
{
    int region[4] = {};
    EXPECT_EQ(store->GetRegion(&region[0], &region[1], &region[2], &region[3]), 0u);
    EXPECT_EQ(std::vector<int>(region, region + 4), (std::vector<int>{-1, -1, -1, -1}));
    EXPECT_EQ(store->SetRegion(-7, -8, 0, -9), 0u);
    EXPECT_EQ(store->GetRegion(&region[0], &region[1], &region[2], &region[3]), 0u);
    EXPECT_EQ(std::vector<int>(region, region + 4), (std::vector<int>{-7, -8, 0, -9}));
}

TEST_F(StoreSettingsTest, TheRegionIsTheProcessorsWithAGroup)
{
    store.Add("A,1,B,1"); // 2 x 1
    store.Select("A,1,B,1");
    EXPECT_EQ(Left(store, store->SetRegion(2, 0, 1, 1)), (TOutcome{513, ""}));
    EXPECT_EQ(store.InnerText(), "The input left [ 2 ] is out of range.");
    EXPECT_EQ(store->SetRegion(1, 0, 1, 1), 0u);
    int region[4] = {};
    EXPECT_EQ(store->GetRegion(&region[0], &region[1], &region[2], &region[3]), 0u);
    EXPECT_EQ(std::vector<int>(region, region + 4), (std::vector<int>{1, 0, 1, 1}));
    store->ClearCorrections(); // and it is pending: the accepted one
    EXPECT_EQ(store->GetRegion(&region[0], &region[1], &region[2], &region[3]), 0u);
    EXPECT_EQ(region[0], 1);
}

} // namespace
