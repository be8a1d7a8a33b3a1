// DeleteCorrection and ClearCorrections.
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(DeleteCorrection, RefusesNullActiveAndUnknownKeys)
{
    const TTestObject object;
    EXPECT_EQ(object.Outcome(object->DeleteCorrection(nullptr)), (TOutcome{513, "Supplied key is NULL."}));
    EXPECT_EQ(object.Outcome(object->DeleteCorrection("none")),
              (TOutcome{513, "The supplied key was not found - 'none'"}));
    EXPECT_FALSE(object.Processor().IsModified());
    object.Store("dark", kPixel);
    object->SetActiveCorrection("dark");
    EXPECT_EQ(object.Outcome(object->DeleteCorrection("dark")),
              (TOutcome{513, "The supplied key is currently active."}));
    EXPECT_EQ(object.Outcome(object->DeleteCorrection("")), (TOutcome{513, "The supplied key was not found - ''"}));
    EXPECT_THAT(object.Keys(), ElementsAre("dark"));
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "dark");
}

TEST(DeleteCorrection, RemovesIgnoringCase)
{
    const TTestObject object;
    object.Store("a", kPixel);
    object.Store("b", kPixel);
    object.Store("c", kPixel);
    EXPECT_EQ(object->DeleteCorrection("B"), 0u);
    EXPECT_THAT(object.Keys(), ElementsAre("a", "c"));
    EXPECT_EQ(object.Outcome(object->DeleteCorrection("B")), (TOutcome{513, "The supplied key was not found - 'B'"}));
}

TEST(DeleteCorrection, LeavesAnotherActiveCorrectionAlone)
{
    const TTestObject object;
    object.Store("a", kPixel);
    object.Store("b", kPixel);
    object->SetActiveCorrection("b");
    EXPECT_EQ(object->DeleteCorrection("a"), 0u);
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "b");
    EXPECT_THAT(object.Background(), ElementsAre(5));
}

TEST(DeleteCorrection, SucceedsOnceTheCorrectionIsNotActive)
{
    const TTestObject object;
    object.Store("a", kPixel);
    object->SetActiveCorrection("a");
    EXPECT_EQ(object->DeleteCorrection("a"), 513u);
    object->SetActiveCorrection(nullptr);
    EXPECT_EQ(object->DeleteCorrection("a"), 0u);
    EXPECT_EQ(object->GetNumberOfCorrections(), 0u);
}

TEST(DeleteCorrection, OfTheActiveOneInAnotherCaseDeactivatesIt)
{
    const TTestObject object;
    object.Store("dark", kPixel);
    object->SetActiveCorrection("dark");
    EXPECT_EQ(object->DeleteCorrection("Dark"), 0u);
    EXPECT_EQ(object->GetNumberOfCorrections(), 0u);
    EXPECT_EQ(object->GetActiveCorrectionKey(), nullptr);
    unsigned short pixel = 100;
    EXPECT_EQ(object->ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(pixel, 100);
    EXPECT_EQ(object->SetRegion(5000, 5000, 10, 10), 0u) << "no correction limits the region";
    EXPECT_EQ(object->SetCorrectionLevel(50), 0u);
}

TEST(DeleteCorrection, OfTheKeyThatTheLibraryHandedOut)
{
    const TTestObject object;
    object.Store("a", kPixel);
    object.Store("b", kPixel);
    object->SetActiveCorrection("a");
    EXPECT_EQ(object.Outcome(object->DeleteCorrection(object->GetActiveCorrectionKey())),
              (TOutcome{513, "The supplied key is currently active."}));
    EXPECT_EQ(object->DeleteCorrection(object->GetCorrectionKey(1)), 0u);
    EXPECT_THAT(object.Keys(), ElementsAre("a"));
}

TEST(ClearCorrections, RemovesEverythingAndDeactivates)
{
    const TTestObject object;
    object.Store("a", {2, 1, {1, 2}});
    object.Store("b", kPixel);
    object->SetActiveCorrection("a");
    object->SetCorrectionLevel(50);
    EXPECT_EQ(object->ClearCorrections(), 0u);
    EXPECT_THAT(object.Keys(), IsEmpty());
    EXPECT_EQ(object->GetActiveCorrectionKey(), nullptr);
    EXPECT_EQ(object->GetCorrectionKey(0), nullptr);
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 2, 1)) << "settings stay";
    EXPECT_EQ(object->GetCorrectionLevel(), 50);
    unsigned short image[2] = {100, 100};
    EXPECT_EQ(object->ApplyCorrection(image, 2, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_THAT(image, ElementsAre(100, 100));
}

TEST(ClearCorrections, DoesNotTouchTheModifiedFlag)
{
    const TTestObject object;
    EXPECT_EQ(object->ClearCorrections(), 0u);
    EXPECT_FALSE(object.Processor().IsModified());
    object.Store("a", kPixel);
    EXPECT_EQ(object->ClearCorrections(), 0u);
    EXPECT_TRUE(object.Processor().IsModified());
}

TEST(ClearCorrections, LeavesHeaderOnlyMode)
{
    const TTestObject object;
    object.EnterHeaderOnlyMode();
    EXPECT_EQ(object->SetCorrectionLevel(50), 770u);
    EXPECT_EQ(object->ClearCorrections(), 0u);
    EXPECT_EQ(object->SetCorrectionLevel(50), 0u);
}

} // namespace
