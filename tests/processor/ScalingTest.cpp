// The scaled background: which settings make it, and how.
#include "support/RandomImages.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(Scaling, EqualsTheLiteralArithmeticForRandomRegionsAndSettings)
{
    TRandomImages random(60);
    for (const TImageSize size : kAwkwardSizes) {
        const Literal::TImage image = random.Image(size.width, size.height);
        const float referenceExposure = static_cast<float>(random.Number(1, 1000)) / 333.0f;
        const float referenceIntensity = static_cast<float>(random.Number(1, 1000)) / 7.0f;
        const TTestObject object;
        object.Store("k", image, referenceExposure, referenceIntensity);
        object->SetActiveCorrection("k");
        for (int round = 0; round < 20; ++round) {
            const float exposure = static_cast<float>(random.Number(1, 3000)) / 777.0f;
            const float intensity = static_cast<float>(random.Number(1, 1000)) / 9.0f;
            const int percent = static_cast<int>(random.Number(0, 100));
            const int left = static_cast<int>(random.Number(0, static_cast<std::uint32_t>(size.width) - 1));
            const int top = static_cast<int>(random.Number(0, static_cast<std::uint32_t>(size.height) - 1));
            const int width = static_cast<int>(random.Number(1, static_cast<std::uint32_t>(size.width - left)));
            const int height = static_cast<int>(random.Number(1, static_cast<std::uint32_t>(size.height - top)));
            object->SetExposureAndIntensity(exposure, intensity);
            object->SetCorrectionLevel(percent);
            object->SetRegion(left, top, width, height);
            const float factor = Literal::ScaleFactor(exposure, intensity, Literal::LevelFraction(percent),
                                                      referenceExposure, referenceIntensity);
            ASSERT_EQ(object.Background(),
                      Literal::Scale(Literal::CopyRegion(image, left, top, width, height), factor).pixels)
                << size.width << " x " << size.height << ", round " << round;
        }
    }
}

TEST(Scaling, EqualsTheLiteralArithmeticAtEveryLevel)
{
    TRandomImages random(61);
    const Literal::TImage image = random.Image(641, 7);
    const TTestObject object;
    object.Store("k", image, 2.0f, 10.0f);
    object->SetActiveCorrection("k");
    object->SetExposureAndIntensity(2.0f, 10.0f);
    for (int percent = 0; percent <= 100; ++percent) {
        object->SetCorrectionLevel(percent);
        const float factor = Literal::ScaleFactor(2.0f, 10.0f, Literal::LevelFraction(percent), 2.0f, 10.0f);
        ASSERT_EQ(object.Background(), Literal::Scale(image, factor).pixels) << percent;
    }
}

struct TScaling {
    float exposure;
    float intensity;
    float referenceExposure;
    float referenceIntensity;
    int percent;
};

std::vector<std::uint16_t> Scaled(const std::vector<std::uint16_t>& pixels, const TScaling& scaling)
{
    const TTestObject object;
    object.Store("k", {static_cast<int>(pixels.size()), 1, pixels}, scaling.referenceExposure,
                 scaling.referenceIntensity);
    object->SetActiveCorrection("k");
    object->SetExposureAndIntensity(scaling.exposure, scaling.intensity);
    object->SetCorrectionLevel(scaling.percent);
    return object.Background();
}

TEST(Scaling, FollowsWorkedExamples)
{
    EXPECT_THAT(Scaled({1000}, {2.0f, 10.0f, 2.0f, 10.0f, 100}), ElementsAre(1000));
    EXPECT_THAT(Scaled({1000, 1001}, {2.0f, 10.0f, 2.0f, 10.0f, 50}), ElementsAre(500, 501));
    EXPECT_THAT(Scaled({1000}, {0.2f, 100.0f, 0.1f, 100.0f, 100}), ElementsAre(2000));
    EXPECT_THAT(Scaled({32767, 32768, 60000}, {4.0f, 10.0f, 2.0f, 10.0f, 100}), ElementsAre(65534, 65535, 65535));
    EXPECT_THAT(Scaled({0, 1, 65535}, {2.0f, 10.0f, 2.0f, 10.0f, 0}), Each(0));
}

TEST(Scaling, OfUntouchedSettingsDividesByTheReferenceAlone)
{
    const TTestObject object;
    object.Store("k", {2, 1, {1000, 1002}}, 2.0f, 10.0f);
    object->SetActiveCorrection("k");
    EXPECT_THAT(object.Background(), ElementsAre(50, 50));
}

TEST(Scaling, OfNegativeZeroAndUndefinedFactorsIsZero)
{
    const std::vector<std::uint16_t> pixels = {0, 1, 65535};
    EXPECT_THAT(Scaled(pixels, {-1.0f, 1.0f, 1.0f, 1.0f, 100}), Each(0));
    EXPECT_THAT(Scaled(pixels, {0.0f, 1.0f, 1.0f, 1.0f, 100}), Each(0));
    EXPECT_THAT(Scaled(pixels, {1.0f, 1.0f, kNaN, 1.0f, 100}), Each(0));
    EXPECT_THAT(Scaled(pixels, {1.0f, 1.0f, 1.0f, kNaN, 100}), Each(0));
    EXPECT_THAT(Scaled(pixels, {kNaN, 1.0f, 1.0f, 1.0f, 100}), Each(0));
    EXPECT_THAT(Scaled(pixels, {kInfinity, 0.0f, 1.0f, 1.0f, 100}), Each(0));
    EXPECT_THAT(Scaled(pixels, {kInfinity, 1.0f, 1.0f, 1.0f, 0}), Each(0));
    EXPECT_THAT(Scaled(pixels, {-kInfinity, 1.0f, 1.0f, 1.0f, 100}), Each(0));
}

TEST(Scaling, OfHugeAndInfiniteFactorsIsWhiteExceptWhereThereIsNothing)
{
    const std::vector<std::uint16_t> pixels = {0, 1, 65535};
    EXPECT_THAT(Scaled(pixels, {1e10f, 1.0f, 1.0f, 1.0f, 100}), ElementsAre(0, 65535, 65535));
    EXPECT_THAT(Scaled(pixels, {3e38f, 1.0f, 1.0f, 1.0f, 100}), ElementsAre(0, 65535, 65535));
    EXPECT_THAT(Scaled(pixels, {kInfinity, 1.0f, 1.0f, 1.0f, 100}), ElementsAre(0, 65535, 65535));
    EXPECT_THAT(Scaled(pixels, {1e30f, 1e30f, 1.0f, 1.0f, 1}), ElementsAre(0, 65535, 65535));
    EXPECT_THAT(Scaled(pixels, {1.0f, 1.0f, 1e-40f, 1.0f, 100}), ElementsAre(0, 65535, 65535));
}

TEST(Scaling, MultipliesBeforeItDivides)
{
    // Intensity times exposure leaves the range of single precision, although the factor is 100 or 0.01.
    EXPECT_THAT(Scaled({1}, {1e20f, 1e20f, 1e19f, 1e19f, 100}), ElementsAre(65535));
    EXPECT_THAT(Scaled({60000}, {1e-23f, 1e-23f, 1e-22f, 1e-22f, 100}), ElementsAre(0));
    // So does the product of the references.
    EXPECT_THAT(Scaled({60000}, {1e19f, 1e19f, 1e20f, 1e20f, 100}), ElementsAre(0));
    // The level is multiplied in before the division.
    EXPECT_THAT(Scaled({60000}, {1e-22f, 1e-22f, 1e-22f, 1e-22f, 100}), ElementsAre(60000));
    EXPECT_THAT(Scaled({60000}, {1e-22f, 1e-22f, 1e-22f, 1e-22f, 1}), ElementsAre(0));
}

TEST(Scaling, StartsFromTheStoredPixelsEveryTime)
{
    const TTestObject object;
    object.Store("k", {3, 1, {1001, 3, 65535}});
    object->SetActiveCorrection("k");
    for (const int percent : {1, 0, 33, 77, 100}) {
        object->SetCorrectionLevel(percent);
        object->SetExposureAndIntensity(static_cast<float>(percent), 1.0f);
    }
    object->SetExposureAndIntensity(1.0f, 1.0f);
    EXPECT_THAT(object.Background(), ElementsAre(1001, 3, 65535));
}

TEST(Scaling, HappensAtEverySettingAndNotOtherwise)
{
    const TTestObject object;
    object.Store("k", {2, 1, {100, 200}});
    object->SetActiveCorrection("k");
    EXPECT_THAT(object.Background(), ElementsAre(100, 200)) << "activation";
    object->SetExposureAndIntensity(2.0f, 1.0f);
    EXPECT_THAT(object.Background(), ElementsAre(200, 400)) << "exposure";
    object->SetCorrectionLevel(50);
    EXPECT_THAT(object.Background(), ElementsAre(100, 200)) << "level";
    object->SetRegion(1, 0, 1, 1);
    EXPECT_THAT(object.Background(), ElementsAre(200)) << "region";
    object.Processor().GetEntryAt(0)->MutablePixels()[1] = 50;
    EXPECT_THAT(object.Background(), ElementsAre(200)) << "applying scales nothing";
}

TEST(Scaling, TakesARegionThatWasNotCheckedAgainstTheEntryAsZeroBeyondIt)
{
    const TTestObject object;
    object.Store("k", {3, 2, {1, 2, 3, 4, 5, 6}});
    object->SetRegion(1, 1, 4, 3);
    object.EnterHeaderOnlyMode();
    ASSERT_EQ(object->SetActiveCorrection("k"), 0u); // leaves the region alone in this mode
    object.LeaveHeaderOnlyMode();
    EXPECT_THAT(object.Region(), ElementsAre(1, 1, 4, 3));
    object->SetCorrectionLevel(100);
    EXPECT_THAT(object.Background(), ElementsAre(5, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

} // namespace
