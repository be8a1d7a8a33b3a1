#include "kernels/Kernels.h"

#include "model/LiteralArithmetic.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

TEST(Subtract, ClampsAtZero)
{
    const std::uint16_t image[] = {0, 0, 5, 6, 7, 65535, 65535, 32768, 32767};
    const std::uint16_t background[] = {0, 1, 6, 6, 6, 0, 65535, 32767, 32768};
    const std::vector<std::uint16_t> expected = {0, 0, 0, 0, 1, 65535, 0, 1, 0};
    std::vector<std::uint16_t> output(9, 4711);
    Kernels::SubtractInto(output.data(), image, background, 9);
    EXPECT_EQ(output, expected);
    std::vector<std::uint16_t> inPlace(image, image + 9);
    Kernels::SubtractInPlace(inPlace.data(), background, 9);
    EXPECT_EQ(inPlace, expected);
}

TEST(Subtract, EqualsTheLiteralArithmeticAtEveryLength)
{
    TRandomImages random(6);
    std::vector<int> lengths(131);
    std::iota(lengths.begin(), lengths.end(), 0);
    lengths.push_back(kLargeSize.width * kLargeSize.height);
    for (const int length : lengths) {
        const std::size_t count = static_cast<std::size_t>(length);
        const Literal::TImage image = random.Image(length, 1);
        const Literal::TImage background = random.Image(length, 1);
        std::vector<std::uint16_t> expected = Literal::Subtract(image, background).pixels;
        expected.push_back(4711); // the pixel behind the last one stays

        std::vector<std::uint16_t> output(count + 1, 4711);
        Kernels::SubtractInto(output.data(), image.pixels.data(), background.pixels.data(), count);
        ASSERT_EQ(output, expected) << length;

        std::vector<std::uint16_t> inPlace = image.pixels;
        inPlace.push_back(4711);
        Kernels::SubtractInPlace(inPlace.data(), background.pixels.data(), count);
        ASSERT_EQ(inPlace, expected) << length << " in place";
    }
}

} // namespace
