// One stored background correction.
#ifndef DATA_TBACKGROUNDCORRECTIONENTRY_H
#define DATA_TBACKGROUNDCORRECTIONENTRY_H

#include "data/containers/TKeyText.h"
#include "kernels/Kernels.h"

#include <cstddef>
#include <cstdint>

// A named background image with the exposure and light intensity at which it was taken.
//
// Owns its pixels; every copy is deep. Not synchronised: the owning processor's lock covers it. Fails by throwing
// TZRException (std::bad_alloc where said); an entry whose Build threw is only fit to be destroyed.
class TBackgroundCorrectionEntry {
public:
    static constexpr std::size_t kMaximumKeyLength = 512;

    // A fresh entry: no key, no pixels, statistics stale.
    TBackgroundCorrectionEntry() noexcept = default;
    TBackgroundCorrectionEntry(const TBackgroundCorrectionEntry& other);
    // Frees its own pixels before it looks at the other's: assigned to itself, an entry loses them. Kept so, because
    // importing an object into itself has always had this effect.
    TBackgroundCorrectionEntry& operator=(const TBackgroundCorrectionEntry& other);
    virtual ~TBackgroundCorrectionEntry();

    // Throws the TZRException that copying would throw without enough memory, and does nothing otherwise.
    void RequireMemoryForCopy() const;

    // Takes over the pixels of an entry that is not needed any more.
    TBackgroundCorrectionEntry(TBackgroundCorrectionEntry&& other) noexcept;

    // Fills a fresh entry. One frame is copied, more are averaged; see Kernels::Average and Kernels::Median3x3.
    // `frames` may be null: only the description is stored then. Throws TZRException for a null or empty key, a product
    // exposure * intensity that is 0 in single precision, and when the pixels cannot be allocated; std::bad_alloc when
    // the work buffers cannot. Returns 0.
    int Build(const char* key, const std::uint16_t* const* frames, std::uint32_t frameCount, std::uint32_t width,
              std::uint32_t height, float exposureSeconds, float lightIntensityPercent, bool applyMedianFilter);

    // As Build with one frame and no filter, but takes over `pixels` (width * height of them, from new[], or null)
    // instead of copying them; on failure they are freed.
    void BuildFromPixels(const char* key, std::uint16_t* pixels, std::uint32_t width, std::uint32_t height,
                         float exposureSeconds, float lightIntensityPercent);

    // Copies a rectangle into a packed buffer, each value times `factor` (see Kernels::Scale; 1 copies unchanged).
    // Without pixels, and where the rectangle reaches beyond the entry, the source counts as 0.
    void CopyRegion(std::uint16_t* destination, std::uint32_t left, std::uint32_t top, std::uint32_t regionWidth,
                    std::uint32_t regionHeight, float factor) const noexcept;

    // Over the whole image, computed at the first request. Only for entries with pixels.
    const Kernels::TStatistics& Statistics() noexcept;

    const char* Key() const noexcept { return key.Text(); }
    float ReferenceExposureSeconds() const noexcept { return referenceExposure; }
    float ReferenceIntensityPercent() const noexcept { return referenceIntensity; }
    std::uint32_t Width() const noexcept { return width; }
    std::uint32_t Height() const noexcept { return height; }
    bool HasPixels() const noexcept { return data != nullptr && PixelCount() > 0; }
    const std::uint16_t* Pixels() const noexcept { return data; } // may be null
    std::uint16_t* MutablePixels() noexcept { return data; }      // may be null; the statistics do not follow changes
    // 0 as well when the product does not fit a signed 32-bit number: such an entry never has pixels.
    std::size_t PixelCount() const noexcept { return PixelCount(width, height); }

    // width * height, or 0 when that is no positive signed 32-bit number.
    static std::size_t PixelCount(std::uint32_t width, std::uint32_t height) noexcept;
    // Whether width * height fits a signed 32-bit number.
    static bool IsSizeValid(std::uint32_t width, std::uint32_t height) noexcept;

private:
    void Describe(const char* newKey, std::uint32_t newWidth, std::uint32_t newHeight, float exposureSeconds,
                  float lightIntensityPercent);
    void CopyDescription(const TBackgroundCorrectionEntry& other) noexcept; // but for the key
    void SetKey(const char* text, std::size_t length);
    void CopyPixels(const TBackgroundCorrectionEntry& other);
    static std::uint16_t* AllocatePixels(std::uint32_t width, std::uint32_t height);

    TKeyText key;
    float referenceExposure = 0.0f;  // seconds
    float referenceIntensity = 0.0f; // percent
    float referenceProduct = 0.0f;   // only to refuse a product of zero
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t* data = nullptr; // width * height values from new[], or null
    Kernels::TStatistics statistics = {0, 0, 0};
    bool statisticsStale = true;
};

#endif
