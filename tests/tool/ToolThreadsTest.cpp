// What the workbench does on several threads, for ThreadSanitizer (preset linux-tsan); the results are compared as
// well.
#include "base/Interrupts.h"
#include "base/TProgress.h"
#include "base/TSha256.h"
#include "base/TToolError.h"
#include "batch/TFrameStack.h"
#include "batch/TPageSource.h"
#include "commandline/TPathPlan.h"
#include "images/TFrameSum.h"
#include "images/TImageWriter.h"
#include "support/TemporaryFolder.h"
#include "verbs/CorrectionRun.h"
#include "verbs/TMeasuring.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

using namespace workbench;

namespace {

constexpr TSize kSize{140, 120}; // more than is read of each of sixteen frames at a time

TImage RandomImage(unsigned seed)
{
    std::mt19937 random(seed);
    TImage image{kSize, std::vector<std::uint16_t>(kSize.Pixels())};
    for (std::uint16_t& pixel : image.pixels)
        pixel = static_cast<std::uint16_t>(random());
    return image;
}

std::string ContentOf(const std::string& path)
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
        const std::string bytes = ContentOf(paths[file]);
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
            const std::string bytes = ContentOf(paths[file]);
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
        const std::string bytes = ContentOf(paths[missing]);
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
    constexpr unsigned kPages = 4; // each takes longest of all this
    TCorrectionReport expected, report;
    {
        TMeasuring measuring(report);
        for (unsigned image = 1; image <= kPages; ++image) {
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
    ASSERT_EQ(report.measured.size(), kPages);
    EXPECT_EQ(report.measured.back().page, kPages);
    TMeasuring dropped(report); // with something left to be done
    dropped.Background(RandomImage(1));
    dropped.Background(RandomImage(2));
}

// Read and corrected by one thread, measured by another, written by this one; every image by its own exposure.
TEST_F(ToolThreads, ImagesAreCorrectedWhileOthersAreReadAndWritten)
{
    constexpr unsigned kImages = 4;
    TContext context;
    context.libraryPath = QXBC_LIBRARY;
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    TImage dark = RandomImage(99);
    for (std::uint16_t& pixel : dark.pixels)
        pixel = static_cast<std::uint16_t>(pixel / 4);
    object.Add("k", {dark.pixels.data()}, kSize.width, kSize.height, 2, 100);
    object.SetActive("k");
    TCorrectOptions wanted;
    wanted.conditions.lightIntensityPercent = 100;
    wanted.output = folder.File("out");
    wanted.picture = folder.File("picture.png");
    wanted.json = true;
    wanted.fullStatistics = true;
    for (unsigned image = 1; image <= kImages; ++image) {
        wanted.inputs.push_back(folder.File(std::to_string(image) + ".fits"));
        wanted.outputs.push_back(folder.File("out/" + std::to_string(image) + ".fits"));
        TPageMetadata metadata;
        metadata.exposureSeconds = image % 2 + 1;
        const std::unique_ptr<TImageWriter> writer =
            CreateImage(wanted.inputs.back(), TImageFormat::Fits, {}, kSize.Pixels() * 2, TExisting::Refused);
        writer->Write(RandomImage(image), metadata);
        writer->Close();
    }
    TTurn turn;
    turn.object = &object;
    turn.key = "k";
    turn.what = "k";
    turn.referenceProduct = 200;
    const TCorrectionPlan plan(wanted, false, [&](const auto&...) { return turn; });
    EXPECT_EQ(plan.Turns().size(), 2U);
    testing::internal::CaptureStdout();
    CorrectImages(context, plan, wanted, {});
    const nlohmann::json report = nlohmann::json::parse(testing::internal::GetCapturedStdout());
    EXPECT_EQ(context.status, 0);
    EXPECT_EQ(report.at("pages"), kImages);
    EXPECT_EQ(report.at("statisticsPages"), kImages);
    for (unsigned image = 1; image <= kImages; ++image) {
        TImage expected = RandomImage(image), found;
        object.SetExposureAndIntensity(static_cast<float>(image % 2 + 1), 100);
        object.Apply(expected.pixels.data(), static_cast<int>(expected.pixels.size()));
        const std::unique_ptr<TImageReader> reader = OpenImage(wanted.outputs[image - 1], {});
        ASSERT_TRUE(reader->NextPage());
        reader->Read(found);
        EXPECT_EQ(found.pixels, expected.pixels) << image;
    }
}

// Another process replaces a calibration file while its names are looked at: no threads, but a race as well.
TEST_F(ToolThreads, AFileThatTookTheNumberOfAReplacedOneIsAnother)
{
    const std::string one = folder.File("c.qxb"), other = folder.File("c.qxb.json");
    const auto make = [](const std::string& path) { std::ofstream(path) << path; };
    make(one);
    TPathPlan plan;
    plan.AddFile("file", TPathUse::Changes, one);
    std::filesystem::rename(one, other);
    plan.AddFile("record", TPathUse::Changes, other); // is the file that was looked at before
    make(one);
    EXPECT_NO_THROW(plan.Check(true));

    TPathPlan linked;
    std::filesystem::remove(other);
    std::filesystem::create_hard_link(one, other);
    linked.AddFile("file", TPathUse::Changes, one);
    linked.AddFile("record", TPathUse::Changes, other);
    EXPECT_THROW(linked.Check(true), TToolError);
}

// The last one: nothing goes on after it.
TEST_F(ToolThreads, TheUserStopsAll)
{
    AddFiles(40);
    std::signal(SIGINT, SIG_DFL); // what runs in a shell's background is started to ignore it
    CatchInterrupts();
    TCorrectionReport report;
    TMeasuring measuring(report); // waits meanwhile, and looks now and then
    TFileDigests digests(paths);
    const pthread_t here = pthread_self();
    std::atomic<bool> isReading{false};
    std::thread user([&] {
        while (!isReading)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(120));
        pthread_kill(here, SIGINT);
    });
    std::size_t looked = 0, rounds = 0;
    EXPECT_THROW(
        {
            for (; rounds < 1000; ++rounds)
                Read(&digests, [&](const auto&...) { isReading = ++looked >= paths.size(); });
        },
        TToolError);
    user.join();
    EXPECT_TRUE(Interrupted());
    TPageSource source(paths, options, {}, 1);
    TPage page;
    EXPECT_THROW(
        {
            while (source.Take(page))
                ThrowIfInterrupted();
        },
        TToolError);
    digests.Take();
    try {
        measuring.Finish();
    } catch (const TToolError&) { // where it had begun to wait
    }
}

} // namespace
