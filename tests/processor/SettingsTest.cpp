// Level, exposure and intensity, reference values.
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace {

// Levels that read back one lower, because a fraction in single precision lies just below them.
constexpr int kLevelsThatReadBackLower[] = {1,  2,  3,  4,  6,  8,  11, 12, 13, 16, 19, 21, 22, 24, 26, 29, 32,
                                            35, 38, 39, 41, 42, 44, 45, 47, 48, 51, 52, 53, 57, 58, 59, 63, 64,
                                            65, 69, 70, 71, 76, 77, 78, 82, 83, 84, 88, 89, 90, 94, 95, 96};

TEST(CorrectionLevel, FiftyOf101ValuesReadBackOneLower)
{
    ASSERT_EQ(std::size(kLevelsThatReadBackLower), 50u);
    const TTestObject object;
    for (int percent = 0; percent <= 100; ++percent) {
        const bool isLower =
            std::binary_search(std::begin(kLevelsThatReadBackLower), std::end(kLevelsThatReadBackLower), percent);
        EXPECT_EQ(object->SetCorrectionLevel(percent), 0u);
        EXPECT_EQ(object->GetCorrectionLevel(), isLower ? percent - 1 : percent) << percent;
    }
}

TEST(CorrectionLevel, IsClamped)
{
    const TTestObject object;
    for (const int percent : {-1, -5, std::numeric_limits<int>::min()}) {
        object->SetCorrectionLevel(50);
        EXPECT_EQ(object->SetCorrectionLevel(percent), 0u);
        EXPECT_EQ(object->GetCorrectionLevel(), 0) << percent;
    }
    for (const int percent : {100, 101, 250, std::numeric_limits<int>::max()}) {
        object->SetCorrectionLevel(50);
        EXPECT_EQ(object->SetCorrectionLevel(percent), 0u);
        EXPECT_EQ(object->GetCorrectionLevel(), 100) << percent;
    }
    EXPECT_EQ(object.Message(), "");
}

TEST(ExposureAndIntensity, KeepEveryValueAsGiven)
{
    const TTestObject object;
    const float infinity = std::numeric_limits<float>::infinity();
    const float values[] = {0.0f, -0.0f, -3.5f, 1e-45f, 3.4e38f, infinity, -infinity};
    for (const float exposureSet : values) {
        for (const float intensitySet : values) {
            EXPECT_EQ(object->SetExposureAndIntensity(exposureSet, intensitySet), 0u);
            float exposure = 7.0f;
            float intensity = 7.0f;
            EXPECT_EQ(object->GetExposureAndIntensity(&exposure, &intensity), 0u);
            EXPECT_EQ(exposure, exposureSet);
            EXPECT_EQ(intensity, intensitySet);
        }
    }
    object->SetExposureAndIntensity(std::nanf(""), 2.0f);
    float exposure = 7.0f;
    float intensity = 7.0f;
    object->GetExposureAndIntensity(&exposure, &intensity);
    EXPECT_TRUE(std::isnan(exposure));
    EXPECT_EQ(intensity, 2.0f);
    EXPECT_EQ(object.Message(), "");
}

TEST(ExposureAndIntensity, SkipNullPointers)
{
    const TTestObject object;
    object->SetExposureAndIntensity(0.5f, 80.0f);
    float value = 7.0f;
    EXPECT_EQ(object->GetExposureAndIntensity(&value, nullptr), 0u);
    EXPECT_EQ(value, 0.5f);
    EXPECT_EQ(object->GetExposureAndIntensity(nullptr, &value), 0u);
    EXPECT_EQ(value, 80.0f);
    EXPECT_EQ(object->GetExposureAndIntensity(nullptr, nullptr), 0u);
}

TEST(ReferenceValues, AreThoseOfTheActiveCorrection)
{
    const TTestObject object;
    object.Store("a", {1, 1, {1}}, 0.25f, 80.0f);
    object.Store("b", {1, 1, {1}}, 0.5f, 40.0f);
    object->SetActiveCorrection("b");
    float exposure = 7.0f;
    float intensity = 7.0f;
    EXPECT_EQ(object->GetReferenceExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, 0.5f);
    EXPECT_EQ(intensity, 40.0f);
    EXPECT_EQ(object->GetReferenceExposureAndIntensity(nullptr, &exposure), 0u);
    EXPECT_EQ(exposure, 40.0f);
    EXPECT_EQ(object->GetReferenceExposureAndIntensity(&intensity, nullptr), 0u);
    EXPECT_EQ(intensity, 0.5f);
    EXPECT_EQ(object->GetReferenceExposureAndIntensity(nullptr, nullptr), 0u);
}

TEST(ReferenceValues, AreLeftAloneWithNothingActive)
{
    const TTestObject object;
    object.Store("a", {1, 1, {1}}, 0.25f, 80.0f);
    float exposure = 7.0f;
    float intensity = 8.0f;
    EXPECT_EQ(object->GetReferenceExposureAndIntensity(&exposure, &intensity), 0u);
    object->SetActiveCorrection("a");
    object->SetActiveCorrection(nullptr);
    EXPECT_EQ(object->GetReferenceExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, 7.0f);
    EXPECT_EQ(intensity, 8.0f);
}

} // namespace
