#include "model/LiteralProcessor.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <numeric>
#include <sstream>

namespace Literal {

namespace {

const char kHeaderOnly[] = "This file has been opened in header only mode. Cannot modify or apply corrections.";

} // namespace

std::string Cut(const std::string& text)
{
    return text.substr(0, 256);
}

std::string Lower(std::string text)
{
    for (char& letter : text) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    }
    return text;
}

std::string ZeroProduct(float exposure, float intensity)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(6) << "Reference exposure and light intensity product is zero [ "
         << static_cast<double>(exposure) << " ] * [ " << static_cast<double>(intensity) << " ].";
    return text.str();
}

unsigned int TDelegate::Note(const std::string& operation, int width, int height, long long backgroundSum)
{
    calls += operation + " " + std::to_string(width) + " x " + std::to_string(height) + " " +
             std::to_string(backgroundSum) + "\n";
    return kResult;
}

TAddition Addition(const TKey& key, const std::vector<TImage>& frames, float exposure, float intensity)
{
    return {key,      frames,   false, static_cast<int>(frames.size()), frames.front().width, frames.front().height,
            exposure, intensity};
}

unsigned int TProcessor::Fail(unsigned int code, const std::string& text)
{
    message = Cut(text);
    return code;
}

std::shared_ptr<TEntry> TProcessor::Find(const std::string& key) const
{
    for (const auto& entry : entries) {
        if (Lower(entry->key) == Lower(key)) {
            return entry;
        }
    }
    return nullptr;
}

unsigned int TProcessor::AddCorrection(const TAddition& addition)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (!addition.key.has_value()) {
        return Fail(513, "Input key is NULL.");
    }
    if (addition.framesAreNull) {
        return Fail(514, "Input images are NULL.");
    }
    if (addition.frameCount < 1) {
        return Fail(515, "Invalid number of images.");
    }
    if (addition.width < 1) {
        return Fail(516, "Invalid input width.");
    }
    if (addition.height < 1) {
        return Fail(517, "Invalid input height.");
    }
    if (0.0f >= addition.exposure) { // what is no number passes
        return Fail(518, "Exposure time must be greater than zero.");
    }
    if (0.0f >= addition.intensity) {
        return Fail(519, "Light intensity must be greater than zero.");
    }
    const auto refuse = [this](const std::string& why) {
        return Fail(513, "Could not add background correction - '" + why.substr(0, 512) + "'");
    };
    const std::string stored = addition.key->substr(0, 512);
    if (stored.empty()) {
        return refuse("The key is not valid - ''.");
    }
    if (addition.exposure * addition.intensity == 0.0f) {
        return refuse(ZeroProduct(addition.exposure, addition.intensity));
    }
    if (Find(stored) != nullptr) {
        return refuse("Supplied Key is not unique - '" + stored + "'");
    }
    const TImage image = Correction(addition.frames);
    entries.push_back(std::make_shared<TEntry>(TEntry{stored, addition.exposure, addition.intensity,
                                                      static_cast<std::uint32_t>(image.width),
                                                      static_cast<std::uint32_t>(image.height), image.pixels}));
    modified = true;
    return 0;
}

unsigned int TProcessor::SetActiveCorrection(const TKey& key)
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

TKey TProcessor::GetActiveCorrectionKey() const
{
    return active != nullptr ? TKey(active->key) : std::nullopt;
}

TKey TProcessor::GetCorrectionKey(std::size_t index) const
{
    return index < entries.size() ? TKey(entries[index]->key) : std::nullopt;
}

unsigned int TProcessor::ClearCorrections()
{
    entries.clear();
    SetActiveCorrection(std::nullopt);
    headerOnly = false;
    return 0;
}

unsigned int TProcessor::DeleteCorrection(const TKey& key)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (!key.has_value()) {
        return Fail(513, "Supplied key is NULL.");
    }
    if (active != nullptr && active->key == *key) {
        return Fail(513, "The supplied key is currently active.");
    }
    const auto found = Find(*key);
    if (found == nullptr) {
        return Fail(513, "The supplied key was not found - '" + *key + "'");
    }
    if (found == active) { // spelled in another letter case: no activation may point to what is gone
        SetActiveCorrection(std::nullopt);
    }
    entries.erase(std::find(entries.begin(), entries.end(), found));
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

int TProcessor::GetCorrectionLevel() const
{
    return static_cast<int>(static_cast<double>(level) * 100.0);
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
    if (active != nullptr && !active->pixels.empty()) {
        statistics = CalculateStatistics(active->pixels);
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
        return active != nullptr && static_cast<std::int32_t>((*active).*size) < std::int64_t{start} + length;
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
    const std::uint64_t count = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    if (count > mostBackgroundPixels) {
        Fail(1024, "Error allocating correction memory.");
        return;
    }
    TImage image{width, height, std::vector<std::uint16_t>(static_cast<std::size_t>(count), 0)};
    if (!active->pixels.empty()) {
        const TImage whole{static_cast<int>(active->width), static_cast<int>(active->height), active->pixels};
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
    if (a.imageLength != std::int64_t{width} * height) {
        return Fail(514, "The input image size does not match parameters.");
    }
    const bool delegated = a.useDelegate && a.hasDelegate;
    const std::string flags =
        std::string(a.delegateProcessing ? " processing" : "") + (a.delegateOption ? " option" : "");
    if (!correctionActive) {
        if (a.hasOutput && !a.outputIsImage && !a.imageIsNull) {
            std::copy_n(a.image.begin(), a.imageLength, a.output.begin());
        }
        return delegated && a.delegateProcessing ? a.delegate.Note("ProcessInPlace", width, height) : 0;
    }
    // There was no memory for it, or the correction was chosen in header-only mode or cannot be cut.
    if (!scaled.has_value() || scaled->size() != static_cast<std::size_t>(a.imageLength)) {
        return Fail(1024, "Error allocating correction memory.");
    }
    if (delegated) {
        return a.delegate.Note((a.hasOutput ? "SubtractInto" : "SubtractInPlace") + flags, width, height,
                               std::accumulate(scaled->begin(), scaled->end(), 0LL));
    }
    if (!a.imageIsNull) {
        std::vector<std::uint16_t>& result = a.hasOutput && !a.outputIsImage ? a.output : a.image;
        Subtract(result.data(), a.image.data(), scaled->data(), scaled->size());
    }
    return 0;
}

} // namespace Literal
