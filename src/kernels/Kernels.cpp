// Chooses the kernels for the processor at hand and calls them.
#include "kernels/Kernels.h"

#include "kernels/Dispatch.h"
#include "kernels/PlainKernels.h"
#include "platform/InstructionSet.h"

#include <algorithm>
#include <limits>

namespace Kernels {

std::atomic<const TKernelTable*> chosenTable{nullptr};
std::atomic<const TMemoryHabits*> chosenHabits{nullptr};

const TKernelTable& TableFor(Platform::TInstructionSet instructionSet) noexcept
{
#ifdef QX_KERNELS_FOR_X86
    if (instructionSet == Platform::TInstructionSet::Avx512) {
        return kAvx512Kernels;
    }
    if (instructionSet == Platform::TInstructionSet::Avx2) {
        return kAvx2Kernels;
    }
#else
    static_cast<void>(instructionSet);
#endif
    return kBaselineKernels;
}

namespace {

// Chosen at the first call and then kept. Threads that come at the same time choose the same.
const TKernelTable& Table() noexcept
{
    const TKernelTable* table = chosenTable.load(std::memory_order_relaxed);
    if (table == nullptr) {
        table = &TableFor(Platform::BestInstructionSet());
        chosenTable.store(table, std::memory_order_relaxed);
    }
    return *table;
}

// AMD's processors (measured on a Zen 5) read two arrays ahead by themselves as far as it takes, and store past the
// caches without waiting. An output goes that way when it would push everything else out of them and not stay whole
// itself. Others (measured on a Cascade Lake) gain from being asked, and lose by such stores.
constexpr TMemoryHabits kAmdHabits = {std::size_t{1} << 22, false};
constexpr TMemoryHabits kOtherHabits = {std::numeric_limits<std::size_t>::max(), true};

const TMemoryHabits& Habits() noexcept
{
    const TMemoryHabits* habits = chosenHabits.load(std::memory_order_relaxed);
    if (habits == nullptr) {
        habits = Platform::IsAmdProcessor() ? &kAmdHabits : &kOtherHabits;
        chosenHabits.store(habits, std::memory_order_relaxed);
    }
    return *habits;
}

// Stores past the caches want aligned addresses, which an output at an odd one never reaches. No host should have such
// images, but other stores put up with them.
bool IsStreaming(const std::uint16_t* output, std::size_t count) noexcept
{
    return count >= Habits().streamingLength && reinterpret_cast<std::uintptr_t>(output) % sizeof *output == 0;
}

// Pixels in a line buffer of the median filter: a row and its pads, up to an aligned length.
std::size_t MedianStride(std::size_t width)
{
    constexpr std::size_t kStep = kMedianAlignment / sizeof(std::uint16_t);
    return (width + 2 + kStep - 1) / kStep * kStep;
}

} // namespace

void SubtractInPlace(std::uint16_t* image, const std::uint16_t* background, std::size_t count) noexcept
{
    Table().subtract(image, image, background, count, Habits().isAskingAhead, false);
}

void SubtractInto(std::uint16_t* output, const std::uint16_t* image, const std::uint16_t* background,
                  std::size_t count) noexcept
{
    Table().subtract(output, image, background, count, Habits().isAskingAhead, IsStreaming(output, count));
}

void Scale(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, float factor) noexcept
{
    if (!(factor > 0.0f)) { // also NaN
        std::fill(output, output + count, std::uint16_t{0});
    } else if (factor < kScaleFactorLimit) {
        // A background is read again with every image: as long as the caches can keep it, it belongs there.
        Table().scale(output, pixels, count, factor, Habits().isAskingAhead, IsStreaming(output, count / 4));
    } else {
        Plain::Scale(output, pixels, count, factor);
    }
}

std::size_t AverageScratchLength(std::size_t pixelCount) noexcept
{
    return std::min(pixelCount, kAverageTileLength);
}

void Average(std::uint16_t* output, const std::uint16_t* const* frames, std::size_t frameCount, std::size_t pixelCount,
             float* scratch) noexcept
{
    Table().average(output, frames, frameCount, pixelCount, scratch, Habits().isAskingAhead);
}

std::size_t MedianScratchLength(std::size_t width) noexcept
{
    return kMedianLineCount * MedianStride(width) + kMedianAlignment / sizeof(std::uint16_t);
}

void Median3x3(std::uint16_t* image, std::size_t width, std::size_t height, std::uint16_t* scratch) noexcept
{
    if (width == 0 || height == 0) {
        return;
    }
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(scratch) % kMedianAlignment;
    std::uint16_t* const lines = scratch + (offset == 0 ? 0 : (kMedianAlignment - offset) / sizeof *scratch);
    Table().median(image, width, height, lines, MedianStride(width));
}

// The sum is exact, and cutting its integer quotient gives what cutting that of a double sum gives: up to 2^31 pixels
// a quotient that is no whole number stays further from the next one than double precision can err.
TStatistics CalculateStatistics(const std::uint16_t* pixels, std::size_t count) noexcept
{
    TStatistics result = {};
    std::uint64_t sum = 0;
    Table().statistics(pixels, count, &result.minimum, &result.maximum, &sum);
    result.average = static_cast<std::uint16_t>(sum / count);
    return result;
}

} // namespace Kernels
