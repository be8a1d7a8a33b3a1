// A host that changed how its thread rounds, or that has numbers below the normal ones flushed to zero: the arithmetic
// is what is written down, done in the host's mode. The library changes no mode and changes none back.
#include "file/FileBytes.h"
#include "file/SampleFiles.h"
#include "model/LiteralArithmetic.h"
#include "support/RandomImages.h"
#include "support/ScopedRounding.h"
#include "support/TemporaryFolder.h"
#include "support/TestObject.h"
#include "surroundings/SurroundingsWorkload.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cstdio>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// Whatever a host does with exposures, levels and regions, against the literal arithmetic of the same mode.
void ExpectLiteralArithmetic(const TTestObject& object, const std::vector<Literal::TImage>& frames, float exposure,
                             float intensity)
{
    const Literal::TImage stored = Literal::Correction(frames);
    const int width = stored.width - 1;
    for (int percent = 0; percent <= 100; ++percent) {
        ASSERT_EQ(object->SetCorrectionLevel(percent), 0u);
        ASSERT_EQ(object->SetExposureAndIntensity(exposure, intensity), 0u);
        ASSERT_EQ(object->SetRegion(1, 0, width, stored.height), 0u);
        float referenceExposure = 0.0f;
        float referenceIntensity = 0.0f;
        object->GetReferenceExposureAndIntensity(&referenceExposure, &referenceIntensity);
        const float level = Literal::LevelFraction(percent);
        const Literal::TImage region = Literal::CopyRegion(stored, 1, 0, width, stored.height);
        const Literal::TImage expected = Literal::Scale(
            region, Literal::ScaleFactor(exposure, intensity, level, referenceExposure, referenceIntensity));
        ASSERT_EQ(object.Background(), expected.pixels) << "level " << percent;
        // The way back is arithmetic as well: which levels come back one lower depends on the mode.
        EXPECT_EQ(object->GetCorrectionLevel(), static_cast<int>(static_cast<double>(level) * 100.0));
    }
    unsigned short statistics[3] = {};
    const Literal::TStatistics expected = Literal::CalculateStatistics(stored.pixels);
    ASSERT_EQ(object->GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]), 0u);
    EXPECT_EQ(statistics[2], expected.average);
}

TEST(SurroundingsFloatingPoint, ArithmeticIsTheLiteralOneInEveryRoundingMode)
{
    for (const int mode : kRoundingModes) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        TRandomImages images(7);
        for (const int frameCount : {1, 2, 3, 7, 301}) { // 301 frames: sums that single precision rounds
            const std::vector<Literal::TImage> frames = images.Stack(frameCount, 11, 6, 40000);
            const TScopedRounding rounding(mode);
            const TTestObject object;
            ASSERT_EQ(object.AddFrames("dark", frames, 0.7f, 73.0f), 0u);
            ASSERT_EQ(object.Processor().GetEntryAt(0)->Pixels()[0], Literal::Correction(frames).pixels[0]);
            ASSERT_EQ(object->SetActiveCorrection("dark"), 0u);
            ExpectLiteralArithmetic(object, frames, 0.3f, 61.0f);
            ExpectLiteralArithmetic(object, frames, 1.9f, 88.0f);
        }
    }
}

// What is subtracted from an image is integers: the mode cannot show there. It shows in the pixels of a correction.
TEST(SurroundingsFloatingPoint, RoundingModeShowsInBuildingAndScaling)
{
    std::vector<std::vector<std::uint16_t>> backgrounds;
    for (const int mode : {FE_UPWARD, FE_DOWNWARD}) {
        TRandomImages images(7);
        const std::vector<Literal::TImage> frames = images.Stack(301, 64, 64, 60000);
        const TScopedRounding rounding(mode);
        const TTestObject object;
        ASSERT_EQ(object.AddFrames("dark", frames), 0u);
        ASSERT_EQ(object->SetActiveCorrection("dark"), 0u);
        backgrounds.push_back(object.Background());
    }
    EXPECT_NE(backgrounds[0], backgrounds[1]);
}

// Upwards, a product of two small numbers is a number as well, if the smallest there is.
TEST(SurroundingsFloatingPoint, AProductIsZeroWhenTheHostsModeMakesItSo)
{
    for (const int mode : kRoundingModes) {
        const TScopedRounding rounding(mode);
        const TTestObject object;
        EXPECT_EQ(object.AddFrames("dark", {{1, 1, {1}}}, 1e-30f, 1e-30f), mode == FE_UPWARD ? 0u : 513u);
    }
}

#ifndef _WIN32 // there are several formatting functions to compare with there

// The system's formatting rounds as the host's mode says; the library adds nothing of its own.
TEST(SurroundingsFloatingPoint, NumbersInTextsAreRoundedInTheHostsMode)
{
    const TTemporaryFolder folder;
    FileBytes::WriteFile(
        folder.File("file"),
        FileBytes::Join({SampleFiles::Beginning(1), SampleFiles::Correction("dark", 1, 1, 0.0f, 2.5e-7f, {1, 0})}));
    for (const int mode : kRoundingModes) {
        const TScopedRounding rounding(mode);
        const TTestObject object;
        ASSERT_EQ(object->LoadFile(folder.File("file").c_str()), 1024u);
        char expected[257];
        std::snprintf(expected, sizeof expected,
                      "Couldn't create new background entry - 'Reference exposure and light intensity product is zero "
                      "[ %f ] * [ %f ].'",
                      0.0, static_cast<double>(2.5e-7f));
        EXPECT_EQ(object.Message(), expected);
    }
}

#endif

TEST(SurroundingsFloatingPoint, RoundingModeIsLeftAsItWas)
{
    for (const int mode : kRoundingModes) {
        const TTemporaryFolder folder;
        const TScopedRounding rounding(mode);
        Surroundings::Workload(folder.Path());
        EXPECT_EQ(std::fegetround(), mode);
    }
}

#ifdef __SSE2__

constexpr unsigned int kFlushToZero = 0x8000;
constexpr unsigned int kDenormalsAreZero = 0x0040;
constexpr unsigned int kRaisedFlags = 0x003F;

class TScopedFlushing {
public:
    explicit TScopedFlushing(unsigned int bits) : before(_mm_getcsr()) { _mm_setcsr(before | bits); }
    ~TScopedFlushing() { _mm_setcsr(before); }
    TScopedFlushing(const TScopedFlushing&) = delete;
    TScopedFlushing& operator=(const TScopedFlushing&) = delete;

private:
    unsigned int before;
};

TEST(SurroundingsFloatingPoint, ArithmeticIsTheLiteralOneWhenSmallNumbersAreFlushed)
{
    for (const unsigned int bits : {kFlushToZero, kDenormalsAreZero, kFlushToZero | kDenormalsAreZero}) {
        SCOPED_TRACE(bits);
        TRandomImages images(7);
        const std::vector<Literal::TImage> frames = images.Stack(3, 11, 6);
        for (const float reference : {1.0f, 1e-18f, 2e-20f}) { // products that are normal, and that are not
            const TTestObject object;
            ASSERT_EQ(object.AddFrames("dark", frames, reference, 1e-19f), 0u); // while nothing was flushed
            const TScopedFlushing flushing(bits);
            ASSERT_EQ(object->SetActiveCorrection("dark"), 0u);
            ExpectLiteralArithmetic(object, frames, 1e-19f, 1e-20f);
            ExpectLiteralArithmetic(object, frames, 1.0f, 1e-39f);
            ExpectLiteralArithmetic(object, frames, 1e-19f, 3e-19f);
        }
    }
}

// 1e-20 * 1e-20 is a number, if a small one, until it is flushed: the correction is then refused like any other with
// a product of zero.
TEST(SurroundingsFloatingPoint, AProductThatIsFlushedIsZero)
{
    const std::vector<Literal::TImage> frames = {{1, 1, {1}}};
    const TTestObject object;
    EXPECT_EQ(object.AddFrames("a", frames, 1e-20f, 1e-20f), 0u);
    const TScopedFlushing flushing(kFlushToZero);
    EXPECT_EQ(object.AddFrames("b", frames, 1e-20f, 1e-20f), 513u);
    EXPECT_NE(object.Message().find("product is zero"), std::string::npos);
}

TEST(SurroundingsFloatingPoint, AnExposureThatCountsAsZeroIsNotGreaterThanZero)
{
    const std::vector<Literal::TImage> frames = {{1, 1, {1}}};
    const TTestObject object;
    EXPECT_EQ(object.AddFrames("a", frames, 1e-39f, 1e10f), 0u);
    const TScopedFlushing flushing(kDenormalsAreZero);
    EXPECT_EQ(object.AddFrames("b", frames, 1e-39f, 1e10f), 518u);
    EXPECT_EQ(object.AddFrames("b", frames, 1e10f, 1e-39f), 519u);
}

TEST(SurroundingsFloatingPoint, FlushingIsLeftAsItWas)
{
    const TTemporaryFolder folder;
    const TScopedFlushing flushing(kFlushToZero | kDenormalsAreZero);
    const unsigned int before = _mm_getcsr() & ~kRaisedFlags;
    Surroundings::Workload(folder.Path());
    EXPECT_EQ(_mm_getcsr() & ~kRaisedFlags, before);
}

#endif

} // namespace
