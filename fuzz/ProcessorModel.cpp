#include "ProcessorModel.h"

#include "LimitedMemory.h"

#include "file/SampleFiles.h"
#include "model/LiteralReader.h"

#include <algorithm>

using FileBytes::TBytes;

namespace {

constexpr std::int64_t kMostAttempts = 1000;
constexpr std::int64_t kMostPixels = 0x7FFFFFFF;

std::string Lower(std::string text)
{
    for (char& letter : text) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    }
    return text;
}

bool HasPixels(const TStoredCorrection& correction)
{
    return !correction.pixels.empty();
}

} // namespace

std::optional<std::size_t> TProcessorModel::Find(const std::string& key) const
{
    for (std::size_t i = 0; i < corrections.size(); ++i) {
        if (Lower(corrections[i].key) == Lower(key)) {
            return i;
        }
    }
    return std::nullopt;
}

unsigned int TProcessorModel::AddCorrection(const std::string& key, const std::vector<Literal::TImage>& frames,
                                            float seconds, float percents)
{
    if (headerOnly) {
        return 770;
    }
    if (seconds <= 0.0f) {
        return 518;
    }
    if (percents <= 0.0f) {
        return 519;
    }
    const std::string stored = key.substr(0, 512);
    if (stored.empty() || seconds * percents == 0.0f || Find(stored)) {
        return 513;
    }
    const Literal::TImage image = Literal::Correction(frames);
    corrections.push_back({stored, static_cast<std::uint32_t>(image.width), static_cast<std::uint32_t>(image.height),
                           BitsOf(seconds), BitsOf(percents), image.pixels});
    return 0;
}

unsigned int TProcessorModel::SetActiveCorrection(const std::string& key)
{
    const auto found = Find(key);
    if (!found) {
        return 513;
    }
    active = found;
    SetRegion(0, 0, static_cast<int>(corrections[*found].width), static_cast<int>(corrections[*found].height));
    return 0;
}

void TProcessorModel::ClearCorrections()
{
    corrections.clear();
    active.reset();
    headerOnly = false;
}

unsigned int TProcessorModel::DeleteCorrection(const std::string& key)
{
    if (headerOnly) {
        return 770;
    }
    const auto found = Find(key);
    if (!found || (active && corrections[*active].key == key)) {
        return 513;
    }
    if (active == found) {
        active.reset();
    } else if (active && *active > *found) {
        active = *active - 1;
    }
    corrections.erase(corrections.begin() + static_cast<std::ptrdiff_t>(*found));
    return 0;
}

unsigned int TProcessorModel::SetCorrectionLevel(int newPercent)
{
    if (headerOnly) {
        return 770;
    }
    percent = std::clamp(newPercent, 0, 100);
    Recalculate();
    return 0;
}

int TProcessorModel::Level() const
{
    return static_cast<int>(static_cast<double>(Literal::LevelFraction(percent)) * 100.0);
}

unsigned int TProcessorModel::SetExposureAndIntensity(float seconds, float percents)
{
    if (headerOnly) {
        return 770;
    }
    exposure = seconds;
    intensity = percents;
    Recalculate();
    return 0;
}

unsigned int TProcessorModel::SetRegion(int newLeft, int newTop, int newWidth, int newHeight)
{
    if (headerOnly) {
        return 770;
    }
    const std::int64_t entryWidth =
        active ? std::int64_t{static_cast<std::int32_t>(corrections[*active].width)} : INT64_MAX;
    const std::int64_t entryHeight =
        active ? std::int64_t{static_cast<std::int32_t>(corrections[*active].height)} : INT64_MAX;
    if (newLeft < 0 || entryWidth <= newLeft) {
        return 513;
    }
    if (newTop < 0 || entryHeight <= newTop) {
        return 514;
    }
    if (newWidth < 1 || entryWidth - newLeft < newWidth) {
        return 515;
    }
    if (newHeight < 1 || entryHeight - newTop < newHeight) {
        return 516;
    }
    left = newLeft;
    top = newTop;
    width = newWidth;
    height = newHeight;
    Recalculate();
    return 0;
}

void TProcessorModel::Recalculate()
{
    background.reset();
    const auto bytes = static_cast<std::uint64_t>(PixelCount()) * sizeof(std::uint16_t);
    if (!active || PixelCount() > kMostPixels || bytes > TLimitedMemory::kLargestBlock) {
        return;
    }
    const TStoredCorrection& correction = corrections[*active];
    if (!HasPixels(correction)) {
        background.emplace(static_cast<std::size_t>(PixelCount()), std::uint16_t{0});
        return;
    }
    const Literal::TImage whole = {static_cast<int>(correction.width), static_cast<int>(correction.height),
                                   correction.pixels};
    const float factor = Literal::ScaleFactor(exposure, intensity, Literal::LevelFraction(percent),
                                              FromBits(correction.exposureBits), FromBits(correction.intensityBits));
    background = Literal::Scale(Literal::CopyRegion(whole, left, top, width, height), factor).pixels;
}

unsigned int TProcessorModel::ImportCorrections(const TProcessorModel& source, bool overwrite)
{
    if (headerOnly) {
        return 770;
    }
    if (&source == this) { // each replaced by itself, which has let go of its pixels before
        for (TStoredCorrection& correction : corrections) {
            correction.pixels.resize(overwrite ? 0 : correction.pixels.size());
        }
        return 0;
    }
    for (const TStoredCorrection& correction : source.corrections) {
        const auto found = Find(correction.key);
        if (!found) {
            corrections.push_back(correction);
        } else if (overwrite) {
            corrections[*found] = correction;
        }
    }
    return 0;
}

std::optional<unsigned int> TProcessorModel::Load(const TBytes* bytes, bool enterHeaderOnly)
{
    headerOnly = enterHeaderOnly;
    if (bytes == nullptr) {
        return 769;
    }
    TLoadOutcome before;
    before.corrections = corrections;
    before.active = active.has_value();
    const auto after = LoadLiterally(*bytes, "file", {false, enterHeaderOnly}, before, {}, kMostAttempts);
    if (!after) {
        return std::nullopt;
    }
    corrections = after->corrections;
    if (!after->active) {
        active.reset();
    }
    return after->result;
}

unsigned int TProcessorModel::Save(TBytes& written) const
{
    if (headerOnly) {
        return 770;
    }
    written = SampleFiles::Beginning(static_cast<std::uint32_t>(corrections.size()));
    for (const TStoredCorrection& correction : corrections) {
        TBytes pixels;
        for (const std::uint16_t pixel : correction.pixels) {
            pixels.push_back(static_cast<unsigned char>(pixel & 0xFF));
            pixels.push_back(static_cast<unsigned char>(pixel >> 8));
        }
        const TBytes records =
            SampleFiles::Correction(correction.key, correction.width, correction.height,
                                    FromBits(correction.exposureBits), FromBits(correction.intensityBits), pixels);
        written.insert(written.end(), records.begin(), records.end());
        if (!HasPixels(correction) && correction.width != 0 && correction.height != 0) {
            return 4294967295u;
        }
    }
    return 0;
}
