#include "data/TBackgroundCorrectionEntry.h"

#include "boundary/Messages.h"
#include "boundary/TZRException.h"
#include "data/PixelMemory.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {
constexpr std::uint64_t kMaximumPixelCount = 0x7FFFFFFF;
} // namespace

TBackgroundCorrectionEntry::TBackgroundCorrectionEntry(const TBackgroundCorrectionEntry& other)
{
    SetKey(other.key.Text(), std::strlen(other.key.Text()));
    CopyDescription(other);
    CopyPixels(other);
}

TBackgroundCorrectionEntry& TBackgroundCorrectionEntry::operator=(const TBackgroundCorrectionEntry& other)
{
    SetKey(other.key.Text(), std::strlen(other.key.Text()));
    delete[] data;
    data = nullptr;
    CopyDescription(other);
    CopyPixels(other);
    return *this;
}

void TBackgroundCorrectionEntry::RequireMemoryForCopy() const
{
    if (data != nullptr) {
        std::uint16_t* volatile pixels = AllocatePixels(width, height); // volatile: must not be optimised away
        delete[] pixels;
    }
}

TBackgroundCorrectionEntry::TBackgroundCorrectionEntry(TBackgroundCorrectionEntry&& other) noexcept
    : key(std::move(other.key))
{
    CopyDescription(other);
    statistics = other.statistics;
    statisticsStale = other.statisticsStale;
    data = other.data;
    other.data = nullptr;
}

TBackgroundCorrectionEntry::~TBackgroundCorrectionEntry()
{
    delete[] data;
}

int TBackgroundCorrectionEntry::Build(const char* newKey, const std::uint16_t* const* frames, std::uint32_t frameCount,
                                      std::uint32_t newWidth, std::uint32_t newHeight, float exposureSeconds,
                                      float lightIntensityPercent, bool applyMedianFilter)
{
    Describe(newKey, newWidth, newHeight, exposureSeconds, lightIntensityPercent);
    if (frames == nullptr) {
        return 0;
    }
    data = AllocatePixels(width, height);
    const std::size_t count = PixelCount();
    if (frameCount == 1) {
        std::memcpy(data, frames[0], count * sizeof *data);
    } else {
        const std::unique_ptr<float[]> scratch(new float[Kernels::AverageScratchLength(count)]);
        Kernels::Average(data, frames, frameCount, count, scratch.get());
    }
    if (applyMedianFilter) {
        const std::unique_ptr<std::uint16_t[]> scratch(new std::uint16_t[Kernels::MedianScratchLength(width)]);
        Kernels::Median3x3(data, width, height, scratch.get());
    }
    statisticsStale = true;
    return 0;
}

void TBackgroundCorrectionEntry::BuildFromPixels(const char* newKey, std::uint16_t* pixels, std::uint32_t newWidth,
                                                 std::uint32_t newHeight, float exposureSeconds,
                                                 float lightIntensityPercent)
{
    data = pixels; // owned from here on, also when the description is refused
    Describe(newKey, newWidth, newHeight, exposureSeconds, lightIntensityPercent);
}

void TBackgroundCorrectionEntry::CopyRegion(std::uint16_t* destination, std::uint32_t left, std::uint32_t top,
                                            std::uint32_t regionWidth, std::uint32_t regionHeight,
                                            float factor) const noexcept
{
    // A region as wide as the entry is one run of pixels.
    const bool isContiguous = regionWidth == width;
    const std::size_t rowCount = isContiguous ? 1 : regionHeight;
    const std::size_t rowLength = isContiguous ? std::size_t{regionWidth} * regionHeight : regionWidth;
    // The region may have been checked against another entry, which an import has replaced. It is then taken in this
    // entry's row length, and what lies beyond its pixels counts as 0.
    const std::uint64_t pixelCount = HasPixels() ? PixelCount() : 0;
    for (std::size_t row = 0; row < rowCount; ++row) {
        const std::uint64_t start = (std::uint64_t{top} + row) * width + left;
        const std::uint64_t available = start < pixelCount ? pixelCount - start : 0;
        const std::size_t length = static_cast<std::size_t>(std::min<std::uint64_t>(rowLength, available));
        std::uint16_t* const target = destination + row * rowLength;
        if (length > 0) {
            Kernels::Scale(target, data + start, length, factor);
        }
        std::fill(target + length, target + rowLength, std::uint16_t{0});
    }
}

const Kernels::TStatistics& TBackgroundCorrectionEntry::Statistics() noexcept
{
    if (statisticsStale) {
        statistics = Kernels::CalculateStatistics(data, PixelCount());
        statisticsStale = false;
    }
    return statistics;
}

bool TBackgroundCorrectionEntry::IsSizeValid(std::uint32_t width, std::uint32_t height) noexcept
{
    return std::uint64_t{width} * height <= kMaximumPixelCount;
}

std::size_t TBackgroundCorrectionEntry::PixelCount(std::uint32_t width, std::uint32_t height) noexcept
{
    return IsSizeValid(width, height) ? std::size_t{width} * height : 0;
}

void TBackgroundCorrectionEntry::Describe(const char* newKey, std::uint32_t newWidth, std::uint32_t newHeight,
                                          float exposureSeconds, float lightIntensityPercent)
{
    statistics = {0, 0, 0};
    if (newKey == nullptr || newKey[0] == '\0') {
        throw TZRException(Messages::kKeyNotValid, newKey == nullptr ? "NULL" : newKey);
    }
    std::size_t length = 0;
    while (length < kMaximumKeyLength && newKey[length] != '\0') {
        ++length;
    }
    SetKey(newKey, length);
    referenceExposure = exposureSeconds;
    referenceIntensity = lightIntensityPercent;
    referenceProduct = exposureSeconds * lightIntensityPercent;
    if (referenceProduct == 0.0f) {
        throw TZRException(Messages::kProductIsZero, static_cast<double>(exposureSeconds),
                           static_cast<double>(lightIntensityPercent));
    }
    width = newWidth;
    height = newHeight;
}

void TBackgroundCorrectionEntry::CopyDescription(const TBackgroundCorrectionEntry& other) noexcept
{
    referenceExposure = other.referenceExposure;
    referenceIntensity = other.referenceIntensity;
    referenceProduct = other.referenceProduct;
    width = other.width;
    height = other.height;
}

// A key as long as the one before needs no memory, and stays where it is: an import replaces an entry by one whose key
// is the same but for the case of its letters.
void TBackgroundCorrectionEntry::SetKey(const char* text, std::size_t length)
{
    try {
        key.Assign(text, length);
    } catch (const std::bad_alloc&) {
        throw TZRException(Messages::kOutOfMemoryConstructing);
    }
}

// The statistics follow the pixels: a copy that failed keeps its old ones.
void TBackgroundCorrectionEntry::CopyPixels(const TBackgroundCorrectionEntry& other)
{
    if (other.data != nullptr) {
        data = AllocatePixels(width, height);
        std::memcpy(data, other.data, PixelCount() * sizeof *data);
    }
    statistics = other.statistics;
    statisticsStale = other.statisticsStale;
}

std::uint16_t* TBackgroundCorrectionEntry::AllocatePixels(std::uint32_t width, std::uint32_t height)
{
    std::uint16_t* pixels = nullptr;
    if (IsSizeValid(width, height)) {
        pixels = ::AllocatePixels(PixelCount(width, height));
    }
    if (pixels == nullptr) {
        throw TZRException(Messages::kOutOfMemoryConstructing);
    }
    return pixels;
}
