// Files of more than 2 and 4 GiB. Most of the bytes are holes; the tests that need real ones run on demand.
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

using FileBytes::Hex;
using FileBytes::Number;
using FileBytes::TBytes;

namespace {

constexpr std::uint64_t kLargePixels = 40'000ull * 40'000; // 3.2 GB of them

// Writes pieces at their offsets and nothing in between.
class TSparseFile {
public:
    explicit TSparseFile(const std::string& path) : file(path, std::ios::binary) {}

    std::uint64_t End() const { return end; }
    void Append(const TBytes& bytes) { PutAt(end, bytes); }
    void Skip(std::uint64_t bytes) { end += bytes; }
    void PutAt(std::uint64_t offset, const TBytes& bytes)
    {
        file.seekp(static_cast<std::streamoff>(offset));
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        end = std::max(end, offset + bytes.size());
    }
    bool Close()
    {
        file.close();
        return !file.fail();
    }

private:
    std::ofstream file;
    std::uint64_t end = 0;
};

std::vector<std::string> Keys(TBackgroundCorrectionProcessorUINT16& processor)
{
    std::vector<std::string> keys;
    for (unsigned int i = 0; i < processor.GetNumberOfCorrections(); ++i) {
        keys.push_back(processor.GetCorrectionKey(i));
    }
    return keys;
}

class LargeFiles : public testing::Test {
protected:
    static bool AreWanted() { return std::getenv("QX_LARGE_FILES") != nullptr; }

    TTemporaryFolder folder;
    std::string path = folder.File("large.qxb");
    TBackgroundCorrectionProcessorUINT16 processor;
};

TEST_F(LargeFiles, HeaderOnlyLoadReachesBeyond4GiB)
{
    TSparseFile file(path);
    file.Append(SampleFiles::Beginning(3));
    for (const char* const key : {"one", "two"}) {
        file.Append(SampleFiles::Correction(key, 40'000, 40'000, 1.0f, 1.0f, {}));
        file.Skip(2 * kLargePixels);
    }
    EXPECT_GT(file.End(), 6'000'000'000u);
    file.Append(SampleFiles::Correction("three", 1, 1, 1.0f, 1.0f, Hex("01 00")));
    ASSERT_TRUE(file.Close());
    EXPECT_EQ(processor.LoadFileHeaderOnly(path.c_str()), 0u);
    EXPECT_EQ(Keys(processor), (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_STREQ(processor.FileMessage(), "");
}

// The length of a record is 32 bits and unsigned: it leads back from beyond 4 GiB, and to offsets beyond 2 GiB.
TEST_F(LargeFiles, RepositioningGoesByAnUnsigned32BitLength)
{
    const std::uint32_t far = 0xBF00'0000; // within the second half of the first correction's pixels
    TSparseFile file(path);
    file.Append(SampleFiles::Beginning(4));
    for (const char* const key : {"one", "two"}) {
        file.Append(SampleFiles::Correction(key, 40'000, 40'000, 1.0f, 1.0f, {}));
        file.Skip(2 * kLargePixels);
    }
    EXPECT_GT(file.End(), 1ull << 32);
    file.Append(FileBytes::Join({Number(60), Number(1), Number(far)}));
    file.PutAt(far, SampleFiles::Correction("far", 1, 1, 1.0f, 1.0f, Hex("01 00")));
    ASSERT_TRUE(file.Close());
    EXPECT_EQ(processor.LoadFileHeaderOnly(path.c_str()), 0u);
    EXPECT_EQ(Keys(processor), (std::vector<std::string>{"one", "two", "far"}));
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Error loading file - 'Calibration file contains invalid data.'");
}

TEST_F(LargeFiles, PixelsAcross4GiBAreLoaded)
{
    const std::uint32_t start = 0xFFFF'FF00; // its pixels lie beyond
    TSparseFile file(path);
    file.Append(SampleFiles::Beginning(2));
    file.Append(FileBytes::Join({Number(60), Number(1), Number(start)}));
    file.PutAt(start, SampleFiles::Correction("across", 2, 1, 1.0f, 1.0f, Hex("01 00 02 00")));
    ASSERT_TRUE(file.Close());
    EXPECT_EQ(processor.LoadFile(path.c_str()), 0u);
    EXPECT_EQ(ProcessorDriver::Corrections(processor),
              (std::vector<TStoredCorrection>{{"across", 2, 1, BitsOf(1.0f), BitsOf(1.0f), {1, 2}}}));
}

TEST_F(LargeFiles, ClaimOfOneBytePastTheEndIsFoundBeyond2GiBToo)
{
    TSparseFile file(path);
    file.Append(SampleFiles::Beginning(2));
    file.Append(SampleFiles::Correction("one", 40'000, 40'000, 1.0f, 1.0f, {}));
    file.Skip(2 * kLargePixels - 2);
    file.Append(Hex("00"));
    ASSERT_TRUE(file.Close()); // one byte is missing
    EXPECT_EQ(processor.LoadFile(path.c_str()), 4294967295u);
    EXPECT_EQ(processor.GetNumberOfCorrections(), 0u);
}

TEST_F(LargeFiles, AreSavedAndLoadedWhole)
{
    if (!AreWanted()) {
        GTEST_SKIP() << "set QX_LARGE_FILES=1 to write and read 2.4 GB (takes as much disk and twice the memory)";
    }
    const std::uint32_t side = 20'000;
    std::vector<std::uint16_t> pixels(std::size_t{side} * side);
    std::vector<std::string> keys = {"one", "two", "three"};
    for (std::size_t i = 0; i < keys.size(); ++i) {
        for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel) {
            pixels[pixel] = static_cast<std::uint16_t>((pixel * 31 + i * 17) & 0xFFFF);
        }
        TBackgroundCorrectionEntry entry;
        const std::uint16_t* const frame = pixels.data();
        entry.Build(keys[i].c_str(), &frame, 1, side, side, 1.0f, 1.0f, false);
        ASSERT_EQ(processor.AddEntryCopy(entry), 0u);
    }
    ASSERT_EQ(processor.SaveFile(path.c_str()), 0u);
    processor.ClearCorrections();
    EXPECT_EQ(std::filesystem::file_size(path), 46 + 3 * (612 + 2ull * side * side));
    ASSERT_EQ(processor.LoadFile(path.c_str()), 0u);
    EXPECT_EQ(Keys(processor), keys);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const std::uint16_t* const loaded = processor.GetEntryAt(static_cast<unsigned int>(i))->Pixels();
        std::size_t wrong = 0;
        for (std::size_t pixel = 0; pixel < pixels.size(); ++pixel) {
            wrong += loaded[pixel] != static_cast<std::uint16_t>((pixel * 31 + i * 17) & 0xFFFF) ? 1u : 0u;
        }
        EXPECT_EQ(wrong, 0u) << keys[i];
    }
}

} // namespace
