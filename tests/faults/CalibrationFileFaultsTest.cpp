// Saves and loads while file operations fail.
#include "faults/FileFaults.h"
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "file/LiteralLoad.h"
#include "support/AllocationFaults.h"
#include "support/TemporaryFolder.h"

#include "boundary/TZRException.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>

using FileBytes::TBytes;

namespace {

constexpr std::uint32_t kMinusOne = 4294967295u;
constexpr char kOutOfMemory[] = "Ran out of memory in Background correction construction.\n"
                                "Try restarting the application if the problem persists.";

std::uint32_t NumberAt(const TBytes& bytes, std::size_t offset)
{
    return bytes.at(offset) + 256u * bytes.at(offset + 1) + 65536u * bytes.at(offset + 2) +
           16777216u * bytes.at(offset + 3);
}

// The text of the failure to write each byte of an intact file.
std::vector<std::string> TextsOfBytes(const TBytes& file)
{
    std::vector<std::string> texts(30, "Couldn't write Data in calibration file.");
    while (texts.size() < file.size()) {
        const std::uint32_t identifier = NumberAt(file, texts.size());
        const std::uint32_t dataLength = identifier == 62 ? 0 : NumberAt(file, texts.size() + 8);
        texts.insert(texts.end(), 4, "Couldn't write Entry ID in calibration file.");
        texts.insert(texts.end(), 4, "Couldn't write Entry Version in calibration file.");
        texts.insert(texts.end(), 4, "Couldn't write Entry Data Length in calibration file.");
        texts.insert(texts.end(), dataLength, "Couldn't read Data from calibration file."); // the reader's words
    }
    return texts;
}

class CalibrationFileFaults : public testing::TestWithParam<bool> {
protected:
    CalibrationFileFaults()
    {
        ProcessorDriver::Store(processor, sample.corrections);
        processor.SetActiveCorrection("dark");
        processor.SetActiveCorrection("nobody");
    }

    unsigned int Save()
    {
        std::remove(path.c_str()); // some file systems wait for the disk when a file is written over
        return grouped ? processor.SaveGroupedFile(path.c_str(), sample.groupingNames)
                       : processor.SaveFile(path.c_str());
    }

    // What no save changes, whatever becomes of it.
    void ExpectUntouchedBySave()
    {
        EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
        EXPECT_EQ(ProcessorDriver::Corrections(processor), sample.corrections);
        EXPECT_STREQ(processor.GetActiveCorrectionKey(), "dark");
        EXPECT_TRUE(ProcessorDriver::LockIsFree(processor));
        EXPECT_FALSE(ProcessorDriver::IsHeaderOnly(processor));
    }

    TBytes Beginning(std::size_t length) const
    {
        return TBytes(sample.bytes.begin(), sample.bytes.begin() + static_cast<std::ptrdiff_t>(length));
    }

    const bool grouped = GetParam();
    const TSampleFile sample = grouped ? SampleFiles::Grouped() : SampleFiles::TwoCorrections();
    TTemporaryFolder folder;
    std::string path = folder.File("file.qxb");
    TBackgroundCorrectionProcessorUINT16 processor;
};

TEST_P(CalibrationFileFaults, DiskFullAfterAnyByteFailsTheSaveWithTheTextOfTheItem)
{
    const std::vector<std::string> texts = TextsOfBytes(sample.bytes);
    ASSERT_EQ(texts.size(), sample.bytes.size());
    for (std::size_t limit = 0; limit < sample.bytes.size() && !HasFailure(); ++limit) {
        TFileFaults faults;
        faults.LimitDisk(limit);
        EXPECT_EQ(Save(), kMinusOne) << limit;
        EXPECT_TRUE(faults.Fired());
        EXPECT_EQ(processor.FileMessage(), texts[limit]) << limit;
        EXPECT_STREQ(processor.GetLastErrorMessage(), "Background correction key not found - 'nobody'");
        EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
        EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), Beginning(limit)), "");
    }
    ExpectUntouchedBySave();
    TFileFaults faults;
    faults.LimitDisk(sample.bytes.size());
    EXPECT_EQ(Save(), 0u);
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), sample.bytes), "");
}

TEST_P(CalibrationFileFaults, FirstFailedWriteEndsTheSave)
{
    for (const TFileFaultRepeat repeat : {TFileFaultRepeat::kOnce, TFileFaultRepeat::kFromThenOn}) {
        for (const std::size_t movedBytes : {std::size_t{0}, std::size_t{1}}) {
            for (std::uint64_t failAt = 1;; ++failAt) {
                TFileFaults faults({TFileOperation::kWrite, failAt, repeat, movedBytes});
                const unsigned int result = Save();
                if (!faults.Fired()) {
                    EXPECT_EQ(result, 0u);
                    EXPECT_GT(failAt, 20u);
                    break;
                }
                EXPECT_EQ(result, kMinusOne);
                EXPECT_EQ(faults.Count(TFileOperation::kWrite), failAt);
                ExpectUntouchedBySave();
            }
        }
    }
}

TEST_P(CalibrationFileFaults, FailedCloseFailsTheSave)
{
    const TFileFaults faults({TFileOperation::kClose, 1});
    EXPECT_EQ(Save(), kMinusOne);
    EXPECT_TRUE(faults.Fired());
    EXPECT_STRNE(processor.FileMessage(), "");
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Background correction key not found - 'nobody'");
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), sample.bytes), "");
    ExpectUntouchedBySave();
}

TEST_P(CalibrationFileFaults, FailedCloseAfterAnotherFailureLeavesTheResultAndTextOfThat)
{
    const std::vector<std::string> texts = TextsOfBytes(sample.bytes);
    for (std::size_t limit = 0; limit < sample.bytes.size(); limit += 2) {
        TFileFaults faults({TFileOperation::kClose, 1});
        faults.LimitDisk(limit);
        EXPECT_EQ(Save(), kMinusOne);
        EXPECT_EQ(processor.FileMessage(), texts[limit]) << limit;
        EXPECT_EQ(faults.Count(TFileOperation::kClose), 1u);
    }
    // The list goes while its count is written, and so before any of its entries is.
    const std::uint64_t countItself = (grouped ? 102 : 30) + 12;
    TFileFaults faults({TFileOperation::kClose, 1});
    faults.BeforeWrite([&](std::uint64_t writtenBytes) {
        if (writtenBytes == countItself) {
            processor.ClearCorrections();
        }
    });
    EXPECT_EQ(Save(), 271u);
    EXPECT_EQ(faults.Count(TFileOperation::kClose), 1u);
}

TEST_P(CalibrationFileFaults, FileThatCannotBeCreatedIs769)
{
    const TFileFaults faults({TFileOperation::kOpenForWriting, 1});
    EXPECT_EQ(Save(), 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), "Could not create file - '" + path + "'");
    EXPECT_FALSE(std::filesystem::exists(path));
    ExpectUntouchedBySave();
}

// The lock is recursive: what the system calls on this thread may change the list in the middle of a save.
TEST_P(CalibrationFileFaults, ListThatShrinksWhileItIsSavedIs271)
{
    const std::size_t endOfCount = (grouped ? 102 : 30) + 16;
    const std::size_t endOfFirst = endOfCount + 7 * 12 + 512 + 4 * 4 + 2 * sample.corrections[0].pixels.size();
    unsigned int deletions = 0;
    TFileFaults faults;
    faults.BeforeWrite([&](std::uint64_t writtenBytes) {
        if (writtenBytes > endOfCount && deletions == 0) {
            processor.SetActiveCorrection(nullptr);
            ASSERT_EQ(processor.DeleteCorrection(sample.corrections[1].key.c_str()), 0u);
            ++deletions;
        }
    });
    EXPECT_EQ(Save(), 271u);
    EXPECT_EQ(deletions, 1u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Unexpected end to list of corrections while saving.");
    EXPECT_STREQ(processor.FileMessage(), "");
    EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
    EXPECT_TRUE(ProcessorDriver::LockIsFree(processor));
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), Beginning(endOfFirst)), "");
}

TEST_P(CalibrationFileFaults, ListThatIsEmptiedWhileItsCountIsWrittenIs271)
{
    const std::size_t startOfCount = grouped ? 102 : 30;
    TFileFaults faults;
    faults.BeforeWrite([&](std::uint64_t writtenBytes) {
        if (writtenBytes >= startOfCount) {
            processor.ClearCorrections();
        }
    });
    EXPECT_EQ(Save(), 271u);
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), Beginning(startOfCount + 16)), "");
    EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
}

TEST_P(CalibrationFileFaults, FailedReadsAndSkipsLeaveWhatTheLiteralReaderLeaves)
{
    FileBytes::WriteFile(path, sample.bytes);
    TLoadOutcome before;
    before.mainText = "Background correction key not found - 'nobody'";
    before.corrections = sample.corrections;
    before.active = true;
    unsigned int comparisons = 0;
    for (const TFileOperation operation : {TFileOperation::kRead, TFileOperation::kSeek}) {
        for (const TFileFaultRepeat repeat : {TFileFaultRepeat::kOnce, TFileFaultRepeat::kFromThenOn}) {
            for (const std::size_t movedBytes : {std::size_t{0}, std::size_t{3}}) {
                for (const bool headerOnly : {false, true}) {
                    for (std::uint64_t failAt = 1;; ++failAt, ++comparisons) {
                        TBackgroundCorrectionProcessorUINT16 reader;
                        ProcessorDriver::Store(reader, sample.corrections);
                        reader.SetActiveCorrection("dark");
                        reader.SetActiveCorrection("nobody");
                        const TFileFaults faults({operation, failAt, repeat, movedBytes});
                        const TLoadKind kind = {grouped, headerOnly};
                        const TLoadOutcome outcome = ProcessorDriver::Load(reader, path.c_str(), kind);
                        EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
                        if (!faults.Fired()) {
                            EXPECT_EQ(outcome.result, 0u);
                            break;
                        }
                        Literal::TReadFaults literal;
                        const bool again = repeat == TFileFaultRepeat::kFromThenOn;
                        (operation == TFileOperation::kRead ? literal.failedRead : literal.failedSeek) = failAt;
                        (operation == TFileOperation::kRead ? literal.everyLaterReadToo : literal.everyLaterSeekToo) =
                            again;
                        literal.movedBytes = movedBytes;
                        const auto model = LoadLiterally(sample.bytes, path, kind, before, literal);
                        ASSERT_TRUE(model);
                        ASSERT_TRUE(outcome == *model)
                            << Describe(kind) << ", failed " << (operation == TFileOperation::kRead ? "read " : "seek ")
                            << failAt << (again ? " and all later" : "") << "\n library: " << Describe(outcome)
                            << "\n model: " << Describe(*model);
                    }
                }
            }
        }
    }
    EXPECT_GT(comparisons, 4u * 50);
}

TEST_P(CalibrationFileFaults, DeviceThatDiesUnderTwoThousandMillionCorrectionsIsGivenUpSoon)
{
    TBytes bytes = sample.bytes;
    FileBytes::PutNumber(bytes, (grouped ? 102 : 30) + 12, 2'000'000'000);
    FileBytes::WriteFile(path, bytes);
    const std::uint64_t firstOfCorrections = grouped ? 2 + 4 + 2 * 4 + 4 : 2 + 4;
    for (const bool headerOnly : {false, true}) {
        const TFileFaults faults({TFileOperation::kRead, firstOfCorrections + 5, TFileFaultRepeat::kFromThenOn});
        const TLoadOutcome outcome = ProcessorDriver::Load(processor, path.c_str(), {grouped, headerOnly});
        EXPECT_TRUE(faults.Fired());
        EXPECT_EQ(outcome.result, kMinusOne);
        EXPECT_EQ(outcome.fileText, "Couldn't read Entry ID from calibration file.");
        EXPECT_TRUE(outcome.corrections.empty());
        EXPECT_LT(faults.Count(TFileOperation::kRead), 100'000u);
    }
}

TEST_P(CalibrationFileFaults, SkipThatFailsIsTheUnexpectedEnd)
{
    FileBytes::WriteFile(path, sample.bytes);
    TBackgroundCorrectionProcessorUINT16 reader;
    const TFileFaults faults({TFileOperation::kSeek, 2});
    const TLoadOutcome outcome = ProcessorDriver::Load(reader, path.c_str(), {grouped, true});
    EXPECT_TRUE(faults.Fired());
    EXPECT_EQ(outcome.result, kMinusOne);
    EXPECT_EQ(outcome.fileText, "Unexpected end of calibration file.");
    EXPECT_EQ(outcome.mainText, "Error loading file - 'Unexpected end of calibration file.'");
    EXPECT_EQ(outcome.corrections.size(), 1u);
}

TEST_P(CalibrationFileFaults, RepositioningThatFailsInADamagedFileEndsWithAResultAllTheSame)
{
    TBytes bytes = sample.bytes;
    for (std::size_t offset = 30; offset < bytes.size(); offset += 97) {
        bytes[offset] = static_cast<unsigned char>(bytes[offset] + 1);
    }
    FileBytes::WriteFile(path, bytes);
    for (const bool headerOnly : {false, true}) {
        for (std::uint64_t failAt = 1; failAt < 30; ++failAt) {
            TBackgroundCorrectionProcessorUINT16 reader;
            const TFileFaults faults({TFileOperation::kSeek, failAt, TFileFaultRepeat::kFromThenOn});
            const unsigned int result = ProcessorDriver::Load(reader, path.c_str(), {grouped, headerOnly}).result;
            EXPECT_TRUE(result == 0 || result == kMinusOne || result == 4294967294u || result == 1024) << result;
            EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
            ProcessorDriver::UseEverything(reader);
        }
    }
}

TEST_P(CalibrationFileFaults, FileThatCannotBeOpenedIs769)
{
    FileBytes::WriteFile(path, sample.bytes);
    for (const bool headerOnly : {false, true}) {
        const TFileFaults faults({TFileOperation::kOpenForReading, 1});
        const TLoadOutcome outcome = ProcessorDriver::Load(processor, path.c_str(), {grouped, headerOnly});
        EXPECT_EQ(outcome.result, 769u);
        EXPECT_EQ(outcome.mainText, "Could not open file - '" + path + "'");
        EXPECT_EQ(outcome.corrections, sample.corrections);
        EXPECT_TRUE(outcome.active);
        EXPECT_EQ(outcome.headerOnly, headerOnly);
    }
}

TEST_P(CalibrationFileFaults, EveryWayOutOfALoadClosesTheStream)
{
    for (std::size_t length = 0; length <= sample.bytes.size(); length += 3) {
        FileBytes::WriteFile(path, Beginning(length));
        for (const TLoadKind kind : kEveryLoad) {
            TFileFaults faults;
            TBackgroundCorrectionProcessorUINT16 reader;
            ProcessorDriver::Load(reader, path.c_str(), kind);
            EXPECT_EQ(faults.Count(TFileOperation::kOpenForReading), 1u);
            EXPECT_EQ(faults.Count(TFileOperation::kClose), 1u);
            EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
        }
    }
}

TEST_P(CalibrationFileFaults, FailedCloseDoesNotFailALoad)
{
    FileBytes::WriteFile(path, sample.bytes);
    const TFileFaults faults({TFileOperation::kClose, 1});
    const TLoadOutcome outcome = ProcessorDriver::Load(processor, path.c_str(), {grouped, false});
    EXPECT_TRUE(faults.Fired());
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.corrections, sample.corrections);
}

TEST_P(CalibrationFileFaults, RefusedSaveOpensNothing)
{
    processor.LoadFileHeaderOnly("");
    const TFileFaults faults;
    EXPECT_EQ(Save(), 770u);
    EXPECT_EQ(faults.Count(TFileOperation::kOpenForWriting), 0u);
    EXPECT_FALSE(std::filesystem::exists(path));
}

// Memory that runs out in the copy of an entry leaves the save as an exception: the stream is closed all the same.
TEST_P(CalibrationFileFaults, SaveWithoutMemoryThrowsClosesAndUnlocks)
{
    for (const TFaultRepeat repeat : {TFaultRepeat::kOnce, TFaultRepeat::kForGood}) {
        unsigned int exceptions = 0;
        for (std::size_t failAt = 1;; ++failAt) {
            std::array<char, 600> what = {};
            unsigned int result = 4711;
            const std::size_t blocks = TAllocationFaults::LiveBlocks();
            TAllocationFaults memory(failAt, repeat);
            try {
                result = Save();
            } catch (const TZRException& error) {
                std::strncpy(what.data(), error.what(), what.size() - 1);
            }
            memory.Disarm();
            EXPECT_EQ(TAllocationFaults::LiveBlocks(), blocks);
            if (!memory.Fired()) {
                EXPECT_EQ(result, 0u);
                break;
            }
            ExpectUntouchedBySave();
            ++exceptions;
            EXPECT_EQ(result, 4711u);
            EXPECT_STREQ(what.data(), kOutOfMemory);
            const TBytes left = FileBytes::ReadFile(path);
            EXPECT_EQ(FileBytes::Difference(left, Beginning(left.size())), "");
        }
        EXPECT_EQ(exceptions, 2u) << "one copy of each correction";
    }
}

TEST_P(CalibrationFileFaults, LoadWithoutMemoryClosesAndUnlocks)
{
    FileBytes::WriteFile(path, sample.bytes);
    for (const bool headerOnly : {false, true}) {
        for (const TFaultRepeat repeat : {TFaultRepeat::kOnce, TFaultRepeat::kForGood}) {
            for (std::size_t failAt = 1;; ++failAt) {
                TBackgroundCorrectionProcessorUINT16 reader;
                std::vector<std::string> names;
                names.reserve(4);
                std::uint32_t version = 0;
                unsigned int result = 4711;
                TAllocationFaults memory(failAt, repeat);
                try {
                    if (grouped) {
                        result = reader.LoadGroupedFile(path.c_str(), names, version, headerOnly);
                    } else {
                        result = headerOnly ? reader.LoadFileHeaderOnly(path.c_str()) : reader.LoadFile(path.c_str());
                    }
                } catch (const std::bad_alloc&) {
                    EXPECT_TRUE(grouped) << "only grouping names may let this through";
                }
                memory.Disarm();
                EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
                EXPECT_TRUE(ProcessorDriver::LockIsFree(reader));
                const std::string text = reader.GetLastErrorMessage();
                if (!memory.Fired()) {
                    EXPECT_EQ(result, 0u);
                    break;
                }
                EXPECT_EQ(ProcessorDriver::IsHeaderOnly(reader), headerOnly);
                const std::vector<TStoredCorrection> loaded = ProcessorDriver::Corrections(reader);
                ASSERT_LT(loaded.size(), sample.corrections.size());
                for (std::size_t i = 0; i < loaded.size(); ++i) {
                    EXPECT_EQ(loaded[i].key, sample.corrections[i].key);
                }
                if (result == 1024) {
                    EXPECT_TRUE(text == "Memory allocation error during reading." ||
                                text == "Couldn't create new background entry - 'Ran out of memory when trying to add "
                                        "new correction.\nTry restarting the application if the problem persists.'")
                        << text;
                } else {
                    EXPECT_EQ(result, 4711u);
                }
            }
        }
    }
}

std::string NameOf(const testing::TestParamInfo<bool>& info)
{
    return info.param ? "Version2" : "Version1";
}

INSTANTIATE_TEST_SUITE_P(Files, CalibrationFileFaults, testing::Bool(), NameOf);

} // namespace
