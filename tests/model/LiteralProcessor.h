// The live processor as far as the store uses it, written a second time from its description and without regard to
// speed. Shares no code with the library.
#ifndef TESTS_OFFLINE_LITERALPROCESSOR_H
#define TESTS_OFFLINE_LITERALPROCESSOR_H

#include "model/LiteralArithmetic.h"
#include "model/LiteralDisk.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Literal {

constexpr unsigned int kMinusOne = 4294967295u;
constexpr unsigned int kMinusTwo = 4294967294u;

// At most 256 characters of a text.
std::string Cut(const std::string& text);

struct TEntry {
    std::string key; // at most 512 characters
    float exposure = 0.0f;
    float intensity = 0.0f;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::optional<std::vector<std::uint16_t>> pixels;
};

// Stands for the delegate of a host: writes down every call.
struct TDelegate {
    std::string calls;
    static constexpr unsigned int kResult = 77;

    // `backgroundSum` stands for the pixels of the background; -1 without one.
    unsigned int Note(const std::string& operation, int width, int height, long long backgroundSum = -1);
};

// Arguments of ApplyCorrection. `image` and `output` are longer than any length that is given.
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

    unsigned int AddCorrection(const std::string& key, const std::vector<TImage>& frames, float exposureSeconds,
                               float intensityPercent);
    unsigned int SetActiveCorrection(const std::optional<std::string>& key);
    std::optional<std::string> GetActiveCorrectionKey() const;
    void ClearCorrections();
    unsigned int DeleteCorrection(const std::string& key);
    unsigned int SetCorrectionLevel(int percent);
    unsigned int SetExposureAndIntensity(float exposureSeconds, float intensityPercent);
    unsigned int GetExposureAndIntensity(float& exposureSeconds, float& intensityPercent);
    unsigned int GetReferenceExposureAndIntensity(float& exposureSeconds, float& intensityPercent) const;
    unsigned int GetCorrectionStatistics(TStatistics& statistics);
    unsigned int GetScaledCorrectionStatistics(TStatistics& statistics);
    unsigned int ApplyCorrection(TApplication& arguments);
    unsigned int SetRegion(int newLeft, int newTop, int newWidth, int newHeight);
    unsigned int GetRegion(std::vector<int>& region);

    void ImportOverwriting(const TProcessor& source);
    unsigned int AddEntryCopy(const TEntry& entry);
    unsigned int SaveGroupedFile(TLiteralDisk& disk, const std::string& path, const std::vector<std::string>& names);
    unsigned int LoadGroupedFile(const TLiteralDisk& disk, const std::string& path, std::vector<std::string>& names,
                                 std::uint32_t& version, bool enterHeaderOnly);

private:
    struct TStream;

    unsigned int Fail(unsigned int code, const std::string& text);
    std::shared_ptr<TEntry> Find(const std::string& key) const;
    void Recalculate();
    unsigned int OpenForReading(const TLiteralDisk& disk, const std::string& path, std::uint32_t& version,
                                TStream& stream);
    unsigned int ReadHeader(TStream& stream, std::uint32_t id, std::uint32_t version,
                            std::optional<std::uint32_t> length);
    unsigned int ReadRecord(TStream& stream, std::uint32_t id, std::uint32_t version, FileBytes::TBytes& data);
    unsigned int ReadNumber(TStream& stream, std::uint32_t id, std::uint32_t version, std::uint32_t& number);
    unsigned int ReadCorrections(TStream& stream);
    unsigned int ReadCorrection(TStream& stream, TEntry& entry);
};

} // namespace Literal

#endif
