// Every instruction set's kernels against the plain definitions: at all lengths and alignments, next to pages that no
// one may touch, at sizes where the loops change their ways.
#include "kernels/ForcedInstructionSet.h"
#include "kernels/Kernels.h"
#include "kernels/PlainKernels.h"
#include "support/GuardedPixels.h"
#include "support/RandomImages.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

namespace {

using TPixels = std::vector<std::uint16_t>;

class EveryInstructionSet : public TForcedInstructionSet {};
QXBC_FOR_EVERY_INSTRUCTION_SET(EveryInstructionSet);

TPixels Noise(TRandomImages& random, std::size_t count)
{
    return random.Image(static_cast<int>(count), 1).pixels;
}

// The sizes around which loops with aligned stores, tiles, blocks of sums and requests ahead begin and end.
const std::size_t kLargeCounts[] = {
    16383,           16384,           16385, 32767,  32768,  32769,           65535,
    65536,           65537,           65567, 131072, 131101, (1u << 18) - 1u, (1u << 18) + 77u,
    (1u << 20) - 1u, (1u << 20) + 77u};

TEST_P(EveryInstructionSet, SubtractsEveryLengthBesideGuardPages)
{
    TRandomImages random(1);
    for (std::size_t count = 0; count <= 130; ++count) {
        for (const bool atStart : {false, true}) {
            const TPixels image = Noise(random, count);
            const TPixels background = Noise(random, count);
            TPixels expected = image;
            Kernels::Plain::SubtractInPlace(expected.data(), background.data(), count);
            TGuardedPixels first(count, atStart);
            TGuardedPixels second(count, atStart);
            TGuardedPixels output(count, atStart);
            first.Set(image);
            second.Set(background);
            for (const TWay way : kEveryWay) {
                ForceWay(way);
                output.Set(TPixels(count, 4711));
                Kernels::SubtractInto(output.Data(), first.Data(), second.Data(), count);
                ASSERT_EQ(output.Values(), expected) << count << way;
            }
            ASSERT_EQ(first.Values(), image) << count;
            Kernels::SubtractInPlace(first.Data(), second.Data(), count);
            ASSERT_EQ(first.Values(), expected) << count;
            ASSERT_EQ(second.Values(), background) << count;
        }
    }
}

TEST_P(EveryInstructionSet, ScalesEveryLengthBesideGuardPages)
{
    TRandomImages random(2);
    for (std::size_t count = 0; count <= 130; ++count) {
        for (const float factor : {0.7f, 1.3f, -1.0f, 40000.0f}) {
            const TPixels pixels = Noise(random, count);
            TPixels expected(count);
            Kernels::Plain::Scale(expected.data(), pixels.data(), count, factor);
            TGuardedPixels source(count, count % 2 == 0);
            TGuardedPixels output(count, count % 3 == 0);
            source.Set(pixels);
            for (const TWay way : kEveryWay) {
                ForceWay(way);
                output.Set(TPixels(count, 4711));
                Kernels::Scale(output.Data(), source.Data(), count, factor);
                ASSERT_EQ(output.Values(), expected) << count << " times " << factor << way;
            }
        }
    }
}

TEST_P(EveryInstructionSet, AveragesEveryLengthBesideGuardPages)
{
    TRandomImages random(3);
    for (std::size_t count = 1; count <= 130; ++count) {
        const std::size_t frameCount = 1 + count % 9;
        std::vector<std::unique_ptr<TGuardedPixels>> stack;
        std::vector<const std::uint16_t*> frames;
        for (std::size_t i = 0; i < frameCount; ++i) {
            stack.push_back(std::make_unique<TGuardedPixels>(count, count % 2 == 0));
            stack.back()->Set(Noise(random, count));
            frames.push_back(stack.back()->Data());
        }
        TPixels expected(count);
        Kernels::Plain::Average(expected.data(), frames.data(), frameCount, count);
        TGuardedPixels output(count, false);
        std::vector<float> scratch(Kernels::AverageScratchLength(count));
        Kernels::Average(output.Data(), frames.data(), frameCount, count, scratch.data());
        ASSERT_EQ(output.Values(), expected) << count << " pixels of " << frameCount << " frames";
    }
}

TEST_P(EveryInstructionSet, CountsEveryLengthBesideGuardPages)
{
    TRandomImages random(4);
    for (std::size_t count = 1; count <= 130; ++count) {
        const TPixels pixels = Noise(random, count);
        TGuardedPixels guarded(count, count % 2 == 0);
        guarded.Set(pixels);
        std::uint16_t minimum = 0, maximum = 0;
        std::uint64_t sum = 0;
        Kernels::Plain::Statistics(pixels.data(), count, minimum, maximum, sum);
        const Kernels::TStatistics statistics = Kernels::CalculateStatistics(guarded.Data(), count);
        ASSERT_EQ(statistics.minimum, minimum) << count;
        ASSERT_EQ(statistics.maximum, maximum) << count;
        ASSERT_EQ(statistics.average, sum / count) << count;
    }
}

// `count` pixels, from every place within a line of the cache on.
void ExpectEveryAlignment(std::size_t count)
{
    TRandomImages random(5);
    for (std::size_t offset = 0; offset < 32; ++offset) {
        TPixels image = Noise(random, count + 64);
        const TPixels background = Noise(random, count + 64);
        TPixels output(count + 64, 4711);
        TPixels expected = output;
        const std::size_t other = offset * 7 % 32;
        Kernels::Plain::SubtractInto(expected.data() + other, image.data() + offset, background.data() + 1, count);
        Kernels::SubtractInto(output.data() + other, image.data() + offset, background.data() + 1, count);
        ASSERT_EQ(output, expected) << offset;
        Kernels::Plain::Scale(expected.data() + offset, image.data() + other, count, 0.9f);
        Kernels::Scale(output.data() + offset, image.data() + other, count, 0.9f);
        ASSERT_EQ(output, expected) << offset;
        const std::uint16_t* const frames[] = {image.data() + other, background.data() + offset, image.data() + offset,
                                               image.data() + other};
        std::vector<float> scratch(Kernels::AverageScratchLength(count));
        for (const std::size_t frameCount : {2u, 4u}) { // two differ, and of four most lie alike
            Kernels::Plain::Average(expected.data() + offset, frames, frameCount, count);
            Kernels::Average(output.data() + offset, frames, frameCount, count, scratch.data());
            ASSERT_EQ(output, expected) << offset << ", " << frameCount << " frames";
        }
        expected = image;
        Kernels::Plain::SubtractInPlace(expected.data() + offset, background.data() + other, count);
        Kernels::SubtractInPlace(image.data() + offset, background.data() + other, count);
        ASSERT_EQ(image, expected) << offset;
    }
}

TEST_P(EveryInstructionSet, WorksAtEveryAlignment)
{
    for (const TWay way : kEveryWay) {
        ForceWay(way);
        for (const std::size_t count : {31u, 200u, 16384u + 77u}) {
            ASSERT_NO_FATAL_FAILURE(ExpectEveryAlignment(count)) << count << way;
        }
    }
}

TEST_P(EveryInstructionSet, WorksAtLargeSizes)
{
    TRandomImages random(6);
    constexpr std::size_t kWays = std::size(kEveryWay);
    for (std::size_t i = 0; i < kWays * std::size(kLargeCounts); ++i) {
        const std::size_t count = kLargeCounts[i / kWays];
        const TWay way = kEveryWay[i % kWays];
        ForceWay(way);
        TPixels image = Noise(random, count);
        const TPixels background = Noise(random, count);
        TPixels output(count + 1, 4711);
        TPixels expected(count + 1, 4711);
        Kernels::Plain::SubtractInto(expected.data(), image.data(), background.data(), count);
        Kernels::SubtractInto(output.data(), image.data(), background.data(), count);
        ASSERT_EQ(output, expected) << count;
        for (const float factor : {0.3f, 1.7f}) {
            Kernels::Plain::Scale(expected.data(), image.data(), count, factor);
            Kernels::Scale(output.data(), image.data(), count, factor);
            ASSERT_EQ(output, expected) << count << " times " << factor;
        }
        std::uint16_t minimum = 0, maximum = 0;
        std::uint64_t sum = 0;
        Kernels::Plain::Statistics(image.data(), count, minimum, maximum, sum);
        const Kernels::TStatistics statistics = Kernels::CalculateStatistics(image.data(), count);
        ASSERT_EQ(statistics.average, sum / count) << count;
        std::vector<float> scratch(Kernels::AverageScratchLength(count));
        const std::uint16_t* const frames[] = {image.data(), background.data(), image.data(),
                                               image.data(), background.data(), background.data()};
        for (const std::size_t frameCount : {2u, 3u, 6u}) {
            Kernels::Plain::Average(expected.data(), frames, frameCount, count);
            Kernels::Average(output.data(), frames, frameCount, count, scratch.data());
            ASSERT_EQ(output, expected) << count << " pixels of " << frameCount << " frames";
        }
        Kernels::Plain::SubtractInPlace(image.data(), background.data(), count);
        expected.assign(image.begin(), image.end());
        Kernels::SubtractInPlace(image.data(), background.data(), count); // again: what is left minus it
        Kernels::Plain::SubtractInPlace(expected.data(), background.data(), count);
        ASSERT_EQ(image, expected) << count;
    }
}

TEST_P(EveryInstructionSet, CountsExtremesWithoutOverflow)
{
    for (const std::uint16_t value : {std::uint16_t{0}, std::uint16_t{32768}, std::uint16_t{65535}}) {
        const TPixels pixels(3000000, value);
        const Kernels::TStatistics statistics = Kernels::CalculateStatistics(pixels.data(), pixels.size());
        EXPECT_EQ(statistics.minimum, value);
        EXPECT_EQ(statistics.maximum, value);
        EXPECT_EQ(statistics.average, value);
    }
}

// The median beside guard pages: its rows are read with their neighbours, and the scratch is used to its end.
void ExpectMedian(const TPixels& pixels, std::size_t width, std::size_t height)
{
    TPixels expected = pixels;
    TPixels lines(3 * (width + 2));
    Kernels::Plain::Median3x3(expected.data(), width, height, lines.data());
    for (const bool atStart : {false, true}) {
        TGuardedPixels image(pixels.size(), atStart);
        TGuardedPixels scratch(Kernels::MedianScratchLength(width), !atStart);
        image.Set(pixels);
        Kernels::Median3x3(image.Data(), width, height, scratch.Data());
        ASSERT_EQ(image.Values(), expected) << width << " x " << height;
    }
}

TEST_P(EveryInstructionSet, FiltersEveryBinaryWindow)
{
    for (unsigned int bits = 0; bits < 512; ++bits) {
        TPixels window(9);
        for (std::size_t i = 0; i < 9; ++i) {
            window[i] = (bits >> i & 1) != 0 ? 65535 : 0;
        }
        ASSERT_NO_FATAL_FAILURE(ExpectMedian(window, 3, 3));
    }
}

TEST_P(EveryInstructionSet, FiltersImagesOfAllShapes)
{
    TRandomImages random(7);
    const int widths[] = {1,  2,  3,  4,  5,  7,  8,  9,  15, 16,  17,  29,  30,
                          31, 32, 33, 47, 62, 63, 64, 65, 96, 127, 128, 129, 641};
    for (const int width : widths) {
        for (const int height : {1, 2, 3, 4, 5, 8, 9, 13, 18}) {
            for (const std::uint16_t highest : {std::uint16_t{1}, std::uint16_t{65535}}) {
                const TPixels pixels = random.Image(width, height, 0, highest).pixels;
                ASSERT_NO_FATAL_FAILURE(
                    ExpectMedian(pixels, static_cast<std::size_t>(width), static_cast<std::size_t>(height)));
            }
        }
    }
    ASSERT_NO_FATAL_FAILURE(ExpectMedian(random.Image(1025, 1031).pixels, 1025, 1031)); // with requests ahead
}

TEST_P(EveryInstructionSet, FiltersNothingInAnImageWithoutPixels)
{
    std::uint16_t pixel = 7;
    std::uint16_t scratch[1000] = {};
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}}) {
        Kernels::Median3x3(&pixel, size, 1 - size, scratch);
        Kernels::Plain::Median3x3(&pixel, size, 1 - size, scratch);
    }
    EXPECT_EQ(pixel, 7);
}

// Few frames of many pixels: the only pass has requests ahead.
TEST_P(EveryInstructionSet, AveragesFewLargeFrames)
{
    TRandomImages random(8);
    const std::size_t count = 4 * 1024 * 1024 + 33;
    const TPixels first = Noise(random, count);
    const TPixels second = Noise(random, count);
    const std::uint16_t* const frames[] = {first.data(), second.data(), second.data(), first.data(), first.data()};
    TPixels output(count);
    TPixels expected(count);
    std::vector<float> scratch(Kernels::AverageScratchLength(count));
    for (std::size_t frameCount = 1; frameCount <= std::size(frames); ++frameCount) {
        Kernels::Plain::Average(expected.data(), frames, frameCount, count);
        Kernels::Average(output.data(), frames, frameCount, count, scratch.data());
        ASSERT_TRUE(output == expected) << frameCount << " frames";
    }
}

// Guard pages cannot show this: the scratch is whole lines of the cache long, so that beside one it is always aligned.
TEST_P(EveryInstructionSet, FiltersWithAScratchAtAnyAddress)
{
    constexpr std::size_t kWidth = 62; // with its pads whole lines of the cache: the scratch is used to its end
    constexpr std::size_t kHeight = 5;
    TRandomImages random(10);
    const TPixels pixels = random.Image(static_cast<int>(kWidth), static_cast<int>(kHeight)).pixels;
    TPixels expected = pixels;
    TPixels lines(3 * (kWidth + 2));
    Kernels::Plain::Median3x3(expected.data(), kWidth, kHeight, lines.data());
    const std::size_t length = Kernels::MedianScratchLength(kWidth);
    for (std::size_t shift = 0; shift < 32; ++shift) {
        TPixels image = pixels;
        TPixels scratch(shift + length + 64, 4711);
        Kernels::Median3x3(image.data(), kWidth, kHeight, scratch.data() + shift);
        ASSERT_EQ(image, expected) << shift;
        const auto end = scratch.begin() + static_cast<std::ptrdiff_t>(shift + length);
        ASSERT_EQ(std::count(scratch.begin(), scratch.begin() + static_cast<std::ptrdiff_t>(shift), 4711),
                  static_cast<std::ptrdiff_t>(shift));
        ASSERT_EQ(std::count(end, scratch.end(), 4711), 64) << shift;
    }
}

// A host that cuts its images out of a stream of bytes may have them at odd addresses. Streaming must not touch those.
TEST_P(EveryInstructionSet, DoesNotStreamToOddAddresses)
{
    ForceWay(TWay::PastTheCaches);
    alignas(std::uint16_t) unsigned char bytes[2 * 200 + 2] = {};
    auto* const odd = reinterpret_cast<std::uint16_t*>(reinterpret_cast<std::uintptr_t>(bytes) + 1);
    TRandomImages random(9);
    const TPixels image = Noise(random, 200);
    const TPixels background = Noise(random, 200);
    TPixels expected(200);
    Kernels::Plain::SubtractInto(expected.data(), image.data(), background.data(), 200);
    Kernels::SubtractInto(odd, image.data(), background.data(), 200);
    EXPECT_EQ(std::memcmp(bytes + 1, expected.data(), 400), 0);
}

} // namespace
