// Files that are made to hurt: endless counts, circles, claims of more than there is, sizes that wrap.
#include "file/LiteralLoad.h"
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "support/AllocationFaults.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>

using FileBytes::Hex;
using FileBytes::Join;
using FileBytes::Number;
using FileBytes::TBytes;

namespace {

constexpr std::uint32_t kTwoThousandMillion = 2'000'000'000;

class HostileFiles : public testing::Test {
protected:
    // Loads with the library, which has to answer at once.
    TLoadOutcome Load(const TBytes& bytes, TLoadKind kind)
    {
        FileBytes::WriteFile(path, bytes);
        TBackgroundCorrectionProcessorUINT16 processor;
        const auto start = std::chrono::steady_clock::now();
        const TLoadOutcome outcome = ProcessorDriver::Load(processor, path.c_str(), kind);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        EXPECT_LT(seconds.count(), 10.0) << Describe(kind);
        return outcome;
    }

    void ExpectAsModel(const TLoadOutcome& actual, const TBytes& bytes, TLoadKind kind)
    {
        const auto model = LoadLiterally(bytes, path, kind, {});
        ASSERT_TRUE(model);
        EXPECT_TRUE(actual == *model) << Describe(kind) << "\n library: " << Describe(actual)
                                      << "\n model: " << Describe(*model);
    }

    TTemporaryFolder folder;
    std::string path = folder.File("hostile.qxb");
};

TEST_F(HostileFiles, CountOfTwoThousandMillionOnATruncatedFileAnswersAtOnce)
{
    const TBytes correction = SampleFiles::Correction("only", 2, 1, 1.0f, 1.0f, Hex("01 00 02 00"));
    const TBytes whole = Join({SampleFiles::Beginning(kTwoThousandMillion), correction});
    for (const std::size_t length :
         {std::size_t{46}, std::size_t{50}, std::size_t{58}, std::size_t{300}, whole.size() - 1, whole.size()}) {
        const TBytes bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        for (const TLoadKind kind : kEveryLoad) {
            const TLoadOutcome outcome = Load(bytes, kind);
            EXPECT_EQ(outcome.result, 4294967295u);
            EXPECT_EQ(outcome.fileText, "Couldn't read Entry ID from calibration file.");
            EXPECT_EQ(outcome.mainText, "Error loading file - 'Couldn't read Entry ID from calibration file.'");
            ExpectAsModel(outcome, bytes, kind);
        }
    }
}

TEST_F(HostileFiles, NegativeCountReadsNothing)
{
    for (const std::uint32_t count : {0x80000000u, 0xFFFFFFFFu}) {
        const TBytes bytes =
            Join({SampleFiles::Beginning(count), SampleFiles::Correction("never", 1, 1, 1.0f, 1.0f, Hex("01 00"))});
        const TLoadOutcome outcome = Load(bytes, {false, false});
        EXPECT_EQ(outcome.result, 0u);
        EXPECT_TRUE(outcome.corrections.empty());
        EXPECT_EQ(outcome.mainText + outcome.fileText, "");
    }
}

// Records that send the reader from one to the next in a circle. The model runs out a count that is smaller by whole
// circles.
TEST_F(HostileFiles, CircleOfTwoThousandMillionEndsWhereRunningItOutWould)
{
    for (std::uint32_t circle = 1; circle <= 5; ++circle) {
        for (const std::uint32_t tail : {0u, 1u, 3u}) {
            for (std::uint32_t extra = 0; extra <= circle; ++extra) {
                const std::uint32_t count = kTwoThousandMillion + extra;
                TBytes records;
                const std::uint32_t start = 46;
                for (std::uint32_t i = 0; i < tail + circle; ++i) {
                    const std::uint32_t next = i + 1 < tail + circle ? i + 1 : tail;
                    records = Join({records, Number(60), Number(1), Number(start + 12 * next)});
                }
                for (const bool headerOnly : {false, true}) {
                    const TLoadKind kind = {false, headerOnly};
                    const TLoadOutcome outcome = Load(Join({SampleFiles::Beginning(count), records}), kind);
                    const std::uint32_t fewer = 1000 - 1000 % circle + count % circle;
                    EXPECT_EQ(fewer % circle, count % circle);
                    ExpectAsModel(outcome, Join({SampleFiles::Beginning(fewer), records}), kind);
                    EXPECT_EQ(outcome.result, 4294967294u);
                }
            }
        }
    }
}

// A way round that comes upon a correction is no circle: the second time its key is taken.
TEST_F(HostileFiles, WayRoundThroughACorrectionEndsWhenItsKeyIsTaken)
{
    const TBytes correction = SampleFiles::Correction("met twice", 1, 1, 1.0f, 1.0f, Hex("01 00"));
    const std::uint32_t start = 46 + 12;
    const std::uint32_t end = start + static_cast<std::uint32_t>(correction.size());
    for (const std::uint32_t count : {5u, 1000u, kTwoThousandMillion, kTwoThousandMillion + 1}) {
        const TBytes bytes = Join({SampleFiles::Beginning(count), Number(60), Number(1), Number(end), correction,
                                   Number(60), Number(1), Number(start)});
        for (const TLoadKind kind : kEveryLoad) {
            const TLoadOutcome outcome = Load(bytes, kind);
            EXPECT_EQ(outcome.result, 1024u);
            EXPECT_EQ(outcome.corrections.size(), 1u);
            ExpectAsModel(outcome, bytes, kind);
        }
    }
}

TEST_F(HostileFiles, LongWayThroughALargeFileIsFollowedQuickly)
{
    // 20,000 records, each of which leads to one far away; the last leads back to the first.
    const std::uint32_t records = 20'000;
    TBytes bytes = Join({SampleFiles::Beginning(kTwoThousandMillion), FileBytes::Zeros(12 * records)});
    for (std::uint32_t i = 0; i < records; ++i) {
        const std::uint32_t next = (i + 15'013) % records; // visits every one: 15,013 and 20,000 share no divisor
        FileBytes::PutNumber(bytes, 46 + 12 * i, 60);
        FileBytes::PutNumber(bytes, 46 + 12 * i + 8, 46 + 12 * next);
    }
    const TLoadOutcome outcome = Load(bytes, {false, false});
    EXPECT_EQ(outcome.result, 4294967294u);
    EXPECT_EQ(outcome.mainText, "Error loading file - 'Calibration file contains invalid data.'");
}

TEST_F(HostileFiles, GroupingNamesAreFollowedUpTo65536EvenInACircle)
{
    // The second name's record leads back to the first one's data, behind which it stands itself. After the last name
    // the count is read from there too: a negative one.
    const TBytes name = Hex("FF FF FF FF  4E 61 6D 65  00 00 00 00  00 00 00 00");
    const auto file = [&](std::uint32_t count) {
        return Join({FileBytes::Padded("Background Correction File", 26), Number(2), Number(69), Number(2), Number(4),
                     Number(count), Number(70), Number(2), Number(16), name, Number(70), Number(2), Number(58)});
    };
    for (const bool headerOnly : {false, true}) {
        const TLoadKind kind = {true, headerOnly};
        const TLoadOutcome most = Load(file(65536), kind);
        EXPECT_EQ(most.result, 0u);
        EXPECT_EQ(most.groupingNames, std::vector<std::string>(65536, "\xFF\xFF\xFF\xFFName"));
        ExpectAsModel(most, file(65536), kind);
        for (const std::uint32_t count : {65537u, kTwoThousandMillion, 0xFFFFFFFFu}) {
            const TLoadOutcome tooMany = Load(file(count), kind);
            EXPECT_EQ(tooMany.result, 4294967295u);
            EXPECT_TRUE(tooMany.groupingNames.empty());
            EXPECT_EQ(tooMany.fileText, "Couldn't read Data from calibration file.");
            ExpectAsModel(tooMany, file(count), kind);
        }
    }
}

TEST_F(HostileFiles, ClaimOfMorePixelsThanTheFileHoldsIsFoundBeforeMemoryIsAskedFor)
{
    TBytes bytes = Join({SampleFiles::Beginning(kTwoThousandMillion),
                         SampleFiles::Correction("small", 2, 1, 1.0f, 1.0f, Hex("01 00 02 00")),
                         SampleFiles::Correction("claims", 30'000, 30'000, 1.0f, 1.0f, Hex("01 00 02 00"))});
    const std::size_t lengthOfPixels = bytes.size() - 8;
    // The claim stands as it is, or its record leads to the end of the file, or far beyond it.
    for (const std::uint32_t length : {2u * 30'000 * 30'000, static_cast<std::uint32_t>(bytes.size()), 0xFFFFFFF0u}) {
        FileBytes::PutNumber(bytes, lengthOfPixels, length);
        FileBytes::WriteFile(path, bytes);
        std::size_t allocations = 0;
        for (;; ++allocations) {
            TBackgroundCorrectionProcessorUINT16 processor;
            TAllocationFaults faults(allocations + 1);
            processor.LoadFile(path.c_str());
            faults.Disarm();
            if (!faults.Fired()) {
                break;
            }
            EXPECT_LE(faults.FailedSize(), bytes.size()) << "allocation " << allocations + 1;
        }
        EXPECT_GT(allocations, 0u);

        const TLoadOutcome outcome = Load(bytes, {false, false});
        EXPECT_EQ(outcome.result, 4294967295u);
        EXPECT_EQ(outcome.corrections.size(), 1u);
        ExpectAsModel(outcome, bytes, {false, false});
    }
}

TEST_F(HostileFiles, GroupingCountAsksForNoMemoryByItself)
{
    TBytes bytes = SampleFiles::GroupedEmptyList().bytes;
    FileBytes::PutNumber(bytes, 30 + 12, 65536);
    FileBytes::WriteFile(path, bytes);
    for (std::size_t failAt = 1;; ++failAt) {
        TBackgroundCorrectionProcessorUINT16 processor;
        std::vector<std::string> names;
        std::uint32_t version = 0;
        TAllocationFaults faults(failAt);
        try {
            processor.LoadGroupedFileFull(path.c_str(), names, version);
        } catch (const std::bad_alloc&) {
        }
        faults.Disarm();
        if (!faults.Fired()) {
            break;
        }
        EXPECT_LE(faults.FailedSize(), bytes.size());
    }
}

struct TSize {
    std::uint32_t width;
    std::uint32_t height;
};

// Products beyond 31 bits, beyond 32 bits, and such that 32 bits leave a small or no remainder of them.
constexpr TSize kWrappingSizes[] = {{65536, 65536},
                                    {65536, 65537},
                                    {65537, 65536},
                                    {65536, 32768},
                                    {0x80000000u, 1},
                                    {1, 0x80000000u},
                                    {0x80000000u, 2},
                                    {0xFFFFFFFFu, 1},
                                    {1, 0xFFFFFFFFu},
                                    {0xFFFFFFFFu, 2},
                                    {0xFFFFFFFFu, 0xFFFFFFFFu},
                                    {46341, 46341},
                                    {0x40000000u, 4},
                                    {0x40000001u, 4},
                                    {3, 0x55555556u}};

TEST_F(HostileFiles, SizeThatIsNoPositive32BitNumberFailsAsMemory)
{
    for (const TSize size : kWrappingSizes) {
        // As many pixels as 32 bits leave of the product, where that is a number to write down.
        const std::uint32_t wrapped = 2 * size.width * size.height;
        const TBytes pixels = FileBytes::Zeros(wrapped < 1'000'000 ? wrapped : 100);
        const TBytes bytes =
            Join({SampleFiles::Beginning(2), SampleFiles::Correction("good", 1, 1, 1.0f, 1.0f, Hex("01 00")),
                  SampleFiles::Correction("wraps", size.width, size.height, 1.0f, 1.0f, pixels)});
        for (const bool grouped : {false, true}) {
            const TLoadOutcome outcome = Load(bytes, {grouped, false});
            EXPECT_EQ(outcome.result, 1024u) << size.width << " x " << size.height;
            EXPECT_EQ(outcome.mainText, "Memory allocation error during reading.");
            EXPECT_EQ(outcome.corrections.size(), 1u);
            ExpectAsModel(outcome, bytes, {grouped, false});
        }
        const TLoadOutcome headerOnly = Load(bytes, {false, true});
        EXPECT_EQ(headerOnly.result, 0u);
        EXPECT_EQ(headerOnly.corrections.size(), 2u);
        ExpectAsModel(headerOnly, bytes, {false, true});
    }
}

// What a header-only load let through comes into a full processor by import, or stays when a failed full load ends the
// mode. Nothing that can be done with it then may leave the buffers; it has no pixels, so it cannot be saved.
TEST_F(HostileFiles, SizesThatWrapHarmNoLaterOperation)
{
    for (const TSize size : kWrappingSizes) {
        SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
        FileBytes::WriteFile(path, Join({SampleFiles::Beginning(1),
                                         SampleFiles::Correction("wraps", size.width, size.height, 1.0f, 1.0f, {})}));
        TBackgroundCorrectionProcessorUINT16 source;
        ASSERT_EQ(source.LoadFileHeaderOnly(path.c_str()), 0u);
        ProcessorDriver::UseEverything(source);

        TBackgroundCorrectionProcessorUINT16 imported;
        ASSERT_EQ(imported.ImportCorrections(&source, false), 0u);
        ASSERT_EQ(source.LoadFile(folder.File("missing").c_str()), 769u);
        for (TBackgroundCorrectionProcessorUINT16* const processor : {&imported, &source}) {
            ASSERT_FALSE(ProcessorDriver::IsHeaderOnly(*processor));
            ASSERT_EQ(processor->GetNumberOfCorrections(), 1u);
            EXPECT_EQ(processor->SetActiveCorrection("WRAPS"), 0u);
            ProcessorDriver::UseEverything(*processor);
            const int edges[] = {-1, 0, 1, 65535, 65536, 65537, 0x3FFFFFFF, 0x7FFFFFFE, 0x7FFFFFFF};
            for (const int left : edges) {
                for (const int width : edges) {
                    if (std::int64_t{width} <= 100'000) {
                        processor->SetRegion(left, 0, width, 1);
                        processor->SetRegion(0, left, 1, width);
                    } else {
                        processor->SetRegion(left, 0, width, width);
                    }
                    processor->SetCorrectionLevel(50);
                    unsigned short values[3] = {11, 22, 33};
                    EXPECT_EQ(processor->GetCorrectionStatistics(&values[0], &values[1], &values[2]), 0u);
                    EXPECT_EQ(values[0], 11);
                    processor->GetScaledCorrectionStatistics(&values[0], &values[1], &values[2]);
                    unsigned short image[4] = {1, 2, 3, 4};
                    processor->ApplyCorrection(image, 4, nullptr, 0, nullptr, false, false, false);
                    processor->ApplyCorrection(image, 0, image, 0, nullptr, false, false, false);
                }
            }
            const std::string saved = folder.File("saved.qxb");
            EXPECT_EQ(processor->SaveFile(saved.c_str()), 4294967295u);
            EXPECT_STREQ(processor->FileMessage(), "Couldn't read Data from calibration file.");
            TBackgroundCorrectionProcessorUINT16 again;
            EXPECT_EQ(again.ImportCorrections(processor, true), 0u);
            EXPECT_EQ(again.ImportCorrections(&again, true), 0u);
            EXPECT_EQ(processor->SetActiveCorrection(nullptr), 0u);
            EXPECT_EQ(processor->DeleteCorrection("wraps"), 0u);
        }
    }
}

// A correction without columns or rows has no pixels to be missed: its file is whole.
TEST_F(HostileFiles, ImportedCorrectionsOfNoSizeAreSavedAndListed)
{
    for (const TSize size : {TSize{0, 5}, TSize{5, 0}, TSize{0, 0}}) {
        SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
        const TBytes bytes = Join(
            {SampleFiles::Beginning(1), SampleFiles::Correction("empty", size.width, size.height, 1.0f, 1.0f, {})});
        FileBytes::WriteFile(path, bytes);
        TBackgroundCorrectionProcessorUINT16 source;
        ASSERT_EQ(source.LoadFileHeaderOnly(path.c_str()), 0u);
        TBackgroundCorrectionProcessorUINT16 imported;
        ASSERT_EQ(imported.ImportCorrections(&source, false), 0u);
        const std::string saved = folder.File("saved.qxb");
        EXPECT_EQ(imported.SaveFile(saved.c_str()), 0u);
        EXPECT_EQ(FileBytes::ReadFile(saved), bytes);
    }
}

} // namespace
