// ApplyCorrection without a delegate.
#include "support/RandomImages.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;

constexpr char kImageNull[] = "The input image is NULL.";
constexpr char kLengthsDiffer[] = "The input image sizes do not match.";
constexpr char kLengthWrong[] = "The input image size does not match parameters.";

unsigned int Apply(const TTestObject& object, unsigned short* image, int imageLength, unsigned short* output,
                   int outputLength)
{
    return object->ApplyCorrection(image, imageLength, output, outputLength, nullptr, false, false, false);
}

// With and without an active correction of 3 x 2 pixels.
class ApplyChecks : public testing::TestWithParam<bool> {
protected:
    ApplyChecks()
    {
        object.Store("k", FlatImage(3, 2, 1));
        object->SetActiveCorrection("k");
        if (!GetParam()) {
            object->SetActiveCorrection(nullptr);
        }
    }

    TTestObject object;
    std::vector<unsigned short> image = std::vector<unsigned short>(8, 100);
    std::vector<unsigned short> output = std::vector<unsigned short>(8, 4711);
};

TEST_P(ApplyChecks, ReportTheFirstBadArgument)
{
    const struct {
        bool hasImage;
        int imageLength;
        bool hasOutput;
        int outputLength;
        TOutcome refusal;
    } rows[] = {
        {false, 6, false, 0, {513, kImageNull}},    {false, 6, true, 6, {513, kImageNull}},
        {false, 7, true, 6, {513, kImageNull}},     {false, 7, true, 7, {513, kImageNull}},
        {true, 6, true, 5, {516, kLengthsDiffer}},  {true, 5, true, 6, {516, kLengthsDiffer}},
        {true, 7, true, 8, {516, kLengthsDiffer}},  {true, 6, true, 0, {516, kLengthsDiffer}},
        {true, 6, true, -6, {516, kLengthsDiffer}}, {true, 5, true, 5, {514, kLengthWrong}},
        {true, 7, true, 7, {514, kLengthWrong}},    {true, 5, false, 0, {514, kLengthWrong}},
        {true, 7, false, 7, {514, kLengthWrong}},   {true, 0, false, 0, {514, kLengthWrong}},
        {true, -6, false, 0, {514, kLengthWrong}},  {true, 3, false, 6, {514, kLengthWrong}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(object.Outcome(Apply(object, row.hasImage ? image.data() : nullptr, row.imageLength,
                                       row.hasOutput ? output.data() : nullptr, row.outputLength)),
                  row.refusal);
    }
    EXPECT_THAT(image, Each(100));
    EXPECT_THAT(output, Each(4711));
}

TEST_P(ApplyChecks, IgnoreTheOutputLengthWithoutAnOutput)
{
    for (const int outputLength : {0, 5, -1}) {
        EXPECT_EQ(Apply(object, image.data(), 6, nullptr, outputLength), 0u);
    }
}

TEST_P(ApplyChecks, CountANullDelegateAsNone)
{
    for (const bool processing : {false, true}) {
        std::vector<unsigned short> copy = image;
        EXPECT_EQ(object->ApplyCorrection(copy.data(), 6, nullptr, 0, nullptr, true, processing, true), 0u);
        EXPECT_EQ(copy[0], GetParam() ? 99 : 100);
        EXPECT_EQ(object->ApplyCorrection(image.data(), 6, output.data(), 6, nullptr, true, processing, true), 0u);
        EXPECT_EQ(output[5], GetParam() ? 99 : 100);
        EXPECT_EQ(output[6], 4711);
    }
}

INSTANTIATE_TEST_SUITE_P(ActiveOrNot, ApplyChecks, testing::Bool(), testing::PrintToStringParamName());

TEST(Apply, MatchesNoLengthWithARegionBeyond32Bits)
{
    const TTestObject object;
    unsigned short pixel = 7;
    const int sizes[][2] = {{46341, 46341}, {65536, 65536}, {65536, 65537}, {2147483647, 2147483647}, {2147483647, 2}};
    for (const auto& size : sizes) {
        ASSERT_EQ(object->SetRegion(0, 0, size[0], size[1]), 0u);
        const std::uint32_t wrapped = static_cast<std::uint32_t>(size[0]) * static_cast<std::uint32_t>(size[1]);
        std::int32_t wrappedLength = 0;
        std::memcpy(&wrappedLength, &wrapped, sizeof wrapped);
        for (const int length : {int{wrappedLength}, 0, 1, -1, 2147483647}) {
            EXPECT_EQ(object.Outcome(Apply(object, &pixel, length, nullptr, 0)), (TOutcome{514, kLengthWrong}));
        }
    }
    EXPECT_EQ(pixel, 7);
}

TEST(Apply, EqualsTheLiteralArithmeticOnAwkwardSizes)
{
    TRandomImages random(80);
    for (const TImageSize size : kAwkwardSizes) {
        const Literal::TImage background = random.Image(size.width, size.height);
        const TTestObject object;
        object.Store("k", background);
        object->SetActiveCorrection("k");
        for (int round = 0; round < 3; ++round) {
            const Literal::TImage image = random.Image(size.width, size.height);
            const std::vector<unsigned short> expected = Literal::Subtract(image, background).pixels;
            const int length = size.width * size.height;

            std::vector<unsigned short> inPlace = image.pixels;
            ASSERT_EQ(Apply(object, inPlace.data(), length, nullptr, 0), 0u);
            ASSERT_EQ(inPlace, expected) << size.width << " x " << size.height;

            std::vector<unsigned short> source = image.pixels;
            std::vector<unsigned short> output(source.size(), 4711);
            ASSERT_EQ(Apply(object, source.data(), length, output.data(), length), 0u);
            ASSERT_EQ(output, expected) << size.width << " x " << size.height;
            ASSERT_EQ(source, image.pixels) << "the input is only read";

            ASSERT_EQ(Apply(object, source.data(), length, source.data(), length), 0u);
            ASSERT_EQ(source, expected) << "output equal to image";
        }
    }
}

TEST(Apply, ClampsPixelsBelowAndAtTheBackgroundToZero)
{
    const TTestObject object;
    object.Store("k", {4, 1, {100, 100, 100, 0}});
    object->SetActiveCorrection("k");
    unsigned short image[4] = {99, 100, 101, 65535};
    EXPECT_EQ(Apply(object, image, 4, nullptr, 0), 0u);
    EXPECT_THAT(image, ElementsAre(0, 0, 1, 65535));
}

TEST(Apply, CorrectsImagesOfTheRegion)
{
    const TTestObject object;
    object.Store("k", {3, 2, {1, 2, 3, 4, 5, 6}});
    object->SetActiveCorrection("k");
    object->SetRegion(1, 0, 2, 2);
    unsigned short image[4] = {10, 10, 10, 10};
    EXPECT_EQ(Apply(object, image, 4, nullptr, 0), 0u);
    EXPECT_THAT(image, ElementsAre(8, 7, 5, 4));
}

TEST(Apply, OfACorrectionWithoutPixelsChangesNothing)
{
    const TTestObject object;
    object.StoreDescription("k", 2, 1);
    object->SetActiveCorrection("k");
    unsigned short image[2] = {0, 10};
    EXPECT_EQ(Apply(object, image, 2, nullptr, 0), 0u);
    EXPECT_THAT(image, ElementsAre(0, 10));
}

TEST(ApplyWithNothingActive, CopiesToTheOutputOnly)
{
    const TTestObject object;
    object->SetRegion(7, 7, 3, 1);
    std::vector<unsigned short> image = {1, 2, 3};
    std::vector<unsigned short> output(4, 4711);
    EXPECT_EQ(Apply(object, image.data(), 3, nullptr, 0), 0u);
    EXPECT_THAT(image, ElementsAre(1, 2, 3));
    EXPECT_EQ(Apply(object, image.data(), 3, output.data(), 3), 0u);
    EXPECT_THAT(output, ElementsAre(1, 2, 3, 4711));
    EXPECT_THAT(image, ElementsAre(1, 2, 3));
    EXPECT_EQ(Apply(object, image.data(), 3, image.data(), 3), 0u);
    EXPECT_THAT(image, ElementsAre(1, 2, 3));
}

TEST(ApplyWithNothingActive, CopiesPartlyOverlappingBuffersAsIfThroughAThird)
{
    const TTestObject object;
    object->SetRegion(0, 0, 100, 1);
    for (const std::ptrdiff_t shift : {1, 3, 50}) {
        for (const bool isOutputBehind : {false, true}) {
            std::vector<unsigned short> memory(150);
            for (std::size_t i = 0; i < memory.size(); ++i) {
                memory[i] = static_cast<unsigned short>(i);
            }
            unsigned short* const low = memory.data();
            unsigned short* const high = low + shift;
            unsigned short* const image = isOutputBehind ? low : high;
            const std::vector<unsigned short> expected(image, image + 100);
            unsigned short* const output = isOutputBehind ? high : low;
            EXPECT_EQ(Apply(object, image, 100, output, 100), 0u);
            EXPECT_EQ(std::vector<unsigned short>(output, output + 100), expected) << shift << isOutputBehind;
        }
    }
}

} // namespace
