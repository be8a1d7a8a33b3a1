// Files written out by hand against what the library writes, and what it reads from them.
#include "file/LiteralLoad.h"
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>

using FileBytes::TBytes;

namespace {

class GoldenFiles : public testing::TestWithParam<std::size_t> {
protected:
    TSampleFile sample = SampleFiles::All()[GetParam()];
    TTemporaryFolder folder;
    std::string path = folder.File("golden.qxb");
    TBackgroundCorrectionProcessorUINT16 processor;
};

TEST_P(GoldenFiles, AreWhatASaveWrites)
{
    ProcessorDriver::Store(processor, sample.corrections);
    const unsigned int result = sample.structureVersion == 1
                                    ? processor.SaveFile(path.c_str())
                                    : processor.SaveGroupedFile(path.c_str(), sample.groupingNames);
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), sample.bytes), "");
}

TEST_P(GoldenFiles, LoadWhole)
{
    FileBytes::WriteFile(path, sample.bytes);
    const TLoadOutcome loaded = ProcessorDriver::Load(processor, path.c_str(), {sample.structureVersion == 2, false});
    EXPECT_EQ(loaded.result, 0u);
    EXPECT_EQ(loaded.corrections, sample.corrections) << Describe(loaded);
    EXPECT_EQ(loaded.groupingNames, sample.groupingNames);
    EXPECT_EQ(loaded.mainText, "");
    EXPECT_EQ(loaded.fileText, "");
    EXPECT_FALSE(loaded.headerOnly);
}

TEST_P(GoldenFiles, LoadHeaderOnlyWithEverythingButPixels)
{
    FileBytes::WriteFile(path, sample.bytes);
    std::vector<TStoredCorrection> withoutPixels = sample.corrections;
    for (TStoredCorrection& correction : withoutPixels) {
        correction.pixels.clear();
    }
    const TLoadOutcome loaded = ProcessorDriver::Load(processor, path.c_str(), {sample.structureVersion == 2, true});
    EXPECT_EQ(loaded.result, 0u);
    EXPECT_EQ(loaded.corrections, withoutPixels) << Describe(loaded);
    EXPECT_EQ(loaded.groupingNames, sample.groupingNames);
    EXPECT_TRUE(loaded.headerOnly);
}

TEST_P(GoldenFiles, AreReadByTheModelAsTheyStand)
{
    const auto model = LoadLiterally(sample.bytes, path, {sample.structureVersion == 2, false}, {});
    ASSERT_TRUE(model);
    EXPECT_EQ(model->result, 0u);
    EXPECT_EQ(model->corrections, sample.corrections) << Describe(*model);
    EXPECT_EQ(model->groupingNames, sample.groupingNames);
    EXPECT_EQ(model->mainText + model->fileText, "");
}

TEST_P(GoldenFiles, LoadAndSaveToTheSameBytes)
{
    FileBytes::WriteFile(path, sample.bytes);
    std::vector<std::string> names;
    std::uint32_t version = 0;
    ASSERT_EQ(processor.LoadGroupedFileFull(path.c_str(), names, version), 0u);
    const std::string copy = folder.File("copy.qxb");
    ASSERT_EQ(sample.structureVersion == 1 ? processor.SaveFile(copy.c_str())
                                           : processor.SaveGroupedFile(copy.c_str(), names),
              0u);
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(copy), sample.bytes), "");
}

std::string NameOf(const testing::TestParamInfo<std::size_t>& info)
{
    static const std::vector<TSampleFile> samples = SampleFiles::All();
    std::string name = samples[info.param].name;
    for (char& character : name) {
        if (character == ' ' || character == ',') {
            character = '_';
        }
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Samples, GoldenFiles, testing::Range<std::size_t>(0, SampleFiles::All().size()), NameOf);

class CalibrationFiles : public testing::Test {
protected:
    TTemporaryFolder folder;
    std::string path = folder.File("file.qxb");
    TBackgroundCorrectionProcessorUINT16 processor;
};

TEST_F(CalibrationFiles, OfFramesAddedByAHostHoldTheAveragedAndFilteredImage)
{
    const std::vector<unsigned short> first(6, 100);
    const std::vector<unsigned short> second(6, 103);
    const unsigned short* frames[] = {first.data(), second.data()};
    ASSERT_EQ(processor.AddCorrection("host", frames, 2, 3, 2, 0.5f, 100.0f), 0u);
    ASSERT_EQ(processor.SaveFile(path.c_str()), 0u);
    const TBytes pixels = FileBytes::Hex("66 00 66 00 66 00 66 00 66 00 66 00"); // 101.5 rounds up to 102
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path),
                                    FileBytes::Join({SampleFiles::Beginning(1),
                                                     SampleFiles::Correction("host", 3, 2, 0.5f, 100.0f, pixels)})),
              "");
}

TEST_F(CalibrationFiles, KeepEveryBitOfReferenceValues)
{
    const float denormal = std::numeric_limits<float>::denorm_min();
    const std::vector<TStoredCorrection> corrections = {
        {"nan", 1, 1, 0x7FC00001, 0x3F800000, {1}},
        {"infinite", 1, 1, 0x7F800000, 0xFF800000, {2}},
        {"negative", 1, 1, BitsOf(-0.1f), BitsOf(-1.0f), {3}},
        {"denormal", 1, 1, BitsOf(denormal), BitsOf(100.0f), {4}},
    };
    ProcessorDriver::Store(processor, corrections);
    ASSERT_EQ(processor.SaveFile(path.c_str()), 0u);
    TBackgroundCorrectionProcessorUINT16 reader;
    ASSERT_EQ(reader.LoadFile(path.c_str()), 0u);
    EXPECT_EQ(ProcessorDriver::Corrections(reader), corrections);
}

TEST_F(CalibrationFiles, CutGroupingNamesAt16CharactersWithoutTerminator)
{
    ASSERT_EQ(processor.SaveGroupedFile(path.c_str(), {"0123456789abcdefXYZ", ""}), 0u);
    const TBytes bytes = FileBytes::ReadFile(path);
    ASSERT_EQ(bytes.size(), 26u + 4 + 16 + 2 * (12 + 16) + 16);
    EXPECT_EQ(TBytes(bytes.begin() + 58, bytes.begin() + 74), FileBytes::Padded("0123456789abcdef", 16));
    EXPECT_EQ(TBytes(bytes.begin() + 86, bytes.begin() + 102), FileBytes::Zeros(16));
    std::vector<std::string> names;
    std::uint32_t version = 0;
    ASSERT_EQ(processor.LoadGroupedFileFull(path.c_str(), names, version), 0u);
    EXPECT_EQ(names, (std::vector<std::string>{"0123456789abcdef", ""}));
    EXPECT_EQ(version, 2u);
}

TEST_F(CalibrationFiles, CutKeysAt512Characters)
{
    ProcessorDriver::Store(processor, {{std::string(512, 'k') + "cut", 1, 1, 0x3F800000, 0x3F800000, {1}}});
    ASSERT_EQ(processor.SaveFile(path.c_str()), 0u);
    EXPECT_EQ(FileBytes::Difference(
                  FileBytes::ReadFile(path),
                  FileBytes::Join({SampleFiles::Beginning(1), SampleFiles::Correction(std::string(512, 'k'), 1, 1, 1.0f,
                                                                                      1.0f, FileBytes::Hex("01 00"))})),
              "");
}

TEST_F(CalibrationFiles, KeyEndsAtItsFirstZero)
{
    TBytes bytes = SampleFiles::OneCorrection().bytes;
    bytes.at(30 + 16 + 12 + 12 + 4) = 0; // behind "Flat"; the rest of the key stays
    FileBytes::WriteFile(path, bytes);
    ASSERT_EQ(processor.LoadFile(path.c_str()), 0u);
    ASSERT_STREQ(processor.GetCorrectionKey(0), "Flat");
    ASSERT_EQ(processor.SaveFile(path.c_str()), 0u);
    TBytes saved = SampleFiles::OneCorrection().bytes;
    std::fill_n(saved.begin() + 30 + 16 + 12 + 12 + 4, 5, static_cast<unsigned char>(0));
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), saved), "");
}

TEST_F(CalibrationFiles, MayHaveAnythingBehindTheirLastCorrection)
{
    FileBytes::WriteFile(path, FileBytes::Join({SampleFiles::TwoCorrections().bytes, FileBytes::Hex("3E 00 FF")}));
    for (const bool headerOnly : {false, true}) {
        const TLoadOutcome loaded = ProcessorDriver::Load(processor, path.c_str(), {false, headerOnly});
        EXPECT_EQ(loaded.result, 0u);
        EXPECT_EQ(loaded.corrections.size(), 2u);
    }
}

TEST_F(CalibrationFiles, ReplaceALongerFile)
{
    FileBytes::WriteFile(path, FileBytes::Zeros(100000));
    ASSERT_EQ(processor.SaveFile(path.c_str()), 0u);
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(path), SampleFiles::EmptyList().bytes), "");
}

} // namespace
