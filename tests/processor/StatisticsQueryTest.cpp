#include "support/RandomImages.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using testing::ElementsAre;

constexpr unsigned short kUntouched = 4711;

std::vector<unsigned short> Stored(const TTestObject& object)
{
    std::vector<unsigned short> values(3, kUntouched);
    EXPECT_EQ(object->GetCorrectionStatistics(&values[0], &values[1], &values[2]), 0u);
    return values;
}

std::vector<unsigned short> ScaledFigures(const TTestObject& object)
{
    std::vector<unsigned short> values(3, kUntouched);
    EXPECT_EQ(object->GetScaledCorrectionStatistics(&values[0], &values[1], &values[2]), 0u);
    return values;
}

TEST(StatisticsQuery, LeavesTheOutputsAloneWithNothingActive)
{
    const TTestObject object;
    EXPECT_THAT(Stored(object), testing::Each(kUntouched));
    EXPECT_THAT(ScaledFigures(object), testing::Each(kUntouched));
    object.Store("k", {3, 1, {1, 2, 2}});
    object->SetActiveCorrection("k");
    object->SetActiveCorrection(nullptr);
    EXPECT_THAT(Stored(object), testing::Each(kUntouched));
    EXPECT_THAT(ScaledFigures(object), testing::Each(kUntouched));
}

TEST(StatisticsQuery, CoversTheWholeStoredImageWhateverTheSettings)
{
    const TTestObject object;
    object.Store("k", {3, 1, {1, 2, 2}});
    object->SetActiveCorrection("k");
    EXPECT_THAT(Stored(object), ElementsAre(1, 2, 1));
    object->SetRegion(1, 0, 1, 1);
    object->SetCorrectionLevel(0);
    EXPECT_THAT(Stored(object), ElementsAre(1, 2, 1));
}

TEST(StatisticsQuery, OfTheScaledBackgroundCoversTheRegion)
{
    TRandomImages random(70);
    const Literal::TImage image = random.Image(17, 5);
    const TTestObject object;
    object.Store("k", image);
    object->SetActiveCorrection("k");
    object->SetExposureAndIntensity(1.0f, 0.7f);
    object->SetRegion(3, 1, 11, 3);
    const Literal::TStatistics expected =
        Literal::CalculateStatistics(Literal::Scale(Literal::CopyRegion(image, 3, 1, 11, 3), 0.7f).pixels);
    EXPECT_THAT(ScaledFigures(object), ElementsAre(expected.minimum, expected.maximum, expected.average));
}

TEST(StatisticsQuery, SkipsNullPointers)
{
    const TTestObject object;
    object.Store("k", {3, 1, {1, 6, 6}});
    object->SetActiveCorrection("k");
    const unsigned short expected[3] = {1, 6, 4};
    for (unsigned int present = 0; present < 8; ++present) {
        unsigned short values[2][3] = {{kUntouched, kUntouched, kUntouched}, {kUntouched, kUntouched, kUntouched}};
        unsigned short* pointers[2][3];
        for (unsigned int query = 0; query < 2; ++query) {
            for (unsigned int i = 0; i < 3; ++i) {
                pointers[query][i] = (present >> i & 1u) != 0 ? &values[query][i] : nullptr;
            }
        }
        EXPECT_EQ(object->GetCorrectionStatistics(pointers[0][0], pointers[0][1], pointers[0][2]), 0u);
        EXPECT_EQ(object->GetScaledCorrectionStatistics(pointers[1][0], pointers[1][1], pointers[1][2]), 0u);
        for (unsigned int i = 0; i < 3; ++i) {
            const unsigned short wanted = (present >> i & 1u) != 0 ? expected[i] : kUntouched;
            EXPECT_EQ(values[0][i], wanted);
            EXPECT_EQ(values[1][i], wanted);
        }
    }
}

TEST(StatisticsQuery, OfACorrectionWithoutPixelsLeavesTheOutputsAlone)
{
    const TTestObject object;
    object.StoreDescription("k", 3, 2);
    object->SetActiveCorrection("k");
    EXPECT_THAT(Stored(object), testing::Each(kUntouched));
    EXPECT_THAT(ScaledFigures(object), ElementsAre(0, 0, 0)) << "its scaled background is there, and black";
}

TEST(StatisticsQuery, OfAScaledBackgroundThatDoesNotExistLeavesTheOutputsAlone)
{
    const TTestObject object;
    object.StoreDescription("k", 46341, 46341); // more pixels than 32 bits count
    EXPECT_EQ(object->SetActiveCorrection("k"), 0u);
    EXPECT_THAT(ScaledFigures(object), testing::Each(kUntouched));
    EXPECT_THAT(Stored(object), testing::Each(kUntouched));
}

TEST(StatisticsQuery, OfTheStoredImageAreKeptOnceComputed)
{
    const TTestObject object;
    object.Store("k", {3, 1, {1, 2, 2}});
    object->SetActiveCorrection("k");
    unsigned short maximum = 0;
    object->GetCorrectionStatistics(nullptr, &maximum, nullptr);
    object.Processor().GetEntryAt(0)->MutablePixels()[0] = 9;
    EXPECT_THAT(Stored(object), ElementsAre(1, 2, 1));
}

} // namespace
