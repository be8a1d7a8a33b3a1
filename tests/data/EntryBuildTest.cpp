#include "data/TBackgroundCorrectionEntry.h"

#include "data/EntryBuilding.h"
#include "support/AllocationFaults.h"
#include "support/RandomImages.h"
#include "support/ScopedLocale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace {

std::string BuildText(const char* key, float exposureSeconds, float lightIntensityPercent)
{
    return ThrownText([=] {
        TBackgroundCorrectionEntry entry;
        entry.Build(key, nullptr, 0, 1, 1, exposureSeconds, lightIntensityPercent, false);
    });
}

TEST(EntryBuild, FreshEntryHasNothing)
{
    const TBackgroundCorrectionEntry entry;
    EXPECT_STREQ(entry.Key(), "");
    EXPECT_EQ(entry.Pixels(), nullptr);
    EXPECT_FALSE(entry.HasPixels());
}

TEST(EntryBuild, RefusesNullAndEmptyKeys)
{
    EXPECT_EQ(BuildText(nullptr, 1.0f, 1.0f), "The key is not valid - 'NULL'.");
    EXPECT_EQ(BuildText("", 1.0f, 1.0f), "The key is not valid - ''.");
    EXPECT_EQ(BuildText(" ", 1.0f, 1.0f), "(nothing thrown)");
}

TEST(EntryBuild, RefusesAReferenceProductOfZero)
{
    constexpr char kHalfAndZero[] =
        "Reference exposure and light intensity product is zero [ 0.500000 ] * [ 0.000000 ].";
    constexpr char kZeros[] = "Reference exposure and light intensity product is zero [ 0.000000 ] * [ 0.000000 ].";
    EXPECT_EQ(BuildText("k", 0.5f, 0.0f), kHalfAndZero);
    EXPECT_EQ(BuildText("k", 0.0f, 0.0f), kZeros);
    EXPECT_EQ(BuildText("k", 1e-30f, 1e-30f), kZeros) << "underflow in single precision";
    EXPECT_EQ(BuildText("k", -2.0f, 0.0f),
              "Reference exposure and light intensity product is zero [ -2.000000 ] * [ 0.000000 ].");
    EXPECT_EQ(BuildText("k", 1e-22f, 1e-22f), "(nothing thrown)") << "the smallest numbers are not zero";
    EXPECT_EQ(BuildText("k", std::nanf(""), 0.0f), "(nothing thrown)");
    EXPECT_EQ(BuildText("k", -1.0f, 1.0f), "(nothing thrown)");
}

TEST(EntryBuild, WritesTheProductWithADecimalPointWhateverTheHostHasSet)
{
    const TScopedCommaLocale comma;
    if (!comma.IsSet()) {
        GTEST_SKIP() << "this system has no locale with a decimal comma installed";
    }
    EXPECT_EQ(BuildText("k", 0.5f, 0.0f),
              "Reference exposure and light intensity product is zero [ 0.500000 ] * [ 0.000000 ].");
}

TEST(EntryBuild, ChecksKeyThenProductThenMemory)
{
    const std::uint16_t pixel = 1;
    const std::uint16_t* const frames[] = {&pixel};
    const auto build = [&frames](const char* key, float intensity) {
        TBackgroundCorrectionEntry entry;
        entry.Build(key, frames, 1, 46341, 46341, 1.0f, intensity, true);
    };
    EXPECT_EQ(ThrownText([&build] { build("", 0.0f); }), "The key is not valid - ''.");
    EXPECT_EQ(ThrownText([&build] { build("k", 0.0f); }),
              "Reference exposure and light intensity product is zero [ 1.000000 ] * [ 0.000000 ].");
    EXPECT_EQ(ThrownText([&build] { build("k", 1.0f); }), kConstructionMemoryText);
}

TEST(EntryBuild, KeepsKeyAndReferenceWhenTheProductIsRefused)
{
    TBackgroundCorrectionEntry entry;
    EXPECT_THROW(entry.Build("dark", nullptr, 0, 3, 2, 0.5f, 0.0f, false), TZRException);
    EXPECT_STREQ(entry.Key(), "dark");
    EXPECT_EQ(entry.ReferenceExposureSeconds(), 0.5f);
    EXPECT_EQ(entry.ReferenceIntensityPercent(), 0.0f);
    EXPECT_EQ(entry.Pixels(), nullptr);
}

TEST(EntryBuild, CutsKeysAt512Characters)
{
    for (const std::size_t length : {1u, 511u, 512u, 513u, 600u}) {
        const std::string key(length, 'k');
        TBackgroundCorrectionEntry entry;
        EXPECT_EQ(entry.Build(key.c_str(), nullptr, 0, 1, 1, 1.0f, 1.0f, false), 0);
        EXPECT_EQ(entry.Key(), key.substr(0, 512)) << length;
    }
}

TEST(EntryBuild, WithoutFramesFillsOnlyTheDescription)
{
    TBackgroundCorrectionEntry entry;
    EXPECT_EQ(entry.Build("dark", nullptr, 0, 3, 2, 0.5f, 4.0f, true), 0);
    EXPECT_STREQ(entry.Key(), "dark");
    EXPECT_EQ(entry.Width(), 3u);
    EXPECT_EQ(entry.Height(), 2u);
    EXPECT_EQ(entry.ReferenceExposureSeconds(), 0.5f);
    EXPECT_EQ(entry.ReferenceIntensityPercent(), 4.0f);
    EXPECT_EQ(entry.Pixels(), nullptr);
    EXPECT_FALSE(entry.HasPixels());
}

TEST(EntryBuild, StoresASingleFrameUnchangedWithoutTheFilter)
{
    TRandomImages random(10);
    const Literal::TImage frame = random.Image(17, 5);
    TBackgroundCorrectionEntry entry;
    BuildFrom(entry, "dark", {frame}, false, 2.0f, 10.0f);
    EXPECT_EQ(PixelsOf(entry), frame.pixels);
    EXPECT_TRUE(entry.HasPixels());
    EXPECT_EQ(entry.PixelCount(), 85u);
    EXPECT_NE(entry.Pixels(), frame.pixels.data());
}

TEST(EntryBuild, AveragesSeveralFramesAndFiltersOnRequest)
{
    TRandomImages random(11);
    for (const TImageSize size : kAwkwardSizes) {
        for (const int frameCount : {1, 2, 7}) {
            const auto frames = random.Stack(frameCount, size.width, size.height);
            TBackgroundCorrectionEntry filtered;
            BuildFrom(filtered, "k", frames, true);
            ASSERT_EQ(PixelsOf(filtered), Literal::Correction(frames).pixels)
                << frameCount << " frames of " << size.width << " x " << size.height;
            if (frameCount > 1) {
                TBackgroundCorrectionEntry unfiltered;
                BuildFrom(unfiltered, "k", frames, false);
                ASSERT_EQ(PixelsOf(unfiltered), Literal::Average(frames).pixels);
            }
        }
    }
}

TEST(EntryBuild, LeavesTheFramesAlone)
{
    TRandomImages random(12);
    const auto frames = random.Stack(3, 9, 4);
    const auto before = frames;
    TBackgroundCorrectionEntry entry;
    BuildFrom(entry, "k", frames, true);
    EXPECT_EQ(frames, before);
}

struct TSize {
    std::uint32_t width;
    std::uint32_t height;
};

TEST(EntryBuild, RefusesSizesBeyond32BitsAsWantOfMemory)
{
    const std::uint16_t pixel = 1;
    const std::uint16_t* const frames[] = {&pixel, &pixel};
    for (const TSize size : {TSize{46341, 46341}, TSize{65536, 32768}, TSize{65536, 65536}, TSize{65537, 65536},
                             TSize{2147483647, 2}, TSize{2147483647, 2147483647}, TSize{4294967295u, 4294967295u}}) {
        for (const std::uint32_t frameCount : {1u, 2u}) {
            EXPECT_EQ(ThrownText([&] {
                          TBackgroundCorrectionEntry entry;
                          entry.Build("k", frames, frameCount, size.width, size.height, 1.0f, 1.0f, true);
                      }),
                      kConstructionMemoryText)
                << size.width << " x " << size.height;
        }
    }
}

TEST(EntryBuild, AsksForAllPixelsOfTheLargestSize)
{
    const std::uint16_t pixel = 1;
    const std::uint16_t* const frames[] = {&pixel};
    TBackgroundCorrectionEntry entry;
    TAllocationFaults faults(1);
    EXPECT_THROW(entry.Build("k", frames, 1, 46340, 46340, 1.0f, 1.0f, true), TZRException);
    faults.Disarm();
    EXPECT_TRUE(faults.Fired());
    EXPECT_EQ(faults.FailedSize(), std::size_t{46340} * 46340 * 2);
}

TEST(EntryBuildFromPixels, TakesThePixelsOver)
{
    std::uint16_t* const pixels = new std::uint16_t[2];
    pixels[0] = 7;
    pixels[1] = 8;
    TBackgroundCorrectionEntry entry;
    entry.BuildFromPixels("dark", pixels, 2, 1, 0.5f, 3.0f);
    EXPECT_EQ(entry.Pixels(), pixels);
    EXPECT_THAT(PixelsOf(entry), testing::ElementsAre(7, 8));
    EXPECT_EQ(entry.ReferenceExposureSeconds(), 0.5f);
    EXPECT_EQ(entry.ReferenceIntensityPercent(), 3.0f);
}

TEST(EntryBuildFromPixels, FreesThePixelsWhenItRefusesThem)
{
    const std::size_t before = TAllocationFaults::LiveBlocks();
    for (const char* const key : {static_cast<const char*>(nullptr), "", "k"}) {
        TBackgroundCorrectionEntry entry;
        bool isThrown = false;
        try {
            entry.BuildFromPixels(key, new std::uint16_t[2], 2, 1, 1.0f, 0.0f);
        } catch (const TZRException&) {
            isThrown = true;
        }
        EXPECT_TRUE(isThrown);
    }
    EXPECT_EQ(TAllocationFaults::LiveBlocks(), before);
}

} // namespace
