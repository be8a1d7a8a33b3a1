#include "kernels/Kernels.h"

#include "model/LiteralArithmetic.h"
#include "support/RandomImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<std::uint16_t> MedianOf(const Literal::TImage& image)
{
    const std::size_t width = static_cast<std::size_t>(image.width);
    std::vector<std::uint16_t> pixels = image.pixels;
    std::vector<std::uint16_t> scratch(Kernels::MedianScratchLength(width), 4711);
    Kernels::Median3x3(pixels.data(), width, static_cast<std::size_t>(image.height), scratch.data());
    return pixels;
}

TEST(Median, EqualsTheLiteralArithmeticOnAwkwardSizes)
{
    TRandomImages random(3);
    for (const TImageSize size : kAwkwardSizes) {
        for (const std::uint16_t highest : {std::uint16_t{3}, std::uint16_t{65535}}) { // many equal values, and few
            for (int round = 0; round < 5; ++round) {
                const Literal::TImage image = random.Image(size.width, size.height, 0, highest);
                ASSERT_EQ(MedianOf(image), Literal::Median(image).pixels)
                    << size.width << " x " << size.height << ", values to " << highest;
            }
        }
    }
}

TEST(Median, EqualsTheLiteralArithmeticForEverySmallSize)
{
    TRandomImages random(4);
    for (int width = 1; width <= 40; ++width) {
        for (int height = 1; height <= 4; ++height) {
            const Literal::TImage image = random.Image(width, height);
            ASSERT_EQ(MedianOf(image), Literal::Median(image).pixels) << width << " x " << height;
        }
    }
}

TEST(Median, EqualsTheLiteralArithmeticOnALargeImage)
{
    TRandomImages random(9);
    const Literal::TImage image = random.Image(kLargeSize.width, kLargeSize.height);
    ASSERT_EQ(MedianOf(image), Literal::Median(image).pixels);
}

TEST(Median, FindsTheFifthOfNineInEveryOrder)
{
    // Of nine different values only the order of each with the median matters: every choice of the four smaller ones.
    for (unsigned int smaller = 0; smaller < 256; ++smaller) {
        Literal::TImage image = FlatImage(3, 3, 500);
        unsigned int count = 0;
        for (unsigned int i = 0; i < 8; ++i) {
            const bool isSmaller = (smaller >> i & 1u) != 0;
            count += isSmaller ? 1u : 0u;
            image.pixels[i < 4 ? i : i + 1] = static_cast<std::uint16_t>(isSmaller ? i : 1000 + i);
        }
        if (count == 4) {
            ASSERT_EQ(MedianOf(image)[4], 500) << "smaller ones " << smaller;
        }
    }
}

TEST(Median, MirrorsTheLeftEdgeAndRepeatsTheRightEdge)
{
    EXPECT_THAT(MedianOf({3, 2, {1, 8, 3, 9, 4, 2}}), testing::ElementsAre(8, 3, 3, 4, 4, 3));
}

TEST(Median, OfAColumnTakesTheNextRowAsLeftPadAndInTheLastRowItself)
{
    EXPECT_THAT(MedianOf({1, 3, {1, 5, 9}}), testing::ElementsAre(5, 5, 9));
    EXPECT_THAT(MedianOf({1, 2, {7, 3}}), testing::ElementsAre(3, 3));
}

TEST(Median, LeavesAFlatImageAsItIs)
{
    for (const TImageSize size : kAwkwardSizes) {
        ASSERT_THAT(MedianOf(FlatImage(size.width, size.height, 777)), testing::Each(777));
    }
}

TEST(Median, RemovesASinglePixelThatStandsOut)
{
    for (const std::uint16_t value : {std::uint16_t{0}, std::uint16_t{65535}}) {
        Literal::TImage image = FlatImage(5, 5, 100);
        image.pixels[12] = value;
        EXPECT_THAT(MedianOf(image), testing::Each(100));
    }
}

TEST(Median, OfNoRowsTouchesNothing)
{
    std::uint16_t pixel = 5;
    std::vector<std::uint16_t> scratch(Kernels::MedianScratchLength(1));
    Kernels::Median3x3(&pixel, 1, 0, scratch.data());
    EXPECT_EQ(pixel, 5);
}

} // namespace
