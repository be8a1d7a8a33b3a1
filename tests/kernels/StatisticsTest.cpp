#include "kernels/Kernels.h"

#include "model/LiteralArithmetic.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

void ExpectStatistics(const std::vector<std::uint16_t>& pixels, int minimum, int maximum, int average)
{
    const Kernels::TStatistics statistics = Kernels::CalculateStatistics(pixels.data(), pixels.size());
    EXPECT_EQ(statistics.minimum, minimum);
    EXPECT_EQ(statistics.maximum, maximum);
    EXPECT_EQ(statistics.average, average);
}

TEST(Statistics, TruncateTheAverage)
{
    ExpectStatistics({1, 2, 2}, 1, 2, 1);
    ExpectStatistics({2, 3, 3, 3, 3, 3, 3, 3, 3, 3}, 2, 3, 2);
    ExpectStatistics({65535, 65535, 65534}, 65534, 65535, 65534);
}

TEST(Statistics, OfASinglePixel)
{
    ExpectStatistics({4711}, 4711, 4711, 4711);
    ExpectStatistics({0}, 0, 0, 0);
    ExpectStatistics({65535}, 65535, 65535, 65535);
}

TEST(Statistics, FindTheExtremesWhereverTheyAre)
{
    for (std::size_t length = 1; length <= 200; ++length) {
        for (std::size_t i = 0; i < length; ++i) {
            std::vector<std::uint16_t> pixels(length, 1000);
            pixels[i] = 3;
            ASSERT_EQ(Kernels::CalculateStatistics(pixels.data(), length).minimum, 3) << i << " of " << length;
            pixels[i] = 60000;
            ASSERT_EQ(Kernels::CalculateStatistics(pixels.data(), length).maximum, 60000) << i << " of " << length;
        }
    }
}

TEST(Statistics, EqualTheLiteralArithmeticOnAwkwardSizes)
{
    TRandomImages random(7);
    for (const TImageSize size : kAwkwardSizes) {
        const std::vector<std::uint16_t> pixels = random.Image(size.width, size.height).pixels;
        const Literal::TStatistics expected = Literal::CalculateStatistics(pixels);
        ExpectStatistics(pixels, expected.minimum, expected.maximum, expected.average);
    }
}

TEST(Statistics, KeepEveryBitOfALargeSum)
{
    // Beyond 2^32 as a sum, and with a remainder that single precision would not see.
    std::vector<std::uint16_t> pixels(200001, 65535);
    pixels.back() = 65534;
    ExpectStatistics(pixels, 65534, 65535, 65534);
}

} // namespace
