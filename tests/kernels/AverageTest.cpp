#include "kernels/Kernels.h"

#include "model/LiteralArithmetic.h"
#include "support/RandomImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

std::vector<std::uint16_t> AverageOf(const std::vector<Literal::TImage>& frames)
{
    std::vector<const std::uint16_t*> pointers;
    for (const Literal::TImage& frame : frames) {
        pointers.push_back(frame.pixels.data());
    }
    const std::size_t count = frames.front().pixels.size();
    std::vector<float> scratch(Kernels::AverageScratchLength(count), std::nanf(""));
    std::vector<std::uint16_t> output(count, 4711);
    Kernels::Average(output.data(), pointers.data(), pointers.size(), count, scratch.data());
    return output;
}

TEST(Average, EqualsTheLiteralArithmeticOnAwkwardSizes)
{
    TRandomImages random(1);
    for (const TImageSize size : kAwkwardSizes) {
        for (const int frameCount : {1, 2, 3, 5, 10}) {
            const auto frames = random.Stack(frameCount, size.width, size.height);
            ASSERT_EQ(AverageOf(frames), Literal::Average(frames).pixels)
                << frameCount << " frames of " << size.width << " x " << size.height;
        }
    }
}

TEST(Average, EqualsTheLiteralArithmeticOnALargeImage)
{
    TRandomImages random(8);
    for (const int frameCount : {2, 3, 4, 5, 9}) {
        const auto frames = random.Stack(frameCount, kLargeSize.width, kLargeSize.height);
        ASSERT_EQ(AverageOf(frames), Literal::Average(frames).pixels) << frameCount << " frames";
    }
}

TEST(Average, RoundsHalfUp)
{
    EXPECT_THAT(AverageOf({{3, 1, {1, 1, 0}}, {3, 1, {2, 1, 65535}}}), testing::ElementsAre(2, 1, 32768));
    EXPECT_THAT(AverageOf({{1, 1, {0}}, {1, 1, {0}}, {1, 1, {1}}}), testing::ElementsAre(0));
    EXPECT_THAT(AverageOf({{1, 1, {0}}, {1, 1, {1}}, {1, 1, {1}}}), testing::ElementsAre(1));
}

TEST(Average, LosesLowBitsOfLargeSumsAsSinglePrecisionDoes)
{
    TRandomImages random(2);
    for (const int frameCount : {256, 257, 300, 400}) {
        const auto frames = random.Stack(frameCount, 641, 7, 65400, 65535);
        const Literal::TImage expected = Literal::Average(frames);
        ASSERT_EQ(AverageOf(frames), expected.pixels) << frameCount << " frames";

        std::size_t differingFromExactMean = 0;
        for (std::size_t i = 0; i < expected.pixels.size(); ++i) {
            std::uint64_t sum = 0;
            for (const Literal::TImage& frame : frames) {
                sum += frame.pixels[i];
            }
            const std::uint64_t count = static_cast<std::uint64_t>(frameCount);
            differingFromExactMean += (2 * sum + count) / (2 * count) != expected.pixels[i] ? 1u : 0u;
        }
        if (frameCount >= 300) {
            EXPECT_GT(differingFromExactMean, 0u) << "these frames cannot show the loss";
        }
    }
}

TEST(Average, AddsTheFramesInTheirOrder)
{
    // Ones vanish next to a sum beyond 2^24, but not before it.
    std::vector<Literal::TImage> frames(300, FlatImage(1, 1, 65535));
    frames.resize(3300, FlatImage(1, 1, 1));
    const std::vector<std::uint16_t> brightFirst = AverageOf(frames);
    const std::vector<Literal::TImage> reversed(frames.rbegin(), frames.rend());
    const std::vector<std::uint16_t> brightLast = AverageOf(reversed);
    EXPECT_EQ(brightFirst, Literal::Average(frames).pixels);
    EXPECT_EQ(brightLast, Literal::Average(reversed).pixels);
    EXPECT_NE(brightFirst, brightLast) << "these frames cannot show the order";
}

TEST(Average, KeepsTheLow16BitsOfAMeanThatRoundedBeyondThem)
{
    EXPECT_THAT(AverageOf(std::vector<Literal::TImage>(510, FlatImage(3, 1, 65535))), testing::Each(65535));
    EXPECT_THAT(AverageOf(std::vector<Literal::TImage>(511, FlatImage(3, 1, 65535))), testing::Each(0));
}

TEST(Average, OfNoPixelsTouchesNothing)
{
    std::uint16_t output = 4711;
    const std::uint16_t frame = 1;
    const std::uint16_t* const frames[] = {&frame, &frame};
    float scratch = 0.0f;
    Kernels::Average(&output, frames, 2, 0, &scratch);
    EXPECT_EQ(output, 4711);
}

} // namespace
