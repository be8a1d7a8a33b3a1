// Every failure of saving and loading that a test can bring about with files alone: code, text, and where the text is.
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

using FileBytes::Hex;
using FileBytes::Join;
using FileBytes::Number;
using FileBytes::PutNumber;
using FileBytes::TBytes;

namespace {

using ProcessorDriver::kMinusOne;
constexpr std::uint32_t kMinusTwo = 4294967294u;
constexpr char kOneCorrectionPixels[] = "01 00 02 00";
// Offsets in a file that begins with SampleFiles::Beginning and holds corrections of 2 x 1 pixels.
constexpr std::size_t kFirst = 46;           // record 62
constexpr std::size_t kKeyRecord = 12;       // from record 62
constexpr std::size_t kWidthRecord = 536;    // likewise
constexpr std::size_t kHeightRecord = 552;   // likewise
constexpr std::size_t kExposureRecord = 568; // likewise
constexpr std::size_t kPixelsRecord = 600;   // likewise
constexpr std::size_t kCorrectionLength = 616;

TBytes Correction(const std::string& key, float exposureSeconds = 1.0f, float intensityPercent = 1.0f)
{
    return SampleFiles::Correction(key, 2, 1, exposureSeconds, intensityPercent, Hex(kOneCorrectionPixels));
}

class FileFailures : public testing::Test {
protected:
    TLoadOutcome Load(const TBytes& bytes, TLoadKind kind = {false, false})
    {
        FileBytes::WriteFile(path, bytes);
        return ProcessorDriver::Load(processor, path.c_str(), kind);
    }

    TTemporaryFolder folder;
    std::string path = folder.File("file.qxb");
    TBackgroundCorrectionProcessorUINT16 processor;
};

// --- Saving

TEST_F(FileFailures, SaveToAMissingFolderIs769)
{
    const std::string missing = folder.File("missing/file.qxb");
    EXPECT_EQ(processor.SaveFile(missing.c_str()), 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), "Could not create file - '" + missing + "'");
    EXPECT_EQ(processor.SaveGroupedFile(missing.c_str(), {}), 769u);
    EXPECT_STREQ(processor.FileMessage(), "");
}

TEST_F(FileFailures, SaveToAFolderIs769)
{
    EXPECT_EQ(processor.SaveFile(folder.Path().c_str()), 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), "Could not create file - '" + folder.Path() + "'");
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path()));
}

TEST_F(FileFailures, SaveToNullOrNothingIs769)
{
    EXPECT_EQ(processor.SaveFile(nullptr), 769u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Could not create file - '(null)'");
    EXPECT_EQ(processor.SaveFile(""), 769u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Could not create file - ''");
    EXPECT_EQ(processor.SaveGroupedFile(nullptr, {}), 769u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Could not create file - '(null)'");
}

TEST_F(FileFailures, SaveInHeaderOnlyModeIs770AndCreatesNothing)
{
    processor.LoadFileHeaderOnly(nullptr);
    const char* const text = "This file has been opened in header only mode. Cannot modify or apply corrections.";
    EXPECT_EQ(processor.SaveFile(path.c_str()), 770u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), text);
    processor.SetActiveCorrection("nobody");
    EXPECT_EQ(processor.SaveGroupedFile(path.c_str(), {"A"}), 770u);
    EXPECT_STREQ(processor.GetLastErrorMessage(), text);
    EXPECT_EQ(processor.SaveFile(nullptr), 770u); // the mode is looked at first
    EXPECT_FALSE(std::filesystem::exists(path));
    processor.ClearCorrections();
    EXPECT_EQ(processor.SaveFile(path.c_str()), 0u);
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), SampleFiles::EmptyList().bytes), "");
}

TEST_F(FileFailures, SaveOfAnEntryWithoutPixelsEndsAtItsData)
{
    const TSampleFile sample = SampleFiles::TwoCorrections();
    ProcessorDriver::Store(processor, sample.corrections[0]);
    TStoredCorrection bare = sample.corrections[1];
    bare.pixels.clear();
    ProcessorDriver::Store(processor, bare);
    processor.SetActiveCorrection("nobody");
    EXPECT_EQ(processor.SaveFile(path.c_str()), 4294967295u);
    EXPECT_STREQ(processor.FileMessage(), "Couldn't read Data from calibration file.");
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Background correction key not found - 'nobody'");
    TBytes written = sample.bytes;
    written.resize(written.size() - 6); // all but the pixels of the second
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), written), "");
}

TEST_F(FileFailures, LongPathIsCutInTheText)
{
    const std::string missing = folder.File("missing/" + std::string(300, 'x'));
    EXPECT_EQ(processor.SaveFile(missing.c_str()), 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), ("Could not create file - '" + missing).substr(0, 256));
    EXPECT_EQ(processor.LoadFile(missing.c_str()), 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), ("Could not open file - '" + missing).substr(0, 256));
}

// --- Opening

TEST_F(FileFailures, LoadOfWhatIsNoFileIs769)
{
    const std::string missing = folder.File("missing.qxb");
    for (const TLoadKind kind : kEveryLoad) {
        const std::string paths[] = {missing, folder.Path(), ""};
        for (const std::string& wrong : paths) {
            const TLoadOutcome outcome = ProcessorDriver::Load(processor, wrong.c_str(), kind);
            EXPECT_EQ(outcome.result, 769u) << Describe(kind) << ' ' << wrong;
            EXPECT_EQ(outcome.mainText, "Could not open file - '" + wrong + "'");
            EXPECT_EQ(outcome.fileText, "");
            EXPECT_EQ(outcome.headerOnly, kind.headerOnly);
        }
        const TLoadOutcome outcome = ProcessorDriver::Load(processor, nullptr, kind);
        EXPECT_EQ(outcome.result, 769u);
        EXPECT_EQ(outcome.mainText, "Could not open file - '(null)'");
        EXPECT_EQ(outcome.headerOnly, kind.headerOnly);
    }
}

TEST_F(FileFailures, AnotherSignatureIs769)
{
    for (const std::size_t offset : {std::size_t{0}, std::size_t{25}}) {
        TBytes bytes = SampleFiles::EmptyList().bytes;
        bytes[offset] = static_cast<unsigned char>(bytes[offset] ^ 0x20); // letter case counts
        for (const TLoadKind kind : kEveryLoad) {
            const TLoadOutcome outcome = Load(bytes, kind);
            EXPECT_EQ(outcome.result, 769u);
            EXPECT_EQ(outcome.mainText, "Could not load file - '" + path + "'\nHeader not correct.");
            EXPECT_EQ(outcome.fileText, "");
        }
    }
}

TEST_F(FileFailures, FileThatEndsBeforeItsVersionIsShort)
{
    processor.SetActiveCorrection("nobody");
    for (const std::size_t length : {0u, 25u, 26u, 29u}) {
        for (const TLoadKind kind : kEveryLoad) {
            TBytes bytes = SampleFiles::EmptyList().bytes;
            bytes.resize(length);
            processor.SetActiveCorrection("nobody");
            const TLoadOutcome outcome = Load(bytes, kind);
            EXPECT_EQ(outcome.result, 4294967295u);
            EXPECT_EQ(outcome.fileText, "Couldn't read Data from calibration file.");
            EXPECT_EQ(outcome.mainText, "Background correction key not found - 'nobody'");
        }
    }
}

TEST_F(FileFailures, AnotherStructureVersionIs772WithTheFilesVersionInTheText)
{
    struct TCase {
        std::uint32_t version;
        const char* text;
    };
    for (const TCase& test :
         {TCase{0, "0"}, TCase{2, "2"}, TCase{3, "3"}, TCase{256, "256"}, TCase{0x7FFFFFFF, "2147483647"},
          TCase{0x80000000, "-2147483648"}, TCase{0xFFFFFFFF, "-1"}}) {
        TBytes bytes = SampleFiles::OneCorrection().bytes;
        PutNumber(bytes, 26, test.version);
        for (const TLoadKind kind : kEveryLoad) {
            if (kind.grouped && test.version == 2) {
                continue;
            }
            const TLoadOutcome outcome = Load(bytes, kind);
            EXPECT_EQ(outcome.result, 772u);
            EXPECT_EQ(outcome.mainText,
                      "Could not load file - '" + path + "'\nStructure version not correct [ " + test.text + " ].");
            EXPECT_EQ(outcome.fileText, "");
            EXPECT_TRUE(outcome.corrections.empty());
            EXPECT_TRUE(outcome.groupingNames.empty());
            if (kind.grouped) {
                EXPECT_EQ(outcome.structureVersion, test.version);
            }
        }
    }
}

TEST_F(FileFailures, GroupedLoadTakesAnUngroupedFileAndSaysItsVersion)
{
    const TLoadOutcome outcome = Load(SampleFiles::TwoCorrections().bytes, {true, false});
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.structureVersion, 1u);
    EXPECT_TRUE(outcome.groupingNames.empty());
    EXPECT_EQ(outcome.corrections, SampleFiles::TwoCorrections().corrections);
    EXPECT_EQ(outcome.mainText, "Could not load file - '" + path + "'\nStructure version not correct [ 1 ].");
}

TEST_F(FileFailures, UngroupedLoadRefusesAGroupedFile)
{
    ASSERT_EQ(processor.SaveGroupedFile(path.c_str(), {"A"}), 0u);
    EXPECT_EQ(processor.LoadFile(path.c_str()), 772u);
    EXPECT_EQ(processor.GetLastErrorMessage(),
              "Could not load file - '" + path + "'\nStructure version not correct [ 2 ].");
}

// --- Records that are not what they should be

TEST_F(FileFailures, RecordOfTheWrongLengthSendsTheReaderToThatOffset)
{
    // The width's record claims 8 bytes: reading goes on at offset 8 of the file, with the signature's "nd C" as width
    // and its following letters as the next record, whose length leads out of the file.
    TBytes bytes = Join({SampleFiles::Beginning(1), Correction("strayed")});
    PutNumber(bytes, kFirst + kWidthRecord + 8, 8);
    const TLoadOutcome outcome = Load(bytes);
    EXPECT_EQ(outcome.result, kMinusOne);
    EXPECT_TRUE(outcome.corrections.empty());
    EXPECT_EQ(outcome.fileText, "Couldn't read Data from calibration file.");
    EXPECT_EQ(outcome.mainText, "Error loading file - 'Couldn't read Data from calibration file.'");
}

// Every record but the opening one may be wrong without harm, as long as its length names the offset of its data.
TEST_F(FileFailures, WrongRecordWhoseLengthIsTheOffsetOfItsDataIsReadAllTheSame)
{
    const TBytes intact = Join({SampleFiles::Beginning(1), Correction("kept")});
    const std::size_t records[] = {30,
                                   kFirst + kKeyRecord,
                                   kFirst + kWidthRecord,
                                   kFirst + kHeightRecord,
                                   kFirst + kExposureRecord,
                                   kFirst + kExposureRecord + 16,
                                   kFirst + kPixelsRecord};
    for (const std::size_t record : records) {
        for (const std::size_t field : {std::size_t{0}, std::size_t{4}, std::size_t{8}}) {
            TBytes bytes = intact;
            PutNumber(bytes, record + field, 99); // identifier, version, or nothing more than the length
            PutNumber(bytes, record + 8, static_cast<std::uint32_t>(record + 12));
            TBackgroundCorrectionProcessorUINT16 fresh;
            FileBytes::WriteFile(path, bytes);
            const TLoadOutcome outcome = ProcessorDriver::Load(fresh, path.c_str(), {false, false});
            EXPECT_EQ(outcome.result, 0u) << record << ' ' << field;
            ASSERT_EQ(outcome.corrections.size(), 1u) << record << ' ' << field;
            EXPECT_EQ(outcome.corrections[0].pixels, (std::vector<std::uint16_t>{1, 2}));
            EXPECT_EQ(outcome.fileText, "Calibration file contains invalid data.");
            EXPECT_EQ(outcome.mainText, "");
        }
    }
}

TEST_F(FileFailures, LengthOfTheOpeningRecordDoesNotMatter)
{
    for (const std::uint32_t length : {0u, 600u, 604u, 0xFFFFFFFFu}) {
        TBytes bytes = Join({SampleFiles::Beginning(1), Correction("opened")});
        PutNumber(bytes, kFirst + 8, length);
        const TLoadOutcome outcome = Load(bytes);
        EXPECT_EQ(outcome.result, 0u);
        EXPECT_EQ(outcome.corrections.size(), 1u);
        EXPECT_EQ(outcome.fileText + outcome.mainText, "");
    }
}

TEST_F(FileFailures, WrongOpeningRecordSkipsOneCorrection)
{
    // The first opening is wrong and leads to the second: that one is loaded, and its success is the result.
    TBytes bytes = Join({SampleFiles::Beginning(2), Correction("first"), Correction("second")});
    PutNumber(bytes, kFirst + 4, 2);
    PutNumber(bytes, kFirst + 8, kFirst + kCorrectionLength);
    for (const TLoadKind kind : kEveryLoad) {
        const TLoadOutcome outcome = Load(bytes, kind);
        EXPECT_EQ(outcome.result, 0u);
        ASSERT_EQ(outcome.corrections.size(), 1u);
        EXPECT_EQ(outcome.corrections[0].key, "second");
        EXPECT_EQ(outcome.fileText, "Calibration file contains invalid data.");
        EXPECT_EQ(outcome.mainText, "Error loading file - 'Calibration file contains invalid data.'");
    }
}

TEST_F(FileFailures, WrongLastOpeningRecordIsTheResultMinusTwo)
{
    TBytes bytes = Join({SampleFiles::Beginning(2), Correction("first"), Correction("second")});
    PutNumber(bytes, kFirst + kCorrectionLength, 64);
    for (const TLoadKind kind : kEveryLoad) {
        const TLoadOutcome outcome = Load(bytes, kind);
        EXPECT_EQ(outcome.result, kMinusTwo);
        EXPECT_EQ(outcome.result, 4294967294u);
        EXPECT_EQ(outcome.corrections.size(), 1u);
        EXPECT_EQ(outcome.mainText, "Error loading file - 'Calibration file contains invalid data.'");
    }
}

TEST_F(FileFailures, EveryLaterCorrectionFailsTooOnceTheFileHasEnded)
{
    TBytes bytes = Join({SampleFiles::Beginning(3), Correction("first"), Correction("second")});
    bytes.resize(bytes.size() - 1);
    const TLoadOutcome full = Load(bytes);
    EXPECT_EQ(full.result, kMinusOne);
    EXPECT_EQ(full.corrections.size(), 1u);
    EXPECT_EQ(full.fileText, "Couldn't read Entry ID from calibration file.");
    const TLoadOutcome headerOnly = Load(bytes, {false, true});
    EXPECT_EQ(headerOnly.corrections.size(), 2u) << "moving beyond the end is no failure";
    EXPECT_EQ(headerOnly.result, kMinusOne);
}

TEST_F(FileFailures, HeaderOnlyLoadDoesNotMissPixelsThatAreCutOff)
{
    TBytes bytes = Join({SampleFiles::Beginning(1), Correction("cut")});
    bytes.resize(bytes.size() - 4);
    EXPECT_EQ(Load(bytes, {false, true}).result, 0u);
    const TLoadOutcome full = Load(bytes);
    EXPECT_EQ(full.result, kMinusOne);
    EXPECT_EQ(full.fileText, "Couldn't read Data from calibration file.");
}

TEST_F(FileFailures, EveryPartOfARecordHasItsOwnText)
{
    const TBytes whole = Join({SampleFiles::Beginning(1), Correction("text")});
    struct TCase {
        std::size_t length;
        const char* text;
    };
    for (const TCase& test : {TCase{3, "Couldn't read Entry ID from calibration file."},
                              TCase{7, "Couldn't read Entry Version from calibration file."},
                              TCase{11, "Couldn't read Entry Data Length from calibration file."},
                              TCase{12, "Couldn't read Entry ID from calibration file."},
                              TCase{24, "Couldn't read Data from calibration file."},
                              TCase{kWidthRecord + 13, "Couldn't read Data from calibration file."}}) {
        TBytes bytes = whole;
        bytes.resize(kFirst + test.length);
        const TLoadOutcome outcome = Load(bytes);
        EXPECT_EQ(outcome.result, kMinusOne);
        EXPECT_EQ(outcome.fileText, test.text);
        EXPECT_EQ(outcome.mainText, std::string("Error loading file - '") + test.text + "'");
    }
}

TEST_F(FileFailures, ShortGroupingSectionEmptiesTheNamesAndLeavesTheCorrections)
{
    const TBytes whole = SampleFiles::Grouped().bytes;
    const std::size_t endOfNames = 26 + 4 + 16 + 2 * 28;
    for (std::size_t length = 30; length < endOfNames; ++length) {
        TBackgroundCorrectionProcessorUINT16 fresh;
        ProcessorDriver::Store(fresh, {{"before", 1, 1, 0x3F800000, 0x3F800000, {7}}});
        TBytes bytes = whole;
        bytes.resize(length);
        FileBytes::WriteFile(path, bytes);
        const TLoadOutcome outcome = ProcessorDriver::Load(fresh, path.c_str(), {true, false});
        EXPECT_EQ(outcome.result, kMinusOne);
        EXPECT_TRUE(outcome.groupingNames.empty());
        EXPECT_EQ(outcome.corrections.size(), 1u);
        EXPECT_EQ(outcome.mainText, "");
        EXPECT_EQ(outcome.structureVersion, 2u);
    }
}

// --- Entries that are refused

TEST_F(FileFailures, KeyThatDiffersInCaseOnlyIs1024AndTheFirstStays)
{
    const TBytes bytes =
        Join({SampleFiles::Beginning(3), Correction("Dark"), Correction("dARK"), Correction("never read")});
    for (const TLoadKind kind : kEveryLoad) {
        const TLoadOutcome outcome = Load(bytes, kind);
        EXPECT_EQ(outcome.result, 1024u);
        EXPECT_EQ(outcome.mainText, "Couldn't create new background entry - 'Supplied Key is not unique - 'dARK''");
        ASSERT_EQ(outcome.corrections.size(), 1u);
        EXPECT_EQ(outcome.corrections[0].key, "Dark");
        EXPECT_EQ(outcome.fileText, "");
    }
}

TEST_F(FileFailures, OnlyAsciiLettersLoseTheirCase)
{
    const TLoadOutcome outcome = Load(Join({SampleFiles::Beginning(2), Correction("\xC4"), Correction("\xE4")}));
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.corrections.size(), 2u);
}

TEST_F(FileFailures, LongRefusedKeyIsCutInTheText)
{
    const std::string key(512, 'K');
    const TLoadOutcome outcome = Load(Join({SampleFiles::Beginning(2), Correction(key), Correction(key)}));
    EXPECT_EQ(outcome.result, 1024u);
    EXPECT_EQ(outcome.mainText,
              ("Couldn't create new background entry - 'Supplied Key is not unique - '" + key).substr(0, 256));
}

TEST_F(FileFailures, EmptyKeyIs1024)
{
    const TLoadOutcome outcome = Load(Join({SampleFiles::Beginning(1), Correction("")}));
    EXPECT_EQ(outcome.result, 1024u);
    EXPECT_EQ(outcome.mainText, "Couldn't create new background entry - 'The key is not valid - ''.'");
}

TEST_F(FileFailures, ZeroProductIs1024)
{
    TLoadOutcome outcome = Load(Join({SampleFiles::Beginning(1), Correction("zero", 0.5f, 0.0f)}));
    EXPECT_EQ(outcome.result, 1024u);
    EXPECT_EQ(outcome.mainText, "Couldn't create new background entry - 'Reference exposure and light intensity "
                                "product is zero [ 0.500000 ] * [ 0.000000 ].'");
    outcome = Load(Join({SampleFiles::Beginning(1), Correction("tiny", 1e-30f, 1e-30f)}), {true, true});
    EXPECT_EQ(outcome.result, 1024u);
    EXPECT_EQ(outcome.mainText, "Couldn't create new background entry - 'Reference exposure and light intensity "
                                "product is zero [ 0.000000 ] * [ 0.000000 ].'");
    outcome = Load(Join({SampleFiles::Beginning(1), Correction("negative", -2.0f, -3.0f)}));
    EXPECT_EQ(outcome.result, 0u) << "only zero is refused";
}

TEST_F(FileFailures, SuccessLeavesEarlierTexts)
{
    TBytes bytes = SampleFiles::OneCorrection().bytes;
    bytes.resize(100);
    Load(bytes);
    const TLoadOutcome outcome = Load(SampleFiles::OneCorrection().bytes);
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.fileText, "Couldn't read Data from calibration file.");
    EXPECT_EQ(outcome.mainText, "Error loading file - 'Couldn't read Data from calibration file.'");
}

} // namespace
