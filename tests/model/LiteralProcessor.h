// The live processor written a second time, step by step as it is described and without regard to speed: what the
// library's processor is compared with. Shares no code with the library.
#ifndef TESTS_MODEL_LITERALPROCESSOR_H
#define TESTS_MODEL_LITERALPROCESSOR_H

#include "model/LiteralArithmetic.h"
#include "model/LiteralDisk.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Literal {

struct TStore;

// A null pointer, where a host may hand one in.
using TKey = std::optional<std::string>;

// Images of more pixels find no memory; nor do backgrounds, whose limit is lower where memory is limited on purpose.
constexpr std::uint64_t kMostPixels = 0x7FFFFFFF;
inline std::uint64_t mostBackgroundPixels = kMostPixels;

// At most 256 characters of a text.
std::string Cut(const std::string& text);

// Keys are the same when these are: the letters A to Z become a to z, whatever the locale, and nothing else changes.
std::string Lower(std::string text);

std::string ZeroProduct(float exposure, float intensity);

struct TEntry {
    std::string key; // at most 512 characters
    float exposure = 0.0f;
    float intensity = 0.0f;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint16_t> pixels; // empty: none
};

// Stands for the delegate of a host: writes down every call.
struct TDelegate {
    std::string calls;
    static constexpr unsigned int kResult = 77;

    // `backgroundSum` stands for the pixels of the background; -1 without one.
    unsigned int Note(const std::string& operation, int width, int height, long long backgroundSum = -1);
};

// Arguments of ApplyCorrection. `image` and `output` are at least as long as the lengths that are given.
struct TApplication {
    std::vector<std::uint16_t> image;
    bool imageIsNull = false;
    int imageLength = 0;
    std::vector<std::uint16_t> output;
    bool hasOutput = false;
    bool outputIsImage = false;
    int outputLength = 0;
    bool hasDelegate = false;
    bool useDelegate = false;
    bool delegateProcessing = false;
    bool delegateOption = false;
    TDelegate delegate;
};

// Arguments of AddCorrection: the frames have the size that is given, when it is a size.
struct TAddition {
    TKey key;
    std::vector<TImage> frames;
    bool framesAreNull = false;
    int frameCount = 0;
    int width = 0;
    int height = 0;
    float exposure = 0.0f;
    float intensity = 0.0f;
};

TAddition Addition(const TKey& key, const std::vector<TImage>& frames, float exposure, float intensity);

// An object to import from: one of the two, or neither for a null pointer.
struct TImportSource {
    TProcessor* processor = nullptr;
    TStore* store = nullptr;
};

struct TProcessor {
    std::string message;
    std::string fileMessage;
    std::vector<std::shared_ptr<TEntry>> entries;
    std::shared_ptr<TEntry> active;
    bool correctionActive = false;
    float exposure = -1.0f;
    float intensity = -1.0f;
    int left = 0;
    int top = 0;
    int width = 1;
    int height = 1;
    float level = 1.0f;
    std::optional<std::vector<std::uint16_t>> scaled;
    bool headerOnly = false;
    bool modified = false;

    unsigned int AddCorrection(const TAddition& addition);
    unsigned int SetActiveCorrection(const TKey& key);
    TKey GetActiveCorrectionKey() const;
    TKey GetCorrectionKey(std::size_t index) const;
    std::size_t GetNumberOfCorrections() const { return entries.size(); }
    unsigned int ClearCorrections();
    unsigned int DeleteCorrection(const TKey& key);
    unsigned int SetCorrectionLevel(int percent);
    int GetCorrectionLevel() const;
    unsigned int SetExposureAndIntensity(float exposureSeconds, float intensityPercent);
    unsigned int GetExposureAndIntensity(float& exposureSeconds, float& intensityPercent);
    unsigned int GetReferenceExposureAndIntensity(float& exposureSeconds, float& intensityPercent) const;
    unsigned int GetCorrectionStatistics(TStatistics& statistics);
    unsigned int GetScaledCorrectionStatistics(TStatistics& statistics);
    unsigned int ApplyCorrection(TApplication& arguments);
    unsigned int SetRegion(int newLeft, int newTop, int newWidth, int newHeight);
    unsigned int GetRegion(std::vector<int>& region);
    unsigned int ImportCorrections(const TImportSource& source, bool overwrite);
    unsigned int LoadFileHeaderOnly(const TOpened& file) { return LoadUngroupedFile(file, true); }
    unsigned int LoadFile(const TOpened& file) { return LoadUngroupedFile(file, false); }
    unsigned int SaveFile(TLiteralDisk& disk, const std::optional<std::string>& path);
    TKey GetLastErrorMessage() const { return message; }

    // What only the store uses.
    unsigned int AddEntryCopy(const TEntry& entry);
    unsigned int SaveGroupedFile(TLiteralDisk& disk, const std::string& path, const TTexts& names);
    unsigned int LoadGroupedFile(const TOpened& file, TTexts& names, std::uint32_t& version, bool enterHeaderOnly);

    unsigned int Fail(unsigned int code, const std::string& text);
    std::shared_ptr<TEntry> Find(const std::string& key) const;

private:
    unsigned int LoadUngroupedFile(const TOpened& file, bool enterHeaderOnly);
    unsigned int Save(TLiteralDisk& disk, const std::optional<std::string>& path,
                      const std::optional<TTexts>& groupingNames);
    void Recalculate();
};

} // namespace Literal

#endif
