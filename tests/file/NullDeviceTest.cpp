// The null device, which opens like a file.
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "model/LiteralDisk.h" // kBackslashSystem
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using ProcessorDriver::kMinusOne;
constexpr char kNotFound[] = "Background correction key not found - 'nobody'";

// However a host spells it.
std::vector<std::string> Names()
{
    if (kBackslashSystem) {
        return {"nul", "NUL", "Nul", "\\\\.\\nul", ".\\nul"};
    }
    return {"/dev/null", "\\dev\\null", "/dev/../dev//null"};
}

class NullDevice : public testing::Test {
protected:
    void SetUp() override
    {
        ProcessorDriver::Store(processor, SampleFiles::TwoCorrections().corrections);
        processor.SetActiveCorrection("nobody"); // leaves a text
    }
    TBackgroundCorrectionProcessorUINT16 processor;
};

TEST_F(NullDevice, LoadsAsAFileThatEndsAtOnce)
{
    for (const std::string& name : Names()) {
        for (const TLoadKind kind : kEveryLoad) {
            processor.SetActiveCorrection("nobody"); // finding out the mode replaced the text
            const TLoadOutcome outcome = ProcessorDriver::Load(processor, name.c_str(), kind);
            EXPECT_EQ(outcome.result, kMinusOne) << name;
            EXPECT_EQ(outcome.mainText, kNotFound) << name;
            EXPECT_EQ(outcome.fileText, "Couldn't read Data from calibration file.") << name;
            EXPECT_EQ(outcome.corrections.size(), 2u) << name;
            EXPECT_TRUE(ProcessorDriver::LockIsFree(processor)) << name;
        }
    }
}

TEST_F(NullDevice, TakesEverySave)
{
    ProcessorDriver::Store(processor,
                           {"large", 1000, 500, 0x3F800000, 0x3F800000, std::vector<std::uint16_t>(500'000, 1)});
    for (const std::string& name : Names()) {
        EXPECT_EQ(processor.SaveFile(name.c_str()), 0u) << name;
        EXPECT_EQ(processor.SaveGroupedFile(name.c_str(), {"A"}), 0u) << name;
    }
    EXPECT_STREQ(processor.GetLastErrorMessage(), kNotFound);
    EXPECT_STREQ(processor.FileMessage(), "");
    EXPECT_EQ(processor.GetNumberOfCorrections(), 3u);
    EXPECT_EQ(processor.LoadFile(Names().front().c_str()), kMinusOne) << "nothing is kept there";
}

TEST_F(NullDevice, IsNoFileBesideIt)
{
    const TTemporaryFolder folder;
    const std::string path = folder.File(kBackslashSystem ? "nul_file" : "null");
    EXPECT_EQ(processor.LoadFile(path.c_str()), 769u);
    EXPECT_EQ(processor.SaveFile(path.c_str()), 0u);
    EXPECT_EQ(processor.LoadFile(path.c_str()), 0u);
    EXPECT_GT(std::filesystem::file_size(path), 0u);
}

} // namespace
