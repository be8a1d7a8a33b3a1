// The byte order of pixels; on machines that store the low byte first nothing else swaps.
#include "file/ByteOrder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

TEST(ByteOrder, IsThatOfTheMachine)
{
    const std::uint16_t value = 0x0102;
    unsigned char bytes[2];
    std::memcpy(bytes, &value, 2);
    EXPECT_EQ(ByteOrder::IsLittleEndian(), bytes[0] == 2);
}

TEST(ByteOrder, SwapsEveryPixel)
{
    std::vector<std::uint16_t> pixels = {0x0000, 0x0001, 0x0100, 0x1234, 0xFFFE, 0x7FFF};
    ByteOrder::Swap(pixels.data(), pixels.size() - 1);
    EXPECT_EQ(pixels, (std::vector<std::uint16_t>{0x0000, 0x0100, 0x0001, 0x3412, 0xFEFF, 0x7FFF}));
}

} // namespace
