#include "images/TFrameSum.h"

#include "base/LargeMemory.h"
#include "base/WideRegisters.h"

namespace workbench {

namespace {

// To the sums, in their order. A template, so that compilers keep a sum in a register from frame to frame.
template <std::size_t kFrames>
QXBC_INLINED void AddPlainly(float* __restrict sums, const std::uint16_t* const* frames, std::size_t pixels)
{
    const std::uint16_t* frame[kFrames];
    for (std::size_t k = 0; k < kFrames; ++k)
        frame[k] = frames[k];
    for (std::size_t i = 0; i < pixels; ++i) {
        float sum = sums[i];
        for (std::size_t k = 0; k < kFrames; ++k)
            sum += static_cast<float>(frame[k][i]);
        sums[i] = sum;
    }
}

#ifdef QXBC_WIDE
// The same additions, eight pixels at a time.
template <std::size_t kFrames>
QXBC_WIDE void AddWidely(float* __restrict sums, const std::uint16_t* const* frames, std::size_t pixels)
{
    AddPlainly<kFrames>(sums, frames, pixels);
}
#endif

template <std::size_t kFrames>
void AddTogether(float* __restrict sums, const std::uint16_t* const* frames, std::size_t pixels)
{
#ifdef QXBC_WIDE
    if (HasWideRegisters())
        return AddWidely<kFrames>(sums, frames, pixels);
#endif
    AddPlainly<kFrames>(sums, frames, pixels);
}

QXBC_INLINED void RoundedMeanPlainly(std::uint16_t* __restrict means, const float* __restrict sums, std::size_t pixels,
                                     float divisor)
{
    for (std::size_t i = 0; i < pixels; ++i) {
        const float mean = sums[i] / divisor;
        // Twice the mean is exact; its whole part tells whether the half is reached.
        const std::int32_t halves = static_cast<std::int32_t>(mean + mean);
        means[i] = static_cast<std::uint16_t>((halves + 1) >> 1);
    }
}

#ifdef QXBC_WIDE
QXBC_WIDE void RoundedMeanWidely(std::uint16_t* __restrict means, const float* __restrict sums, std::size_t pixels,
                                 float divisor)
{
    RoundedMeanPlainly(means, sums, pixels, divisor);
}
#endif

void RoundedMean(std::uint16_t* means, const float* sums, std::size_t pixels, float divisor)
{
#ifdef QXBC_WIDE
    if (HasWideRegisters())
        return RoundedMeanWidely(means, sums, pixels, divisor);
#endif
    RoundedMeanPlainly(means, sums, pixels, divisor);
}

} // namespace

TFrameSum::TFrameSum(TSize frameSize) : size(frameSize), sums(LargeZeros<float>(frameSize.Pixels())) {}

void TFrameSum::Add(const std::vector<const TImage*>& frames)
{
    std::vector<const std::uint16_t*> pixels;
    for (const TImage* frame : frames)
        pixels.push_back(frame->pixels.data());
    Add(0, size.Pixels(), pixels);
}

void TFrameSum::Add(std::size_t start, std::size_t pixels, const std::vector<const std::uint16_t*>& frames)
{
    float* const target = sums.get() + start;
    for (std::size_t done = 0; done < frames.size();) {
        const std::uint16_t* const* const next = frames.data() + done;
        const std::size_t left = frames.size() - done;
        if (left >= 8)
            AddTogether<8>(target, next, pixels);
        else if (left >= 4)
            AddTogether<4>(target, next, pixels);
        else if (left >= 2)
            AddTogether<2>(target, next, pixels);
        else
            AddTogether<1>(target, next, pixels);
        done += left >= 8 ? 8 : left >= 4 ? 4 : left >= 2 ? 2 : 1;
    }
    if (start + pixels == size.Pixels())
        count += frames.size();
}

void TFrameSum::Add(const TFrameSum& other)
{
    for (std::size_t i = 0; i < size.Pixels(); ++i)
        sums[i] += other.sums[i];
    count += other.count;
}

TImage TFrameSum::Average() const
{
    TImage average;
    average.size = size;
    ResizeLarge(average.pixels, size.Pixels());
    RoundedMean(average.pixels.data(), sums.get(), size.Pixels(), static_cast<float>(count));
    return average;
}

std::vector<float> TFrameSum::Mean() const
{
    std::vector<float> mean(sums.get(), sums.get() + size.Pixels());
    for (float& value : mean)
        value /= static_cast<float>(count);
    return mean;
}

} // namespace workbench
