#include "contract/ForeignObject.h"
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "support/AllocationFaults.h"
#include "support/TemporaryFolder.h"

#include "boundary/TZRException.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>

namespace {

constexpr std::uint32_t kOne = 0x3F800000; // 1.0 as bits
constexpr char kHeaderOnlyText[] = "This file has been opened in header only mode. Cannot modify or apply corrections.";

struct TForeignTag {};

TStoredCorrection Correction(const char* key, std::vector<std::uint16_t> pixels)
{
    return {key, static_cast<std::uint32_t>(pixels.size()), 1, kOne, kOne, pixels};
}

class ImportCorrections : public testing::Test {
protected:
    std::vector<TStoredCorrection> Imported() { return ProcessorDriver::Corrections(processor); }

    TBackgroundCorrectionProcessorUINT16 source;
    TBackgroundCorrectionProcessorUINT16 processor;
};

TEST_F(ImportCorrections, AppendsInTheSourcesOrderAndSkipsKeysThatAreThere)
{
    const TStoredCorrection own = Correction("B", {1, 2, 3});
    ProcessorDriver::Store(source, {Correction("a", {4}), Correction("b", {5, 6}), Correction("C", {7})});
    ProcessorDriver::Store(processor, own);
    EXPECT_EQ(processor.ImportCorrections(&source, false), 0u);
    EXPECT_EQ(Imported(), (std::vector<TStoredCorrection>{own, Correction("a", {4}), Correction("C", {7})}));
}

TEST_F(ImportCorrections, OverwritesInPlaceWithTheSourcesSpelling)
{
    ProcessorDriver::Store(source, {Correction("a", {4}), {"b", 1, 2, BitsOf(2.0f), BitsOf(3.0f), {5, 6}}});
    ProcessorDriver::Store(processor, {Correction("B", {1, 2, 3}), Correction("last", {9})});
    EXPECT_EQ(processor.ImportCorrections(&source, true), 0u);
    EXPECT_EQ(Imported(),
              (std::vector<TStoredCorrection>{
                  {"b", 1, 2, BitsOf(2.0f), BitsOf(3.0f), {5, 6}}, Correction("last", {9}), Correction("a", {4})}));
    EXPECT_STREQ(processor.GetCorrectionKey(0), "b");
    EXPECT_EQ(processor.SetActiveCorrection("B"), 0u);
    EXPECT_EQ(processor.DeleteCorrection("LAST"), 0u);
    EXPECT_STREQ(processor.GetCorrectionKey(1), "a");
}

TEST_F(ImportCorrections, CopiesDeeply)
{
    auto temporary = std::make_unique<TBackgroundCorrectionProcessorUINT16>();
    ProcessorDriver::Store(*temporary, Correction("a", {4, 5}));
    EXPECT_EQ(processor.ImportCorrections(temporary.get(), false), 0u);
    EXPECT_EQ(ProcessorDriver::Corrections(*temporary), Imported());
    temporary->GetEntryAt(0)->MutablePixels()[0] = 77;
    temporary.reset();
    EXPECT_EQ(Imported(), (std::vector<TStoredCorrection>{Correction("a", {4, 5})}));
}

TEST_F(ImportCorrections, MarksOnlyTheImporterAsModifiedEvenWhenThereIsNothing)
{
    EXPECT_EQ(processor.ImportCorrections(&source, false), 0u);
    EXPECT_TRUE(processor.IsModified());
    EXPECT_FALSE(source.IsModified());
    EXPECT_EQ(processor.GetNumberOfCorrections(), 0u);
}

TEST_F(ImportCorrections, BringsItsStatisticsAlong)
{
    ProcessorDriver::Store(source, Correction("a", {1, 2, 2}));
    source.SetActiveCorrection("a");
    unsigned short values[3] = {};
    source.GetCorrectionStatistics(&values[0], &values[1], &values[2]);
    ProcessorDriver::Store(processor, Correction("A", {50, 60, 70}));
    processor.SetActiveCorrection("A");
    processor.GetCorrectionStatistics(&values[0], &values[1], &values[2]);
    EXPECT_EQ(values[1], 70);
    EXPECT_EQ(processor.ImportCorrections(&source, true), 0u);
    processor.GetCorrectionStatistics(&values[0], &values[1], &values[2]);
    EXPECT_EQ(values[0], 1);
    EXPECT_EQ(values[1], 2);
    EXPECT_EQ(values[2], 1);
}

TEST_F(ImportCorrections, OverTheActiveCorrectionKeepsItActiveAndItsBackgroundAsItWas)
{
    ProcessorDriver::Store(processor, Correction("dark", {10, 20}));
    ProcessorDriver::Store(source, Correction("DARK", {1, 2}));
    processor.SetActiveCorrection("dark");
    EXPECT_EQ(processor.ImportCorrections(&source, true), 0u);
    EXPECT_STREQ(processor.GetActiveCorrectionKey(), "DARK");
    unsigned short image[] = {100, 100};
    EXPECT_EQ(processor.ApplyCorrection(image, 2, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(image[0], 90) << "the background is not calculated anew by the import";
    processor.SetCorrectionLevel(100);
    unsigned short second[] = {100, 100};
    EXPECT_EQ(processor.ApplyCorrection(second, 2, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(second[0], 99);
    EXPECT_EQ(second[1], 98);
}

TEST_F(ImportCorrections, OfAnotherSizeOverTheActiveCorrectionStaysInsideIt)
{
    ProcessorDriver::Store(processor, {"dark", 4, 4, kOne, kOne, std::vector<std::uint16_t>(16, 10)});
    ProcessorDriver::Store(source, Correction("dark", {1, 2}));
    processor.SetActiveCorrection("dark");
    EXPECT_EQ(processor.ImportCorrections(&source, true), 0u);
    processor.SetCorrectionLevel(100); // the region is still 4 x 4
    std::vector<unsigned short> image(16, 100);
    EXPECT_EQ(processor.ApplyCorrection(image.data(), 16, nullptr, 0, nullptr, false, false, false), 0u);
    std::vector<unsigned short> expected(16, 100);
    expected[0] = 99;
    expected[1] = 98;
    EXPECT_EQ(image, expected) << "what lies beyond counts as 0";
}

TEST_F(ImportCorrections, IntoItselfChangesNothing)
{
    const std::vector<TStoredCorrection> both = {Correction("a", {1}), Correction("b", {2, 3})};
    ProcessorDriver::Store(processor, both);
    EXPECT_EQ(processor.ImportCorrections(&processor, false), 0u);
    EXPECT_EQ(Imported(), both);
    EXPECT_TRUE(processor.IsModified());
    EXPECT_TRUE(ProcessorDriver::LockIsFree(processor));
}

TEST_F(ImportCorrections, IntoItselfOverwritingLosesThePixels)
{
    std::vector<TStoredCorrection> both = {Correction("a", {1}), Correction("b", {2, 3})};
    ProcessorDriver::Store(processor, both);
    processor.SetActiveCorrection("b");
    EXPECT_EQ(processor.ImportCorrections(&processor, true), 0u);
    both[0].pixels.clear();
    both[1].pixels.clear();
    EXPECT_EQ(Imported(), both);
    EXPECT_STREQ(processor.GetActiveCorrectionKey(), "b");
    unsigned short image[] = {100, 100};
    EXPECT_EQ(processor.ApplyCorrection(image, 2, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(image[1], 97) << "the background was there before";
    EXPECT_EQ(processor.SetActiveCorrection("a"), 0u);
    unsigned short single[] = {100};
    EXPECT_EQ(processor.ApplyCorrection(single, 1, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(single[0], 100) << "without pixels everything counts as 0";
    const TTemporaryFolder folder;
    EXPECT_EQ(processor.SaveFile(folder.File("file.qxb").c_str()), 4294967295u);
}

TEST_F(ImportCorrections, FromAHeaderOnlySourceBringsDescriptionsWithoutPixels)
{
    const TTemporaryFolder folder;
    const TSampleFile sample = SampleFiles::WithoutPixels();
    FileBytes::WriteFile(folder.File("file.qxb"), sample.bytes);
    ASSERT_EQ(source.LoadFileHeaderOnly(folder.File("file.qxb").c_str()), 0u);
    EXPECT_EQ(processor.ImportCorrections(&source, false), 0u);
    std::vector<TStoredCorrection> bare = sample.corrections;
    bare[1].pixels.clear();
    EXPECT_EQ(Imported(), bare);
    EXPECT_FALSE(ProcessorDriver::IsHeaderOnly(processor));

    EXPECT_EQ(processor.SetActiveCorrection("dark"), 0u);
    unsigned short values[3] = {1, 2, 3};
    EXPECT_EQ(processor.GetCorrectionStatistics(&values[0], &values[1], &values[2]), 0u);
    EXPECT_EQ(values[0] + 10 * values[1] + 100 * values[2], 321);
    // The one with pixels cannot be saved; an entry of 3 x 0 pixels has nothing to write.
    EXPECT_EQ(processor.SaveFile(folder.File("saved.qxb").c_str()), 4294967295u);
    EXPECT_STREQ(processor.FileMessage(), "Couldn't read Data from calibration file.");
    processor.SetActiveCorrection(nullptr);
    EXPECT_EQ(processor.DeleteCorrection("dark"), 0u);
    EXPECT_EQ(processor.SaveFile(folder.File("saved.qxb").c_str()), 0u);
}

TEST_F(ImportCorrections, RefusesNullAndObjectsOfAnotherKind)
{
    EXPECT_EQ(processor.ImportCorrections(nullptr, false), 513u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Supplied import source is NULL.");
    bool destroyed = false;
    TForeignObject<TForeignTag> foreign(&destroyed);
    EXPECT_EQ(processor.ImportCorrections(&foreign, true), 513u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "The supplied import source is not the correct type.");
    EXPECT_FALSE(processor.IsModified());
    EXPECT_FALSE(destroyed);
}

TEST_F(ImportCorrections, RefusesEverythingInHeaderOnlyMode)
{
    ProcessorDriver::Store(source, Correction("a", {1}));
    processor.LoadFileHeaderOnly(nullptr);
    bool destroyed = false;
    TForeignObject<TForeignTag> foreign(&destroyed);
    QX_KRLSDK::QX_IBackgroundCorrection* const sources[] = {nullptr, &foreign, &source, &processor};
    for (QX_KRLSDK::QX_IBackgroundCorrection* const wrong : sources) {
        processor.SetActiveCorrection("nobody");
        EXPECT_EQ(processor.ImportCorrections(wrong, true), 770u);
        EXPECT_STREQ(processor.GetLastErrorMessage(), kHeaderOnlyText);
    }
    EXPECT_EQ(processor.GetNumberOfCorrections(), 0u);
    EXPECT_FALSE(processor.IsModified());
}

// One import with every allocation failing in turn. Pixels are copied by the entry, everything else is the list's.
class ImportWithoutMemory : public testing::TestWithParam<TFaultRepeat> {};

TEST_P(ImportWithoutMemory, ThrowsKeepsWhatWasImportedAndUnlocks)
{
    // One less than a list has room for at first, so that the second new one needs memory for itself.
    const std::vector<TStoredCorrection> own = {
        Correction("one", {1, 1}), Correction("two", {2, 2}), Correction("three", {3}), Correction("four", {4}),
        Correction("five", {5}),   Correction("six", {6}),    Correction("seven", {7})};
    const std::vector<TStoredCorrection> theirs = {Correction("new", {3}), Correction("ONE", {4}),
                                                   Correction("newer", {5}), Correction("TWO", {6})};
    // Every state that the list goes through.
    std::vector<std::vector<TStoredCorrection>> states(4, own);
    for (std::size_t i = 1; i < states.size(); ++i) {
        states[i].push_back(theirs[0]);
    }
    states[2][0] = theirs[1];
    states[3][0] = theirs[1];
    states[3].push_back(theirs[2]);
    std::vector<TStoredCorrection> imported = states[3];
    imported[1] = theirs[3];
    unsigned int importFailures = 0;
    unsigned int copyFailures = 0;
    for (std::size_t failAt = 1;; ++failAt) {
        TBackgroundCorrectionProcessorUINT16 source;
        TBackgroundCorrectionProcessorUINT16 processor;
        ProcessorDriver::Store(source, theirs);
        ProcessorDriver::Store(processor, own);
        std::array<char, 600> what = {};
        unsigned int result = 4711;
        TAllocationFaults memory(failAt, GetParam());
        try {
            result = processor.ImportCorrections(&source, true);
        } catch (const TZRException& error) {
            std::strncpy(what.data(), error.what(), what.size() - 1);
        }
        memory.Disarm();
        EXPECT_TRUE(ProcessorDriver::LockIsFree(processor));
        EXPECT_TRUE(ProcessorDriver::LockIsFree(source));
        EXPECT_EQ(ProcessorDriver::Corrections(source), theirs);
        if (!memory.Fired()) {
            EXPECT_EQ(result, 0u);
            break;
        }
        EXPECT_EQ(result, 4711u) << "the exception is not turned into a code";
        if (std::strcmp(what.data(), "Could not allocate memory during import.") == 0) {
            ++importFailures;
        } else {
            EXPECT_STREQ(what.data(), "Ran out of memory in Background correction construction.\n"
                                      "Try restarting the application if the problem persists.");
            ++copyFailures;
        }
        // An entry that was being overwritten has lost its pixels before the new ones were asked for.
        std::vector<TStoredCorrection> left = ProcessorDriver::Corrections(processor);
        bool isState = false;
        for (const std::vector<TStoredCorrection>& state : states) {
            isState = isState || left == state;
            std::vector<TStoredCorrection> overwriting = state;
            for (std::size_t i = 0; i < 2; ++i) {
                overwriting = state;
                overwriting[i] = theirs[i == 0 ? 1 : 3];
                overwriting[i].pixels.clear();
                isState = isState || left == overwriting;
            }
        }
        EXPECT_TRUE(isState) << failAt;
        EXPECT_TRUE(processor.IsModified()) << "as before";
        // It works on: the same import now brings everything.
        EXPECT_EQ(processor.ImportCorrections(&source, true), 0u);
        EXPECT_EQ(ProcessorDriver::Corrections(processor), imported);
    }
    EXPECT_GE(importFailures, 1u) << "room for the ninth";
    EXPECT_EQ(copyFailures, 4u) << "the pixels of each correction";
}

TEST_P(ImportWithoutMemory, DoesNotMarkAsModified)
{
    TBackgroundCorrectionProcessorUINT16 source;
    ProcessorDriver::Store(source, Correction("new", {3}));
    for (std::size_t failAt = 1;; ++failAt) {
        TBackgroundCorrectionProcessorUINT16 processor;
        TAllocationFaults memory(failAt, GetParam());
        try {
            processor.ImportCorrections(&source, false);
        } catch (const TZRException&) {
        }
        memory.Disarm();
        EXPECT_EQ(processor.IsModified(), !memory.Fired());
        if (!memory.Fired()) {
            break;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Repeats, ImportWithoutMemory, testing::Values(TFaultRepeat::kOnce, TFaultRepeat::kForGood),
                         [](const auto& suite) { return suite.param == TFaultRepeat::kOnce ? "Once" : "ForGood"; });

} // namespace
