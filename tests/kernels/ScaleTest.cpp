#include "kernels/Kernels.h"

#include "model/LiteralArithmetic.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<std::uint16_t> Scale(const std::vector<std::uint16_t>& pixels, float factor)
{
    std::vector<std::uint16_t> output(pixels.size(), 4711);
    Kernels::Scale(output.data(), pixels.data(), pixels.size(), factor);
    return output;
}

Literal::TImage EveryPixelValue()
{
    Literal::TImage image = FlatImage(65536, 1, 0);
    std::iota(image.pixels.begin(), image.pixels.end(), std::uint16_t{0});
    return image;
}

TEST(Scale, EqualsTheLiteralArithmeticForEveryPixelValue)
{
    const float factors[] = {0.0f,        -0.0f,      1.0f,        0.5f,        2.0f,       0.1f,
                             1.0f / 3.0f, 1.0000001f, 0.99999994f, 0.49999997f,
                             7.7e-6f, // around half of the smallest step
                             1e-44f,      32767.5f,   65535.0f,    65536.0f,
                             1e10f, // beyond 32 bits
                             3e38f, // beyond single precision
                             -1e-6f,      -0.7f,      -1e10f,      kInfinity,   -kInfinity, std::nanf("")};
    const Literal::TImage image = EveryPixelValue();
    for (const float factor : factors) {
        ASSERT_EQ(Scale(image.pixels, factor), Literal::Scale(image, factor).pixels) << "factor " << factor;
    }
}

TEST(Scale, RoundsHalfUp)
{
    EXPECT_EQ(Scale({1000, 1001, 1}, 0.5f), (std::vector<std::uint16_t>{500, 501, 1}));
    EXPECT_EQ(Scale({1}, 0.49999997f), std::vector<std::uint16_t>{0}) << "the half is added in double precision";
}

TEST(Scale, ClampsToTheRangeOfAPixel)
{
    EXPECT_EQ(Scale({32767, 32768, 65535}, 2.0f), (std::vector<std::uint16_t>{65534, 65535, 65535}));
    EXPECT_EQ(Scale({0, 1, 65535}, -3.0f), (std::vector<std::uint16_t>{0, 0, 0}));
    EXPECT_EQ(Scale({0, 1, 65535}, 3e38f), (std::vector<std::uint16_t>{0, 65535, 65535}));
}

TEST(Scale, OfInfinityGivesWhiteExceptForZero)
{
    EXPECT_EQ(Scale({0, 1, 65535}, kInfinity), (std::vector<std::uint16_t>{0, 65535, 65535}));
    EXPECT_EQ(Scale({0, 1, 65535}, -kInfinity), (std::vector<std::uint16_t>{0, 0, 0}));
}

TEST(Scale, OfNotANumberGivesZero)
{
    EXPECT_EQ(Scale({0, 1, 65535}, std::nanf("")), (std::vector<std::uint16_t>{0, 0, 0}));
}

TEST(Scale, WorksInPlaceAtEveryLength)
{
    TRandomImages random(5);
    for (int length = 1; length <= 70; ++length) {
        const Literal::TImage image = random.Image(length, 1);
        std::vector<std::uint16_t> pixels = image.pixels;
        pixels.push_back(4711);
        Kernels::Scale(pixels.data(), pixels.data(), static_cast<std::size_t>(length), 0.3f);
        ASSERT_EQ(pixels.back(), 4711) << "written beyond " << length;
        pixels.pop_back();
        ASSERT_EQ(pixels, Literal::Scale(image, 0.3f).pixels) << length;
    }
}

} // namespace
