// Hashes of texts.
#include "data/containers/TextHash.h"

#include "platform/Text.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

constexpr TextHash::TSeed kSeed = {0x0123456789ABCDEFu, 0xFEDCBA9876543210u};

std::string WithByte(std::size_t position, int byte)
{
    std::string text = "abcdefghijk";
    text[position] = static_cast<char>(byte);
    return text;
}

// In the first word, at its end, and in the rest behind it.
TEST(TextHash, IsEqualExactlyForTextsThatAreEqualButForCase)
{
    for (const std::size_t position : {0u, 7u, 8u, 10u}) {
        for (int left = 1; left < 256; ++left) {
            const std::string leftText = WithByte(position, left);
            const std::uint64_t leftHash = TextHash::OfIgnoringCase(leftText.c_str(), kSeed);
            for (int right = 1; right < 256; ++right) {
                const std::string rightText = WithByte(position, right);
                ASSERT_EQ(leftHash == TextHash::OfIgnoringCase(rightText.c_str(), kSeed),
                          Platform::CompareIgnoringCase(leftText.c_str(), rightText.c_str()) == 0)
                    << left << " and " << right << " at " << position;
                ASSERT_EQ(TextHash::Of(leftText.c_str(), kSeed) == TextHash::Of(rightText.c_str(), kSeed),
                          left == right)
                    << left << " and " << right << " at " << position;
            }
        }
    }
}

TEST(TextHash, DiffersForEveryLengthOfTheSameLetter)
{
    std::set<std::uint64_t> exact;
    std::set<std::uint64_t> ignoringCase;
    for (std::size_t length = 0; length <= 600; ++length) {
        const std::string text(length, 'a');
        exact.insert(TextHash::Of(text.c_str(), kSeed));
        ignoringCase.insert(TextHash::OfIgnoringCase(text.c_str(), kSeed));
        EXPECT_EQ(TextHash::OfIgnoringCase(std::string(length, 'A').c_str(), kSeed),
                  TextHash::OfIgnoringCase(text.c_str(), kSeed));
    }
    EXPECT_EQ(exact.size(), 601u);
    EXPECT_EQ(ignoringCase.size(), 601u);
}

// Keys of a store differ in a few digits; their lowest bits choose the cell.
TEST(TextHash, SpreadsKeysThatAreAlike)
{
    constexpr unsigned int kCells = 1024;
    unsigned int counts[kCells] = {};
    for (unsigned int i = 0; i < 16 * kCells; ++i) {
        ++counts[TextHash::OfIgnoringCase(("Exposure,1,Gain,2,key " + std::to_string(i)).c_str(), kSeed) % kCells];
    }
    for (const unsigned int count : counts) {
        EXPECT_LT(count, 16u + 6 * 4u) << "more than six standard deviations above the mean";
    }
}

TEST(TextHash, DependsOnBothHalvesOfTheSeed)
{
    const std::uint64_t hash = TextHash::Of("key", kSeed);
    EXPECT_NE(hash, TextHash::Of("key", {kSeed.low + 1, kSeed.high}));
    EXPECT_NE(hash, TextHash::Of("key", {kSeed.low, kSeed.high + 1}));
}

TEST(TextHash, HasAnotherSeedForEveryObject)
{
    const TextHash::TSeed left = TextHash::SeedFor(0x1000);
    const TextHash::TSeed right = TextHash::SeedFor(0x1040);
    EXPECT_NE(left.low, right.low);
    EXPECT_NE(TextHash::Of("key", left), TextHash::Of("key", right));
}

} // namespace
