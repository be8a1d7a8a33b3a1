// What a processor offers to the offline store on top of the interface, and the modified flag that the store reads.
#include "support/TemporaryFolder.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using testing::ElementsAre;

TEST(GetEntryAt, GivesTheEntriesInOrderAndNullBeyondThem)
{
    const TTestObject object;
    EXPECT_EQ(object.Processor().GetEntryAt(0), nullptr);
    object.Store("a", kPixel);
    object.Store("b", kPixel);
    EXPECT_STREQ(object.Processor().GetEntryAt(0)->Key(), "a");
    EXPECT_STREQ(object.Processor().GetEntryAt(1)->Key(), "b");
    EXPECT_EQ(object.Processor().GetEntryAt(2), nullptr);
    EXPECT_EQ(object.Processor().GetEntryAt(0xFFFFFFFFu), nullptr);
    EXPECT_EQ(object.Message(), "");
}

TEST(FindEntrySpelled, WantsEveryLetterAsStored)
{
    const TTestObject object;
    object.Store("Dark", kPixel);
    EXPECT_EQ(object.Processor().FindEntrySpelled("Dark"), object.Processor().GetEntryAt(0));
    EXPECT_EQ(object.Processor().FindEntrySpelled("dark"), nullptr);
    EXPECT_EQ(object.Processor().FindEntrySpelled("flat"), nullptr);
}

TEST(AddEntryCopy, StoresAnUnfilteredCopy)
{
    const TTestObject object;
    EXPECT_EQ(object.Store("k", {3, 1, {1, 99, 2}}, 0.5f, 80.0f), 0u);
    EXPECT_TRUE(object.Processor().IsModified());
    const TBackgroundCorrectionEntry& entry = *object.Processor().GetEntryAt(0);
    EXPECT_EQ(entry.ReferenceExposureSeconds(), 0.5f);
    EXPECT_EQ(entry.ReferenceIntensityPercent(), 80.0f);
    EXPECT_EQ(entry.Pixels()[1], 99);
}

TEST(AddEntryCopy, RefusesATakenKey)
{
    const TTemporaryFolder folder;
    const TTestObject writer;
    writer.Store("dark", kPixel);
    writer->SaveFile(folder.File("file").c_str());
    const TTestObject object;
    ASSERT_EQ(object->LoadFile(folder.File("file").c_str()), 0u);
    EXPECT_EQ(object.Outcome(object.Store("Dark", kPixel)),
              (TOutcome{1024, "Couldn't create new background entry - 'Supplied Key is not unique - 'Dark''"}));
    EXPECT_FALSE(object.Processor().IsModified());
    EXPECT_THAT(object.Keys(), ElementsAre("dark"));
}

TEST(AddEntryCopy, WorksInHeaderOnlyModeToo)
{
    const TTestObject object;
    object.EnterHeaderOnlyMode();
    EXPECT_EQ(object.Store("k", kPixel), 0u);
    EXPECT_TRUE(object.Processor().IsModified());
}

// Starts with a correction that came from a file, so unmodified.
class ModifiedFlag : public testing::Test {
protected:
    ModifiedFlag()
    {
        const TTestObject writer;
        writer.Store("dark", kPixel);
        writer->SaveFile(Path().c_str());
        object->LoadFile(Path().c_str());
    }
    std::string Path() const { return folder.File("corrections.cal"); }

    TTemporaryFolder folder;
    TTestObject object;
};

TEST_F(ModifiedFlag, IsNotSetByLoadingSavingAndSettings)
{
    EXPECT_EQ(object->GetNumberOfCorrections(), 1u);
    object->SetActiveCorrection("dark");
    object->SetCorrectionLevel(50);
    object->SetExposureAndIntensity(1.0f, 1.0f);
    object->SetRegion(0, 0, 1, 1);
    object->SaveFile(Path().c_str());
    object->LoadFileHeaderOnly(Path().c_str());
    object->ClearCorrections();
    EXPECT_FALSE(object.Processor().IsModified());
}

TEST_F(ModifiedFlag, IsSetByADeletionThatSucceeds)
{
    object->SetActiveCorrection("dark");
    object->DeleteCorrection(nullptr);
    object->DeleteCorrection("dark");
    object->DeleteCorrection("none");
    EXPECT_FALSE(object.Processor().IsModified());
    object->SetActiveCorrection(nullptr);
    EXPECT_EQ(object->DeleteCorrection("dark"), 0u);
    EXPECT_TRUE(object.Processor().IsModified());
}

TEST_F(ModifiedFlag, IsSetByAnImportThatSucceedsEvenOfNothing)
{
    EXPECT_EQ(object.Outcome(object->ImportCorrections(nullptr, true)),
              (TOutcome{513, "Supplied import source is NULL."}));
    EXPECT_FALSE(object.Processor().IsModified());
    const TTestObject empty;
    EXPECT_EQ(object->ImportCorrections(empty.Get(), false), 0u);
    EXPECT_TRUE(object.Processor().IsModified());
    EXPECT_FALSE(empty.Processor().IsModified());
}

TEST_F(ModifiedFlag, IsNotClearedByLoadingOrSaving)
{
    object.Store("more", kPixel);
    object->SaveFile(Path().c_str());
    object->LoadFile(Path().c_str());
    EXPECT_TRUE(object.Processor().IsModified());
}

} // namespace
