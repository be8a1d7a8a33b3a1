// The state of a processor that nobody has touched.
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

TEST(NewProcessor, HasNoCorrections)
{
    const TTestObject object;
    EXPECT_EQ(object->GetNumberOfCorrections(), 0u);
    EXPECT_EQ(object->GetCorrectionKey(0), nullptr);
    EXPECT_EQ(object->GetActiveCorrectionKey(), nullptr);
}

TEST(NewProcessor, HasTheInitialSettings)
{
    const TTestObject object;
    EXPECT_THAT(object.Region(), testing::ElementsAre(0, 0, 1, 1));
    EXPECT_EQ(object->GetCorrectionLevel(), 100);
    float exposure = 0.0f;
    float intensity = 0.0f;
    EXPECT_EQ(object->GetExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, -1.0f);
    EXPECT_EQ(intensity, -1.0f);
}

TEST(NewProcessor, HasEmptyTextsAndNoChanges)
{
    const TTestObject object;
    EXPECT_STREQ(object->GetLastErrorMessage(), "");
    EXPECT_STREQ(object.Processor().FileMessage(), "");
    EXPECT_FALSE(object.Processor().IsModified());
}

TEST(NewProcessor, IsNotInHeaderOnlyModeAndPassesImagesThrough)
{
    const TTestObject object;
    unsigned short pixel = 7;
    EXPECT_EQ(object->ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(pixel, 7);
}

TEST(NewProcessor, IsIndependentOfOthers)
{
    const TTestObject first;
    const TTestObject second;
    ASSERT_EQ(first.AddFrames("dark", {{1, 1, {1}}}), 0u);
    first->SetCorrectionLevel(50);
    EXPECT_EQ(first->DeleteCorrection(nullptr), 513u);
    EXPECT_EQ(second->GetNumberOfCorrections(), 0u);
    EXPECT_EQ(second->GetCorrectionLevel(), 100);
    EXPECT_STREQ(second->GetLastErrorMessage(), "");
}

} // namespace
