// What saving and loading leave of a processor: its corrections, its mode, whether it counts as modified, and what is
// active.
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <thread>

using FileBytes::TBytes;

namespace {

using ProcessorDriver::kMinusOne;

std::string ActiveKey(TBackgroundCorrectionProcessorUINT16& processor)
{
    const char* const key = processor.GetActiveCorrectionKey();
    return key != nullptr ? key : "(nothing)";
}

std::vector<TStoredCorrection> WithoutPixels(std::vector<TStoredCorrection> corrections)
{
    for (TStoredCorrection& correction : corrections) {
        correction.pixels.clear();
    }
    return corrections;
}

class ProcessorFiles : public testing::Test {
protected:
    ProcessorFiles()
    {
        // Loaded, so that it does not count as modified.
        FileBytes::WriteFile(path, SampleFiles::WithoutPixels().bytes);
        processor.LoadFile(path.c_str());
        processor.SetActiveCorrection("dark");
    }

    std::string Write(const char* name, const TBytes& bytes)
    {
        FileBytes::WriteFile(folder.File(name), bytes);
        return folder.File(name);
    }

    const std::vector<TStoredCorrection> before = SampleFiles::WithoutPixels().corrections;
    TTemporaryFolder folder;
    std::string path = folder.File("file.qxb");
    TBackgroundCorrectionProcessorUINT16 processor;
};

TEST_F(ProcessorFiles, SavesChangeNothing)
{
    const std::string good = folder.File("saved.qxb");
    const std::string bad = folder.File("missing/saved.qxb");
    for (const std::string& target : {good, bad}) {
        processor.SaveFile(target.c_str());
        processor.SaveGroupedFile(target.c_str(), {"A", "B"});
        EXPECT_EQ(ProcessorDriver::Corrections(processor), before);
        EXPECT_EQ(ActiveKey(processor), "dark");
        EXPECT_FALSE(processor.IsModified());
        EXPECT_FALSE(ProcessorDriver::IsHeaderOnly(processor));
    }
    ProcessorDriver::Store(processor, {"modifies", 1, 1, 0x3F800000, 0x3F800000, {1}});
    ASSERT_TRUE(processor.IsModified());
    EXPECT_EQ(processor.SaveFile(good.c_str()), 0u);
    EXPECT_TRUE(processor.IsModified()) << "a save does not clear it";
}

TEST_F(ProcessorFiles, LoadsReplaceTheListAndDeactivate)
{
    const TSampleFile sample = SampleFiles::TwoCorrections(); // has a "dark" of its own
    const std::string file = Write("other.qxb", sample.bytes);
    for (const TLoadKind kind : kEveryLoad) {
        processor.LoadFile(path.c_str());
        processor.SetActiveCorrection("dark");
        const TLoadOutcome outcome = ProcessorDriver::Load(processor, file.c_str(), kind);
        EXPECT_EQ(outcome.result, 0u);
        EXPECT_EQ(outcome.corrections, kind.headerOnly ? WithoutPixels(sample.corrections) : sample.corrections);
        EXPECT_EQ(outcome.headerOnly, kind.headerOnly);
        EXPECT_EQ(ActiveKey(processor), "(nothing)");
        EXPECT_FALSE(processor.IsModified());
    }
    ProcessorDriver::Store(processor, {"modifies", 1, 1, 0x3F800000, 0x3F800000, {1}});
    processor.LoadFile(file.c_str());
    EXPECT_TRUE(processor.IsModified()) << "a load does not clear it";
}

TEST_F(ProcessorFiles, LoadsThatFailBeforeTheCountWasReadLeaveListAndSelectionButSetTheMode)
{
    TBytes noCount = SampleFiles::EmptyList().bytes;
    noCount.resize(noCount.size() - 1);
    TBytes noNames = SampleFiles::Grouped().bytes;
    noNames.resize(60);
    TBytes version3 = SampleFiles::EmptyList().bytes;
    version3[26] = 3;
    struct TCase {
        std::string file;
        unsigned int result;
    };
    const TCase cases[] = {{folder.File("missing.qxb"), 769},
                           {Write("text.qxb", FileBytes::Padded("Background correction file", 60)), 769},
                           {Write("version.qxb", version3), 772},
                           {Write("short.qxb", FileBytes::Padded("Background", 10)), kMinusOne},
                           {Write("count.qxb", noCount), kMinusOne}};
    for (const TCase& test : cases) {
        for (const TLoadKind kind : kEveryLoad) {
            const TLoadOutcome outcome = ProcessorDriver::Load(processor, test.file.c_str(), kind);
            EXPECT_EQ(outcome.result, test.result) << test.file << ' ' << Describe(kind);
            EXPECT_EQ(outcome.corrections, before);
            EXPECT_EQ(outcome.headerOnly, kind.headerOnly);
            EXPECT_EQ(ActiveKey(processor), "dark");
            EXPECT_FALSE(processor.IsModified());
        }
    }
    const std::string names = Write("names.qxb", noNames);
    for (const bool headerOnly : {true, false}) {
        const TLoadOutcome outcome = ProcessorDriver::Load(processor, names.c_str(), {true, headerOnly});
        EXPECT_EQ(outcome.result, kMinusOne);
        EXPECT_EQ(outcome.headerOnly, headerOnly);
        EXPECT_EQ(ActiveKey(processor), "dark");
    }
    // The mode has come and gone; the active correction still works.
    unsigned short image[] = {100, 0x2000};
    processor.SetExposureAndIntensity(0.5f, 100.0f);
    EXPECT_EQ(processor.ApplyCorrection(image, 2, nullptr, 0, nullptr, false, false, false), 0u);
    EXPECT_EQ(image[0], 99);
    EXPECT_EQ(image[1], 0x2000 - 0x1234);
}

TEST_F(ProcessorFiles, LoadsThatFailLaterKeepWhatWasReadAndDeactivate)
{
    const TSampleFile sample = SampleFiles::TwoCorrections();
    TBytes cut = sample.bytes;
    cut.resize(cut.size() - 1);
    TBytes refused = FileBytes::Join({SampleFiles::Beginning(2),
                                      SampleFiles::Correction("one", 1, 1, 1.0f, 1.0f, FileBytes::Hex("01 00")),
                                      SampleFiles::Correction("ONE", 1, 1, 1.0f, 1.0f, FileBytes::Hex("01 00"))});
    TBytes nothing = SampleFiles::Beginning(1);
    struct TCase {
        std::string file;
        unsigned int result;
        std::size_t corrections;
    };
    for (const TCase& test : {TCase{Write("cut.qxb", cut), kMinusOne, 1}, TCase{Write("refused.qxb", refused), 1024, 1},
                              TCase{Write("nothing.qxb", nothing), kMinusOne, 0}}) {
        for (const bool grouped : {false, true}) {
            processor.LoadFile(path.c_str());
            processor.SetActiveCorrection("dark");
            const TLoadOutcome outcome = ProcessorDriver::Load(processor, test.file.c_str(), {grouped, false});
            EXPECT_EQ(outcome.result, test.result) << test.file;
            EXPECT_EQ(outcome.corrections.size(), test.corrections);
            EXPECT_EQ(ActiveKey(processor), "(nothing)");
            EXPECT_FALSE(outcome.headerOnly);
            EXPECT_FALSE(processor.IsModified());
            // Nothing is active for ApplyCorrection either: an image of the old region passes through.
            unsigned short image[] = {100, 200};
            EXPECT_EQ(processor.ApplyCorrection(image, 2, nullptr, 0, nullptr, false, false, false), 0u);
            EXPECT_EQ(image[1], 200);
        }
    }
}

TEST_F(ProcessorFiles, EmptyFileDeactivatesToo)
{
    const std::string file = Write("empty.qxb", SampleFiles::EmptyList().bytes);
    EXPECT_EQ(processor.LoadFile(file.c_str()), 0u);
    EXPECT_EQ(processor.GetNumberOfCorrections(), 0u);
    EXPECT_EQ(ActiveKey(processor), "(nothing)");
}

TEST_F(ProcessorFiles, HeaderOnlyFileGivesKeysSizesAndReferencesAndRefusesTheRest)
{
    const TSampleFile sample = SampleFiles::TwoCorrections();
    const std::string file = Write("other.qxb", sample.bytes);
    ASSERT_EQ(processor.LoadFileHeaderOnly(file.c_str()), 0u);
    EXPECT_EQ(processor.SetActiveCorrection("FLAT,20 c"), 0u);
    EXPECT_EQ(ActiveKey(processor), "Flat,20 C");
    float exposure = 0.0f;
    float intensity = 0.0f;
    EXPECT_EQ(processor.GetReferenceExposureAndIntensity(&exposure, &intensity), 0u);
    EXPECT_EQ(exposure, 0.1f);
    EXPECT_EQ(intensity, 50.0f);
    EXPECT_EQ(processor.DeleteCorrection("dark"), 770u);
    EXPECT_EQ(processor.SetRegion(0, 0, 1, 1), 770u);
    unsigned short image[] = {1};
    EXPECT_EQ(processor.ApplyCorrection(image, 1, nullptr, 0, nullptr, false, false, false), 770u);
    EXPECT_EQ(ProcessorDriver::Corrections(processor), WithoutPixels(sample.corrections));
    EXPECT_FALSE(processor.IsModified());
}

TEST_F(ProcessorFiles, HeaderOnlyModeIsLeftByClearingAndByAnyFullLoad)
{
    ASSERT_EQ(processor.LoadFileHeaderOnly(path.c_str()), 0u);
    EXPECT_EQ(processor.ClearCorrections(), 0u);
    EXPECT_FALSE(ProcessorDriver::IsHeaderOnly(processor));
    ASSERT_EQ(processor.LoadFileHeaderOnly(path.c_str()), 0u);
    EXPECT_EQ(processor.LoadFile(path.c_str()), 0u);
    EXPECT_FALSE(ProcessorDriver::IsHeaderOnly(processor));
    ASSERT_EQ(processor.LoadFileHeaderOnly(path.c_str()), 0u);
    EXPECT_EQ(processor.LoadFile(nullptr), 769u);
    EXPECT_FALSE(ProcessorDriver::IsHeaderOnly(processor));
    EXPECT_EQ(processor.GetNumberOfCorrections(), 2u) << "they stay, without pixels";
}

TEST_F(ProcessorFiles, EntryOfNoPixelsIsActivatedWhileItsRegionIsRefused)
{
    EXPECT_EQ(processor.SetActiveCorrection("none"), 0u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "The input top [ 0 ] is out of range.");
    EXPECT_EQ(ActiveKey(processor), "none");
    unsigned short values[3] = {1, 2, 3};
    EXPECT_EQ(processor.GetCorrectionStatistics(&values[0], &values[1], &values[2]), 0u);
    EXPECT_EQ(values[0] + 10 * values[1] + 100 * values[2], 321);
}

TEST_F(ProcessorFiles, StatisticsAreThoseOfTheLoadedPixels)
{
    const std::string file = Write("other.qxb", SampleFiles::TwoCorrections().bytes);
    ASSERT_EQ(processor.LoadFile(file.c_str()), 0u);
    ASSERT_EQ(processor.SetActiveCorrection("Flat,20 C"), 0u);
    unsigned short values[3] = {};
    EXPECT_EQ(processor.GetCorrectionStatistics(&values[0], &values[1], &values[2]), 0u);
    EXPECT_EQ(values[0], 0);
    EXPECT_EQ(values[1], 65535);
    EXPECT_EQ(values[2], (65535 + 258) / 3);
}

TEST_F(ProcessorFiles, ArgumentsOfAGroupedLoadAreReplacedEvenByAFailure)
{
    std::vector<std::string> names = {"left over"};
    std::uint32_t version = 4711;
    EXPECT_EQ(processor.LoadGroupedFileFull(folder.File("missing.qxb").c_str(), names, version), 769u);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(version, 2u);
}

TEST_F(ProcessorFiles, FileIsLoadedOverItself)
{
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(processor.SaveFile(path.c_str()), 0u);
        ASSERT_EQ(processor.LoadFile(path.c_str()), 0u);
        EXPECT_EQ(ProcessorDriver::Corrections(processor), before);
    }
}

TEST_F(ProcessorFiles, PathMayBeTheObjectsOwnText)
{
    processor.LoadFile("missing.qxb");
    EXPECT_EQ(processor.LoadFile(processor.GetLastErrorMessage()), 769u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Could not open file - 'Could not open file - 'missing.qxb''");
}

TEST_F(ProcessorFiles, EveryOperationWaitsForTheObjectsLock)
{
    TBackgroundCorrectionProcessorUINT16 other;
    std::vector<std::string> names;
    std::uint32_t version = 0;
    const std::string saved = folder.File("saved.qxb");
    const std::function<void()> operations[] = {
        [&] { processor.SaveFile(saved.c_str()); },
        [&] { processor.SaveGroupedFile(saved.c_str(), {}); },
        [&] { processor.LoadFile(path.c_str()); },
        [&] { processor.LoadGroupedFileFull(path.c_str(), names, version); },
        [&] { processor.ImportCorrections(&other, false); },
        [&] { other.ImportCorrections(&processor, false); }, // takes its source's lock too
        [&] { processor.LoadFileHeaderOnly(path.c_str()); },
        [&] { processor.LoadGroupedFileHeaderOnly(path.c_str(), names, version); },
    };
    for (const std::function<void()>& operation : operations) {
        std::future<void> finished;
        {
            const VelmorUtility::TAutoVelmorCriticalSection guard(processor.Lock());
            finished = std::async(std::launch::async, operation);
            EXPECT_EQ(finished.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
        }
        EXPECT_EQ(finished.wait_for(std::chrono::seconds(10)), std::future_status::ready);
        EXPECT_TRUE(ProcessorDriver::LockIsFree(processor));
        EXPECT_TRUE(ProcessorDriver::LockIsFree(other));
    }
}

} // namespace
