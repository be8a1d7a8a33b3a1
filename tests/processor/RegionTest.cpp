#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

namespace {

using testing::ElementsAre;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

struct TRegion {
    int left;
    int top;
    int width;
    int height;
};

TOutcome Set(const TTestObject& object, const TRegion& region)
{
    return object.Outcome(object->SetRegion(region.left, region.top, region.width, region.height));
}

std::string OutOfRange(const char* name, int value)
{
    return "The input " + std::string(name) + " [ " + std::to_string(value) + " ] is out of range.";
}

struct TRefusal {
    TRegion region;
    unsigned int code;
    std::string text;
};

TEST(Region, WithoutAnActiveCorrectionOnlySignsAndSizesCount)
{
    const TRefusal refusals[] = {
        {{-1, 0, 1, 1}, 513, OutOfRange("left", -1)},          {{0, -1, 1, 1}, 514, OutOfRange("top", -1)},
        {{0, 0, 0, 1}, 515, OutOfRange("width", 0)},           {{0, 0, -3, 1}, 515, OutOfRange("width", -3)},
        {{0, 0, 1, 0}, 516, OutOfRange("height", 0)},          {{0, 0, 1, -3}, 516, OutOfRange("height", -3)},
        {{-1, -1, 0, 0}, 513, OutOfRange("left", -1)},         {{0, -1, 0, 0}, 514, OutOfRange("top", -1)},
        {{0, 0, 0, 0}, 515, OutOfRange("width", 0)},           {{kLeast, 0, 1, 1}, 513, OutOfRange("left", kLeast)},
        {{0, 0, kLeast, 1}, 515, OutOfRange("width", kLeast)},
    };
    for (const TRefusal& row : refusals) {
        const TTestObject object;
        object->SetRegion(1, 2, 3, 4);
        EXPECT_EQ(Set(object, row.region), (TOutcome{row.code, row.text}));
        EXPECT_THAT(object.Region(), ElementsAre(1, 2, 3, 4));
    }
    for (const TRegion& region :
         {TRegion{5000, 5000, 10, 10}, TRegion{0, 0, 1, 1}, TRegion{kMost, kMost, kMost, kMost}}) {
        const TTestObject object;
        EXPECT_EQ(Set(object, region), (TOutcome{0, ""}));
        EXPECT_THAT(object.Region(), ElementsAre(region.left, region.top, region.width, region.height));
    }
}

class RegionOfActiveCorrection : public testing::Test {
protected:
    RegionOfActiveCorrection()
    {
        object.StoreDescription("active", 100, 60);
        object->SetActiveCorrection("active");
        object->SetRegion(1, 2, 3, 4);
    }

    TTestObject object;
};

TEST_F(RegionOfActiveCorrection, AcceptsWhatFits)
{
    for (const TRegion& region :
         {TRegion{0, 0, 100, 60}, TRegion{99, 0, 1, 1}, TRegion{0, 59, 1, 1}, TRegion{99, 59, 1, 1},
          TRegion{98, 58, 2, 2}, TRegion{1, 0, 99, 60}, TRegion{0, 1, 100, 59}}) {
        EXPECT_EQ(Set(object, region), (TOutcome{0, ""}));
        EXPECT_THAT(object.Region(), ElementsAre(region.left, region.top, region.width, region.height));
    }
}

TEST_F(RegionOfActiveCorrection, RefusesWhatDoesNotFitAndStaysAsItWas)
{
    const TRefusal refusals[] = {
        // One pixel too far, at every edge.
        {{100, 0, 1, 1}, 513, OutOfRange("left", 100)},
        {{0, 60, 1, 1}, 514, OutOfRange("top", 60)},
        {{0, 0, 101, 10}, 515, OutOfRange("width", 101)},
        {{99, 0, 2, 1}, 515, OutOfRange("width", 2)},
        {{0, 0, 1, 61}, 516, OutOfRange("height", 61)},
        {{0, 59, 1, 2}, 516, OutOfRange("height", 2)},
        // Signs.
        {{-1, 0, 1, 1}, 513, OutOfRange("left", -1)},
        {{0, -1, 1, 1}, 514, OutOfRange("top", -1)},
        {{0, 0, 0, 1}, 515, OutOfRange("width", 0)},
        {{0, 0, 1, 0}, 516, OutOfRange("height", 0)},
        {{0, 0, -1, -1}, 515, OutOfRange("width", -1)},
        // Several at once: the first decides.
        {{100, 60, 101, 61}, 513, OutOfRange("left", 100)},
        {{99, 60, 101, 61}, 514, OutOfRange("top", 60)},
        {{99, 59, 101, 61}, 515, OutOfRange("width", 101)},
        {{99, 59, 1, 61}, 516, OutOfRange("height", 61)},
        // Sums that do not fit 32 bits.
        {{kMost, 0, 1, 1}, 513, OutOfRange("left", kMost)},
        {{0, kMost, 1, 1}, 514, OutOfRange("top", kMost)},
        {{1, 0, kMost, 1}, 515, OutOfRange("width", kMost)},
        {{0, 1, 1, kMost}, 516, OutOfRange("height", kMost)},
        {{99, 59, kMost, kMost}, 515, OutOfRange("width", kMost)},
    };
    for (const TRefusal& row : refusals) {
        EXPECT_EQ(Set(object, row.region), (TOutcome{row.code, row.text}));
        EXPECT_THAT(object.Region(), ElementsAre(1, 2, 3, 4));
    }
}

// What a file describes without pixels can claim any size. From 2^31 on it is negative, and no region lies within.
TEST(RegionOfAHugeDescription, IsSignedAndRefusesEveryRegion)
{
    struct TRow {
        std::uint32_t width;
        std::uint32_t height;
        TRegion region;
        unsigned int code;
        std::string text;
    };
    constexpr std::uint32_t kAllBits = 0xFFFFFFFF;
    constexpr std::uint32_t kLowest = 0x80000000;
    const TRow rows[] = {
        // all have more pixels than memory is asked for
        {kAllBits, 60, {0, 0, 1, 1}, 513, OutOfRange("left", 0)},
        {kAllBits, 60, {7, 99, 0, 0}, 513, OutOfRange("left", 7)},
        {kAllBits, kAllBits, {0, 0, 1, 1}, 513, OutOfRange("left", 0)},
        {kLowest, 60, {kMost, 0, 1, 1}, 513, OutOfRange("left", kMost)},
        {100, kAllBits, {0, 0, 1, 1}, 514, OutOfRange("top", 0)},
        {100, kAllBits, {99, 5, 1, 1}, 514, OutOfRange("top", 5)},
        {100, kAllBits, {100, 5, 1, 1}, 513, OutOfRange("left", 100)},
        {100, kLowest, {0, kMost, 1, 1}, 514, OutOfRange("top", kMost)},
        {0x7FFFFFFF, 2, {kMost, 0, 1, 1}, 513, OutOfRange("left", kMost)},
        {0x7FFFFFFF, 2, {kMost - 1, 0, 2, 1}, 515, OutOfRange("width", 2)},
        {0x7FFFFFFF, 2, {2, 0, kMost, 1}, 515, OutOfRange("width", kMost)},
        {0x7FFFFFFF, 2, {kMost - 1, 0, 1, 1}, 0, ""},
    };
    std::unique_ptr<TTestObject> made;
    const TRow* previous = nullptr;
    for (const TRow& row : rows) {
        // One object for the rows of one size, since refusals change nothing: activating 2^31 pixels takes 4 GB.
        if (previous == nullptr || previous->width != row.width || previous->height != row.height) {
            made = std::make_unique<TTestObject>();
            ASSERT_EQ((*made).StoreDescription("huge", row.width, row.height), 0u);
            ASSERT_EQ((*made)->SetActiveCorrection("huge"), 0u);
            (*made)->SetActiveCorrection(nullptr);
            (*made)->SetRegion(1, 2, 3, 4);
            ASSERT_EQ((*made)->SetActiveCorrection("huge"), 0u);
        }
        previous = &row;
        const TTestObject& object = *made;
        const std::vector<int> before = object.Region();
        EXPECT_EQ(object->SetRegion(row.region.left, row.region.top, row.region.width, row.region.height), row.code);
        if (row.code != 0) {
            EXPECT_EQ(object.Message(), row.text) << row.width << " x " << row.height;
            EXPECT_EQ(object.Region(), before);
        }
    }
}

TEST(RegionOfAHugeDescription, LeavesTheTextOfItsFirstCheckAtActivation)
{
    const struct {
        std::uint32_t width;
        std::uint32_t height;
        std::string text;
    } rows[] = {{0xFFFFFFFF, 60, OutOfRange("left", 0)},
                {100, 0xFFFFFFFF, OutOfRange("top", 0)},
                {0x80000000, 0x80000000, OutOfRange("left", 0)}};
    for (const auto& row : rows) {
        const TTestObject object;
        object->SetRegion(1, 2, 3, 4);
        ASSERT_EQ(object.StoreDescription("huge", row.width, row.height), 0u);
        EXPECT_EQ(object->SetActiveCorrection("huge"), 0u);
        EXPECT_EQ(object.Message(), row.text);
        EXPECT_STREQ(object->GetActiveCorrectionKey(), "huge");
        EXPECT_THAT(object.Region(), ElementsAre(1, 2, 3, 4));
    }
}

TEST_F(RegionOfActiveCorrection, RefusalKeepsTheScaledBackground)
{
    object.Store("pixels", {3, 2, {1, 2, 3, 4, 5, 6}});
    object->SetActiveCorrection("pixels");
    object->SetRegion(1, 0, 2, 2);
    EXPECT_EQ(object->SetRegion(2, 0, 2, 2), 515u);
    EXPECT_THAT(object.Background(), ElementsAre(2, 3, 5, 6));
}

TEST(GetRegion, ChecksItsPointersInOrderAndWritesNothingOnFailure)
{
    const TTestObject object;
    object->SetRegion(1, 2, 3, 4);
    const TOutcome refusals[] = {{513, "The input left is NULL."},
                                 {514, "The input top is NULL."},
                                 {515, "The input width is NULL."},
                                 {515, "The input height is NULL."}};
    for (std::size_t null = 0; null < 4; ++null) {
        for (const bool areLaterOnesNullToo : {false, true}) {
            int values[4] = {-9, -9, -9, -9};
            int* pointers[4] = {&values[0], &values[1], &values[2], &values[3]};
            for (std::size_t i = null; i < (areLaterOnesNullToo ? 4 : null + 1); ++i) {
                pointers[i] = nullptr;
            }
            EXPECT_EQ(object.Outcome(object->GetRegion(pointers[0], pointers[1], pointers[2], pointers[3])),
                      refusals[null]);
            EXPECT_THAT(values, ElementsAre(-9, -9, -9, -9));
        }
    }
    EXPECT_THAT(object.Region(), ElementsAre(1, 2, 3, 4));
}

} // namespace
