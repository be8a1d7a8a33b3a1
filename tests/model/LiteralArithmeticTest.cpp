// The reference itself, on examples worked out by hand.
#include "model/LiteralArithmetic.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using testing::ElementsAre;

TEST(LiteralArithmetic, AveragesRoundingHalfUp)
{
    EXPECT_THAT(Literal::Average({{3, 1, {1, 1, 65535}}, {3, 1, {2, 1, 65534}}}).pixels, ElementsAre(2, 1, 65535));
    EXPECT_THAT(Literal::Average({{1, 1, {0}}, {1, 1, {0}}, {1, 1, {1}}}).pixels, ElementsAre(0));
}

TEST(LiteralArithmetic, MedianMirrorsTheLeftAndRepeatsTheRight)
{
    // Padded rows: 8 1 8 3 3 and 4 9 4 2 2, each with itself above or below.
    EXPECT_THAT(Literal::Median({3, 2, {1, 8, 3, 9, 4, 2}}).pixels, ElementsAre(8, 3, 3, 4, 4, 3));
}

TEST(LiteralArithmetic, MedianOfAColumnTakesTheNextRowAsLeftPad)
{
    // Padded rows: 5 1 1, 9 5 5, 9 9 9.
    EXPECT_THAT(Literal::Median({1, 3, {1, 5, 9}}).pixels, ElementsAre(5, 5, 9));
}

TEST(LiteralArithmetic, RegionRunsOnIntoTheNextRowAndIsZeroBeyondTheLast)
{
    const Literal::TImage image{3, 2, {1, 2, 3, 4, 5, 6}};
    EXPECT_THAT(Literal::CopyRegion(image, 1, 0, 2, 2).pixels, ElementsAre(2, 3, 5, 6));
    EXPECT_THAT(Literal::CopyRegion(image, 2, 0, 2, 2).pixels, ElementsAre(3, 4, 6, 0));
    EXPECT_THAT(Literal::CopyRegion(image, 2, 1, 2, 2).pixels, ElementsAre(6, 0, 0, 0));
}

TEST(LiteralArithmetic, RegionOfAnImageThatBecameNarrowerTakesItsPixelsByAddress)
{
    const Literal::TImage image{2, 8, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}};
    EXPECT_THAT(Literal::CopyRegion(image, 0, 0, 4, 4).pixels,
                ElementsAre(0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7, 8, 9));
}

TEST(LiteralArithmetic, ScalesRoundingHalfUpAndClamping)
{
    EXPECT_THAT(Literal::Scale({4, 1, {1000, 1001, 65535, 0}}, 0.5f).pixels, ElementsAre(500, 501, 32768, 0));
    EXPECT_THAT(Literal::Scale({3, 1, {32768, 32767, 1}}, 2.0f).pixels, ElementsAre(65535, 65534, 2));
    EXPECT_THAT(Literal::Scale({2, 1, {3, 0}}, -1.0f).pixels, ElementsAre(0, 0));
}

TEST(LiteralArithmetic, ScalesByWhatIsNoNumberToZeroAndByInfinityToWhite)
{
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_THAT(Literal::Scale({2, 1, {3, 0}}, std::nanf("")).pixels, ElementsAre(0, 0));
    EXPECT_THAT(Literal::Scale({2, 1, {3, 0}}, infinity).pixels, ElementsAre(65535, 0));
    EXPECT_THAT(Literal::Scale({2, 1, {3, 0}}, -infinity).pixels, ElementsAre(0, 0));
}

TEST(LiteralArithmetic, SubtractsDownToZero)
{
    EXPECT_THAT(Literal::Subtract({3, 1, {5, 6, 7}}, {3, 1, {6, 6, 6}}).pixels, ElementsAre(0, 0, 1));
}

TEST(LiteralArithmetic, StatisticsTruncateTheAverage)
{
    const Literal::TStatistics statistics = Literal::CalculateStatistics({2, 1, 2});
    EXPECT_EQ(statistics.minimum, 1);
    EXPECT_EQ(statistics.maximum, 2);
    EXPECT_EQ(statistics.average, 1);
}

} // namespace
