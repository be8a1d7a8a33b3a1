// The description of the format against the files that the library writes, so that it cannot become wrong.
#include "file/ProcessorDriver.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

using FileBytes::TBytes;

namespace {

std::string Document()
{
    const TBytes bytes = FileBytes::ReadFile(QXBC_SOURCE_DIRECTORY "/docs/calibration-file.md");
    return {bytes.begin(), bytes.end()};
}

// The bytes of a block of lines "offset  bytes | meaning", in which "00 x 12" stands for twelve of them.
TBytes BytesOfBlock(const std::string& name)
{
    const std::string document = Document();
    const std::size_t mark = document.find("<!-- checked by a test: " + name + " -->\n```\n");
    if (mark == std::string::npos) {
        throw std::runtime_error("no such block: " + name);
    }
    const std::size_t begin = document.find("```\n", mark) + 4;
    std::istringstream block(document.substr(begin, document.find("```", begin) - begin));
    TBytes bytes;
    for (std::string line; std::getline(block, line);) {
        EXPECT_EQ(std::stoul(line.substr(0, 8), nullptr, 16), bytes.size()) << line;
        std::istringstream items(line.substr(8, line.find('|') - 8));
        for (std::string item; items >> item;) {
            if (item == "x") {
                std::size_t count = 0;
                items >> count;
                bytes.insert(bytes.end(), count - 1, bytes.back());
            } else {
                const TBytes one = FileBytes::Hex(item);
                bytes.insert(bytes.end(), one.begin(), one.end());
            }
        }
    }
    return bytes;
}

TEST(FormatDocument, ShowsTheBytesOfAFileOfVersion1)
{
    const TTemporaryFolder folder;
    const std::string path = folder.File("example.qxb");
    const TStoredCorrection dark = {"dark", 3, 2, BitsOf(0.5f), BitsOf(100.0f), {100, 101, 102, 1000, 1001, 65535}};
    TBackgroundCorrectionProcessorUINT16 processor;
    ProcessorDriver::Store(processor, dark);
    ASSERT_EQ(processor.SaveFile(path.c_str()), 0u);
    EXPECT_EQ(FileBytes::Difference(BytesOfBlock("version 1"), FileBytes::ReadFile(path)), "");
}

TEST(FormatDocument, ShowsTheBytesOfAFileOfVersion2)
{
    const TTemporaryFolder folder;
    const std::string path = folder.File("example.qxb");
    TBackgroundCorrectionProcessorUINT16 processor;
    ASSERT_EQ(processor.SaveGroupedFile(path.c_str(), {"Gain", "SensorTemperature"}), 0u);
    EXPECT_EQ(FileBytes::Difference(BytesOfBlock("version 2"), FileBytes::ReadFile(path)), "");
}

TEST(FormatDocument, NamesEveryTextOfReadingAndWriting)
{
    const std::string document = Document();
    for (const char* const text : {"Could not create file - '%s'",
                                   "Could not open file - '%s'",
                                   "Could not load file - '%s'",
                                   "Header not correct.",
                                   "Structure version not correct [ %d ].",
                                   "Error loading file - '%s'",
                                   "Memory allocation error during reading.",
                                   "Couldn't create new background entry - '",
                                   "The key is not valid - '",
                                   "Supplied Key is not unique - '%s'",
                                   "Reference exposure and light intensity product is zero [ %f ] * [ %f ].",
                                   "Couldn't write Entry ID in calibration file.",
                                   "Couldn't write Entry Version in calibration file.",
                                   "Couldn't write Entry Data Length in calibration file.",
                                   "Couldn't write Data in calibration file.",
                                   "Couldn't read Entry ID from calibration file.",
                                   "Couldn't read Entry Version from calibration file.",
                                   "Couldn't read Entry Data Length from calibration file.",
                                   "Couldn't read Data from calibration file.",
                                   "Calibration file contains invalid data.",
                                   "Unexpected end of calibration file."}) {
        EXPECT_NE(document.find(text), std::string::npos) << text;
    }
}

} // namespace
