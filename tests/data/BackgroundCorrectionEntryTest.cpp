// Copies, regions and statistics of a built entry.
#include "data/TBackgroundCorrectionEntry.h"

#include "data/EntryBuilding.h"
#include "data/PixelMemory.h"
#include "support/AllocationFaults.h"
#include "support/RandomImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;

void ExpectSameDescription(const TBackgroundCorrectionEntry& copy, const TBackgroundCorrectionEntry& original)
{
    EXPECT_STREQ(copy.Key(), original.Key());
    EXPECT_EQ(copy.Width(), original.Width());
    EXPECT_EQ(copy.Height(), original.Height());
    EXPECT_EQ(copy.ReferenceExposureSeconds(), original.ReferenceExposureSeconds());
    EXPECT_EQ(copy.ReferenceIntensityPercent(), original.ReferenceIntensityPercent());
}

TEST(Entry, CopyHasEverythingAndPixelsOfItsOwn)
{
    auto original = std::make_unique<TBackgroundCorrectionEntry>(RowEntry("Dark", {1, 2, 3}));
    TBackgroundCorrectionEntry copy(*original);
    ExpectSameDescription(copy, *original);
    EXPECT_NE(copy.Pixels(), original->Pixels());
    original->MutablePixels()[0] = 99;
    EXPECT_THAT(PixelsOf(copy), ElementsAre(1, 2, 3));
    original.reset();
    EXPECT_THAT(PixelsOf(copy), ElementsAre(1, 2, 3));
}

TEST(Entry, AssignmentReplacesEverything)
{
    const TBackgroundCorrectionEntry source = RowEntry("Bright", {7, 8});
    TBackgroundCorrectionEntry target = RowEntry("dark", {1, 2, 3});
    target = source;
    ExpectSameDescription(target, source);
    EXPECT_NE(target.Pixels(), source.Pixels());
    EXPECT_THAT(PixelsOf(target), ElementsAre(7, 8));
}

TEST(Entry, AssignmentFreesTheOldPixels)
{
    const TBackgroundCorrectionEntry source = RowEntry("Bright", {7, 8});
    TBackgroundCorrectionEntry target = RowEntry("dark", {1, 2, 3});
    const std::size_t before = TAllocationFaults::LiveBlocks();
    target = source;
    EXPECT_EQ(TAllocationFaults::LiveBlocks(), before);
}

TEST(Entry, CopyOfAnEntryWithoutPixelsHasNone)
{
    TBackgroundCorrectionEntry described;
    described.Build("dark", nullptr, 0, 30, 20, 0.5f, 4.0f, false);
    const TBackgroundCorrectionEntry copy(described);
    ExpectSameDescription(copy, described);
    EXPECT_EQ(copy.Pixels(), nullptr);

    TBackgroundCorrectionEntry target = RowEntry("other", {1, 2, 3});
    target = described;
    ExpectSameDescription(target, described);
    EXPECT_EQ(target.Pixels(), nullptr);
}

TEST(Entry, AssignedToItselfLosesItsPixels)
{
    TBackgroundCorrectionEntry entry = RowEntry("dark", {1, 2, 3});
    const TBackgroundCorrectionEntry& alias = entry;
    entry = alias;
    EXPECT_EQ(entry.Pixels(), nullptr);
    EXPECT_STREQ(entry.Key(), "dark");
    EXPECT_EQ(entry.Width(), 3u);
}

TEST(Entry, MoveTakesThePixelsOver)
{
    TBackgroundCorrectionEntry source = RowEntry("dark", {1, 2, 3});
    const std::uint16_t* const pixels = source.Pixels();
    const TBackgroundCorrectionEntry moved(std::move(source));
    EXPECT_EQ(moved.Pixels(), pixels);
    EXPECT_STREQ(moved.Key(), "dark");
}

TEST(EntryStatistics, CoverTheWholeImage)
{
    TRandomImages random(20);
    const Literal::TImage image = random.Image(17, 5);
    TBackgroundCorrectionEntry entry;
    BuildFrom(entry, "k", {image}, false);
    const Literal::TStatistics expected = Literal::CalculateStatistics(image.pixels);
    EXPECT_EQ(entry.Statistics().minimum, expected.minimum);
    EXPECT_EQ(entry.Statistics().maximum, expected.maximum);
    EXPECT_EQ(entry.Statistics().average, expected.average);
}

TEST(EntryStatistics, AreComputedOnce)
{
    TBackgroundCorrectionEntry entry = RowEntry("k", {5, 5});
    entry.MutablePixels()[0] = 7;
    EXPECT_EQ(entry.Statistics().maximum, 7) << "computed at the first request";
    entry.MutablePixels()[0] = 9;
    EXPECT_EQ(entry.Statistics().maximum, 7) << "and kept";
}

TEST(EntryStatistics, TravelWithCopies)
{
    TBackgroundCorrectionEntry entry = RowEntry("k", {5, 5});
    TBackgroundCorrectionEntry staleCopy(entry);
    entry.Statistics();
    TBackgroundCorrectionEntry freshCopy(entry);
    TBackgroundCorrectionEntry assigned = RowEntry("other", {1, 2, 3});
    assigned.Statistics();
    assigned = entry;
    for (TBackgroundCorrectionEntry* const copy : {&staleCopy, &freshCopy, &assigned}) {
        copy->MutablePixels()[0] = 7;
    }
    EXPECT_EQ(staleCopy.Statistics().maximum, 7);
    EXPECT_EQ(freshCopy.Statistics().maximum, 5);
    EXPECT_EQ(assigned.Statistics().maximum, 5);
}

std::vector<std::uint16_t> Region(const TBackgroundCorrectionEntry& entry, int left, int top, int width, int height,
                                  float factor = 1.0f)
{
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<std::uint16_t> packed(count + 1, 4711);
    entry.CopyRegion(packed.data(), static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top),
                     static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), factor);
    EXPECT_EQ(packed.back(), 4711) << "written beyond the region";
    packed.pop_back();
    return packed;
}

TEST(EntryRegion, EqualsTheLiteralArithmeticForEveryRectangle)
{
    TRandomImages random(21);
    const Literal::TImage image = random.Image(5, 4);
    TBackgroundCorrectionEntry entry;
    BuildFrom(entry, "k", {image}, false);
    // Also those that reach beyond the image, or lie outside altogether.
    for (int left = 0; left <= 6; ++left) {
        for (int top = 0; top <= 5; ++top) {
            for (int width = 1; width <= 7; ++width) {
                for (int height = 1; height <= 6; ++height) {
                    ASSERT_EQ(Region(entry, left, top, width, height),
                              Literal::CopyRegion(image, left, top, width, height).pixels)
                        << left << ", " << top << ", " << width << ", " << height;
                }
            }
        }
    }
}

TEST(EntryRegion, ScalesWhileCopying)
{
    TRandomImages random(22);
    const Literal::TImage image = random.Image(17, 5);
    TBackgroundCorrectionEntry entry;
    BuildFrom(entry, "k", {image}, false);
    for (const float factor : {0.0f, 0.3f, 1.7f, -1.0f, 1e30f, HUGE_VALF, std::nanf("")}) {
        const Literal::TImage inside = Literal::CopyRegion(image, 3, 1, 11, 4);
        ASSERT_EQ(Region(entry, 3, 1, 11, 4, factor), Literal::Scale(inside, factor).pixels) << factor;
        const Literal::TImage beyond = Literal::CopyRegion(image, 12, 3, 9, 4);
        ASSERT_EQ(Region(entry, 12, 3, 9, 4, factor), Literal::Scale(beyond, factor).pixels) << factor;
    }
}

TEST(EntryRegion, OfAnEntryWithoutPixelsIsZero)
{
    TBackgroundCorrectionEntry entry;
    entry.Build("k", nullptr, 0, 4, 4, 1.0f, 1.0f, false);
    EXPECT_THAT(Region(entry, 1, 1, 3, 2), Each(0));
    EXPECT_THAT(Region(entry, 0, 0, 4, 4, HUGE_VALF), Each(0));
}

TEST(EntryRegion, FarOutsideIsZero)
{
    const TBackgroundCorrectionEntry entry = RowEntry("k", {1, 2, 3});
    EXPECT_THAT(Region(entry, 2147483647, 2147483647, 2, 2), Each(0));
    EXPECT_THAT(Region(entry, 0, 2147483647, 3, 1), Each(0));
    // Addresses that 32 bits would bring back to the first pixels.
    const TBackgroundCorrectionEntry four = RowEntry("k", {1, 2, 3, 4});
    EXPECT_THAT(Region(four, 0, 1 << 30, 4, 1), Each(0));
    EXPECT_THAT(Region(four, 1, 1 << 30, 2, 1), Each(0));
    EXPECT_THAT(Region(four, 0, (1 << 30) - 1, 3, 2), Each(0));
}

TEST(PixelMemory, IsNotThereForMoreThanAnyMachineHas)
{
    EXPECT_EQ(AllocatePixels(std::numeric_limits<std::size_t>::max()), nullptr);
    EXPECT_EQ(AllocatePixels(std::numeric_limits<std::size_t>::max() / 4 + 1), nullptr);
    const std::unique_ptr<std::uint16_t[]> few(AllocatePixels(3));
    ASSERT_NE(few, nullptr);
    few[2] = 1;
}

} // namespace
