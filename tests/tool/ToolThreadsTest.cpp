// What the workbench does on several threads, for ThreadSanitizer (preset linux-tsan); the results are compared as
// well.
#include "base/Interrupts.h"
#include "base/TSha256.h"
#include "base/TToolError.h"
#include "batch/TFrameStack.h"
#include "batch/TPageSource.h"
#include "support/TemporaryFolder.h"
#include "verbs/TMeasuring.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <fstream>
#include <random>
#include <sstream>

using namespace workbench;

namespace {

constexpr TSize kSize{150, 130}; // more than is read of each of sixteen frames at a time

TImage RandomImage(unsigned seed)
{
    std::mt19937 random(seed);
    TImage image{kSize, std::vector<std::uint16_t>(kSize.Pixels())};
    for (std::uint16_t& pixel : image.pixels)
        pixel = static_cast<std::uint16_t>(random());
    return image;
}

std::string BytesOf(const std::string& path)
{
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

class ToolThreads : public testing::Test {
protected:
    // A file of so many pages. Of several it cannot be read side by side with others.
    void AddFile(unsigned pages = 1)
    {
        paths.push_back(folder.File(std::to_string(paths.size()) + ".pgm"));
        std::ofstream file(paths.back(), std::ios::binary);
        for (unsigned page = 0; page < pages; ++page) {
            const TImage image = RandomImage(++images);
            file << "P5\n" << kSize.width << ' ' << kSize.height << "\n65535\n";
            for (const std::uint16_t pixel : image.pixels) {
                file.put(static_cast<char>(pixel >> 8));
                file.put(static_cast<char>(pixel & 255));
            }
        }
    }

    void AddFiles(unsigned count)
    {
        for (unsigned file = 0; file < count; ++file)
            AddFile();
    }

    void Cut(std::size_t file)
    {
        const std::string bytes = BytesOf(paths[file]);
        std::ofstream(paths[file], std::ios::binary) << bytes.substr(0, bytes.size() / 2);
    }

    TFrameStack Read(TFileDigests* digests, const THeaderWatcher& early = [](const auto&...) {})
    {
        return ReadFrames({paths, options, "frames", digests}, early, [this](const TPassingFrame&) { ++seen; }, false);
    }

    // Of all pages that were written.
    TImage Average() const
    {
        TFrameSum sum(kSize);
        for (unsigned image = 1; image <= images; ++image) {
            const TImage frame = RandomImage(image);
            sum.Add({&frame});
        }
        return sum.Average();
    }

    void ExpectAllAveragedAndDigested()
    {
        TFileDigests digests(paths);
        const TFrameStack stack = Read(&digests);
        EXPECT_EQ(stack.frames, images);
        EXPECT_EQ(seen, images);
        EXPECT_EQ(stack.average.pixels, Average().pixels);
        const std::vector<TFileDigests::TDigest> found = digests.Take();
        ASSERT_EQ(found.size(), paths.size());
        for (std::size_t file = 0; file < paths.size(); ++file) {
            const std::string bytes = BytesOf(paths[file]);
            TSha256 sha256(true);
            sha256.Add(bytes.data(), bytes.size());
            EXPECT_EQ(found[file].sha256, sha256.Hex()) << paths[file];
        }
    }

    const TTemporaryFolder folder;
    const TInputOptions options;
    std::vector<std::string> paths;
    unsigned images = 0, seen = 0;
};

TEST_F(ToolThreads, TwoAddFrames)
{
    AddFiles(37);
    ExpectAllAveragedAndDigested();
}

TEST_F(ToolThreads, TwoAddTheFirstFramesAndOneReadsTheOthersAhead)
{
    AddFiles(5);
    for (unsigned pages : {2U, 1U, 3U})
        AddFile(pages);
    ExpectAllAveragedAndDigested();
}

TEST_F(ToolThreads, AFrameThatGoesMissingEndsBoth)
{
    AddFiles(36);
    for (const std::size_t missing : {2U, 35U}) { // of either thread
        unsigned looked = 0;
        TFileDigests digests(paths);
        const std::string bytes = BytesOf(paths[missing]);
        EXPECT_THROW(Read(&digests,
                          [&](const auto&...) {
                              if (++looked == paths.size())
                                  Cut(missing);
                          }),
                     TToolError);
        EXPECT_EQ(looked, paths.size());
        std::ofstream(paths[missing], std::ios::binary) << bytes;
    }
}

TEST_F(ToolThreads, PagesAreTreatedWhileOthersAreTaken)
{
    AddFiles(6);
    std::uint64_t treated = 0; // on that thread alone
    {
        TPageSteps steps;
        steps.headersFirst = true;
        steps.treat = [&treated](const std::string&, TPage& page) {
            treated += page.image.pixels.front();
            page.image.pixels.front() = 7;
        };
        TPageSource source(paths, options, steps, 1);
        TPage page;
        for (unsigned image = 1; image <= images; ++image) {
            ASSERT_TRUE(source.Take(page)) << page.failure;
            TImage expected = RandomImage(image);
            expected.pixels.front() = 7;
            EXPECT_EQ(page.image.pixels, expected.pixels);
        }
        EXPECT_FALSE(source.Take(page));
    }
    std::uint64_t expected = 0;
    for (unsigned image = 1; image <= images; ++image)
        expected += RandomImage(image).pixels.front();
    EXPECT_EQ(treated, expected);
    TPageSource dropped(paths, options, {}, 2); // while it reads
    TPage page;
    EXPECT_TRUE(dropped.Take(page));
}

TEST_F(ToolThreads, PagesAreMeasuredBeside)
{
    TCorrectionReport expected, report;
    {
        TMeasuring measuring(report);
        for (unsigned image = 1; image <= 9; ++image) {
            const TImage before = RandomImage(image), after = RandomImage(image + 100);
            measuring.Background(after);
            measuring.Before(before);
            measuring.After(after, "i", image);
            expected.background.Add(after);
            expected.before.Add(before);
            expected.after.Add(after);
        }
        measuring.Finish();
    }
    EXPECT_EQ(report.before.Json(), expected.before.Json());
    EXPECT_EQ(report.background.Json(), expected.background.Json());
    EXPECT_EQ(report.after.Json(), expected.after.Json());
    ASSERT_EQ(report.measured.size(), 9U);
    EXPECT_EQ(report.measured.back().page, 9U);
    TMeasuring dropped(report); // with something left to be done
    dropped.Background(RandomImage(1));
    dropped.Background(RandomImage(2));
}

// The last one: nothing goes on after it.
TEST_F(ToolThreads, TheUserStopsAll)
{
    AddFiles(20);
    CatchInterrupts();
    TFileDigests digests(paths);
    TCorrectionReport report;
    TMeasuring measuring(report);
    unsigned taken = 0;
    const auto take = [&](const TImage& frame) {
        measuring.Background(frame);
        if (++taken == 4)
            std::raise(SIGINT);
    };
    EXPECT_THROW(ReadFrames(
                     {paths, options, "frames", &digests}, [](const auto&...) {}, [](const auto&...) {}, false, take),
                 TToolError);
    EXPECT_LT(taken, 7U);
    digests.Take();
    EXPECT_TRUE(Interrupted());
    try {
        measuring.Finish(); // may have had nothing to wait for
    } catch (const TToolError&) {
    }
}

} // namespace
