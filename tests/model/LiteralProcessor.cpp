#include "model/LiteralProcessor.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace Literal {

namespace {

const char kHeaderOnly[] = "This file has been opened in header only mode. Cannot modify or apply corrections.";

bool SameKey(const std::string& left, const std::string& right) // the letters A to Z equal a to z
{
    if (left.size() != right.size()) {
        return false;
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(left[i])) != std::tolower(static_cast<unsigned char>(right[i]))) {
            return false;
        }
    }
    return true;
}

} // namespace

std::string Cut(const std::string& text)
{
    return text.substr(0, 256);
}

unsigned int TDelegate::Note(const std::string& operation, int width, int height, long long backgroundSum)
{
    calls += operation + " " + std::to_string(width) + " x " + std::to_string(height) + " " +
             std::to_string(backgroundSum) + "\n";
    return kResult;
}

unsigned int TProcessor::Fail(unsigned int code, const std::string& text)
{
    message = Cut(text);
    return code;
}

std::shared_ptr<TEntry> TProcessor::Find(const std::string& key) const
{
    for (const auto& entry : entries) {
        if (SameKey(entry->key, key)) {
            return entry;
        }
    }
    return nullptr;
}

unsigned int TProcessor::AddCorrection(const std::string& key, const std::vector<TImage>& frames, float exposureSeconds,
                                       float intensityPercent)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (!(exposureSeconds > 0.0f)) {
        return Fail(518, "Exposure time must be greater than zero.");
    }
    if (!(intensityPercent > 0.0f)) {
        return Fail(519, "Light intensity must be greater than zero.");
    }
    if (key.empty()) {
        return Fail(513, "Could not add background correction - 'The key is not valid - ''.'");
    }
    const std::string stored = key.substr(0, 512);
    if (Find(stored) != nullptr) {
        return Fail(513, "Could not add background correction - '" +
                             ("Supplied Key is not unique - '" + stored + "'").substr(0, 512) + "'");
    }
    const TImage image = Correction(frames);
    entries.push_back(std::make_shared<TEntry>(TEntry{stored, exposureSeconds, intensityPercent,
                                                      static_cast<std::uint32_t>(image.width),
                                                      static_cast<std::uint32_t>(image.height), image.pixels}));
    modified = true;
    return 0;
}

unsigned int TProcessor::SetActiveCorrection(const std::optional<std::string>& key)
{
    if (!key.has_value()) {
        active = nullptr;
        correctionActive = false;
        return 0;
    }
    const auto found = Find(*key);
    if (found == nullptr) {
        return Fail(513, "Background correction key not found - '" + *key + "'");
    }
    active = found;
    SetRegion(0, 0, static_cast<int>(found->width), static_cast<int>(found->height));
    correctionActive = true;
    return 0;
}

std::optional<std::string> TProcessor::GetActiveCorrectionKey() const
{
    return active != nullptr ? std::optional<std::string>(active->key) : std::nullopt;
}

void TProcessor::ClearCorrections()
{
    entries.clear();
    SetActiveCorrection(std::nullopt);
    headerOnly = false;
}

unsigned int TProcessor::DeleteCorrection(const std::string& key)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (active != nullptr && active->key == key) {
        return Fail(513, "The supplied key is currently active.");
    }
    const auto found = Find(key);
    if (found == nullptr) {
        return Fail(513, "The supplied key was not found - '" + key + "'");
    }
    if (found == active) { // spelled in another letter case: no activation may point to what is gone
        SetActiveCorrection(std::nullopt);
    }
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i] == found) {
            entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(i));
            break;
        }
    }
    modified = true;
    return 0;
}

unsigned int TProcessor::SetCorrectionLevel(int percent)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    level = LevelFraction(percent < 0 ? 0 : percent > 100 ? 100 : percent);
    Recalculate();
    return 0;
}

unsigned int TProcessor::SetExposureAndIntensity(float exposureSeconds, float intensityPercent)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    exposure = exposureSeconds;
    intensity = intensityPercent;
    Recalculate();
    return 0;
}

unsigned int TProcessor::GetExposureAndIntensity(float& exposureSeconds, float& intensityPercent)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    exposureSeconds = exposure;
    intensityPercent = intensity;
    return 0;
}

unsigned int TProcessor::GetReferenceExposureAndIntensity(float& exposureSeconds, float& intensityPercent) const
{
    if (active != nullptr) {
        exposureSeconds = active->exposure;
        intensityPercent = active->intensity;
    }
    return 0;
}

unsigned int TProcessor::GetCorrectionStatistics(TStatistics& statistics)
{
    if (headerOnly) {
        return Fail(770, "This file has been opened in header only mode. Cannot access correction data information.");
    }
    if (active != nullptr && active->pixels.has_value()) {
        statistics = CalculateStatistics(*active->pixels);
    }
    return 0;
}

unsigned int TProcessor::GetScaledCorrectionStatistics(TStatistics& statistics)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (active != nullptr && scaled.has_value()) {
        statistics = CalculateStatistics(*scaled);
    }
    return 0;
}

unsigned int TProcessor::SetRegion(int newLeft, int newTop, int newWidth, int newHeight)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    const auto beyond = [this](std::uint32_t TEntry::* size, int start, int length) {
        return active != nullptr && static_cast<int>((*active).*size) < std::int64_t{start} + length;
    };
    const auto refuse = [this](unsigned int code, const char* what, int value) {
        return Fail(code, std::string("The input ") + what + " [ " + std::to_string(value) + " ] is out of range.");
    };
    if (newLeft < 0 || beyond(&TEntry::width, newLeft, 1)) {
        return refuse(513, "left", newLeft);
    }
    if (newTop < 0 || beyond(&TEntry::height, newTop, 1)) {
        return refuse(514, "top", newTop);
    }
    if (newWidth < 1 || beyond(&TEntry::width, newLeft, newWidth)) {
        return refuse(515, "width", newWidth);
    }
    if (newHeight < 1 || beyond(&TEntry::height, newTop, newHeight)) {
        return refuse(516, "height", newHeight);
    }
    left = newLeft;
    top = newTop;
    width = newWidth;
    height = newHeight;
    Recalculate();
    return 0;
}

unsigned int TProcessor::GetRegion(std::vector<int>& region)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    region = {left, top, width, height};
    return 0;
}

void TProcessor::Recalculate()
{
    scaled.reset();
    if (active == nullptr) {
        return;
    }
    TImage image{width, height, std::vector<std::uint16_t>(static_cast<std::size_t>(width * height), 0)};
    if (active->pixels.has_value()) {
        const TImage whole{static_cast<int>(active->width), static_cast<int>(active->height), *active->pixels};
        image = CopyRegion(whole, left, top, width, height);
    }
    scaled = Scale(image, ScaleFactor(exposure, intensity, level, active->exposure, active->intensity)).pixels;
}

unsigned int TProcessor::ApplyCorrection(TApplication& a)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (a.imageIsNull && !(a.useDelegate && !a.delegateProcessing)) {
        return Fail(513, "The input image is NULL.");
    }
    if (a.hasOutput && a.imageLength != a.outputLength) {
        return Fail(516, "The input image sizes do not match.");
    }
    if (a.imageLength != width * height) {
        return Fail(514, "The input image size does not match parameters.");
    }
    const bool delegated = a.useDelegate && a.hasDelegate;
    const std::string flags =
        std::string(a.delegateProcessing ? " processing" : "") + (a.delegateOption ? " option" : "");
    if (!correctionActive) {
        if (a.hasOutput && !a.outputIsImage) {
            std::copy_n(a.image.begin(), a.imageLength, a.output.begin());
        }
        return delegated && a.delegateProcessing ? a.delegate.Note("ProcessInPlace", width, height) : 0;
    }
    if (!scaled.has_value()) {
        return Fail(1024, "Error allocating correction memory.");
    }
    if (delegated) {
        return a.delegate.Note((a.hasOutput ? "SubtractInto" : "SubtractInPlace") + flags, width, height,
                               std::accumulate(scaled->begin(), scaled->end(), 0LL));
    }
    std::vector<std::uint16_t>& result = a.hasOutput && !a.outputIsImage ? a.output : a.image;
    for (std::size_t i = 0; i < scaled->size(); ++i) {
        const int difference = int{a.image[i]} - int{(*scaled)[i]};
        result[i] = static_cast<std::uint16_t>(difference < 0 ? 0 : difference);
    }
    return 0;
}

void TProcessor::ImportOverwriting(const TProcessor& source)
{
    for (const auto& entry : source.entries) {
        const auto own = Find(entry->key);
        if (own != nullptr) {
            *own = *entry;
        } else {
            entries.push_back(std::make_shared<TEntry>(*entry));
        }
    }
    modified = true;
}

unsigned int TProcessor::AddEntryCopy(const TEntry& entry)
{
    if (Find(entry.key) != nullptr) {
        return Fail(1024, "Couldn't create new background entry - '" +
                              ("Supplied Key is not unique - '" + entry.key + "'").substr(0, 512) + "'");
    }
    entries.push_back(std::make_shared<TEntry>(entry));
    modified = true;
    return 0;
}

} // namespace Literal
