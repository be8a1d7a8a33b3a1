// The offline store written a second time, step by step as it is described and without regard to speed: what the
// library's store is compared with. Shares no code with the library.
#ifndef TESTS_MODEL_LITERALSTORE_H
#define TESTS_MODEL_LITERALSTORE_H

#include "model/LiteralDisk.h"
#include "model/LiteralProcessor.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Literal {

// The rules about texts, as free functions.
TTexts Tokens(const std::string& text, char delimiter);
std::string FindValueForName(const std::string& list, const std::string& name, char delimiter);
bool IsGroupFileOf(const std::string& candidate, const TTexts& names, const std::string& base);

struct TStore {
    explicit TStore(TLiteralDisk& storeDisk) : disk(storeDisk) {}

    std::unique_ptr<TProcessor> processor;
    TTexts values;
    TTexts keys;
    TTexts groupingNames;
    std::string base;
    float exposure = -1.0f;
    float intensity = -1.0f;
    int left = -1;
    int top = -1;
    int width = -1;
    int height = -1;
    int level = -1;
    bool headerOnly = false;
    std::string message;

    // As the factory does; nothing stands for a null array.
    unsigned int SetGroupingParameters(const std::optional<TTexts>& names, int count);
    unsigned int AddCorrection(const TAddition& addition);
    unsigned int SetActiveCorrection(const TKey& key);
    TKey GetActiveCorrectionKey() const;
    TKey GetCorrectionKey(std::size_t index) const;
    std::size_t GetNumberOfCorrections() const { return keys.size(); }
    unsigned int ClearCorrections();
    unsigned int DeleteCorrection(const TKey& key);
    unsigned int SetCorrectionLevel(int percent);
    int GetCorrectionLevel() const { return level; }
    unsigned int SetExposureAndIntensity(float exposureSeconds, float intensityPercent);
    unsigned int GetExposureAndIntensity(float& exposureSeconds, float& intensityPercent);
    unsigned int GetReferenceExposureAndIntensity(float& exposureSeconds, float& intensityPercent);
    unsigned int GetCorrectionStatistics(TStatistics& statistics);
    unsigned int GetScaledCorrectionStatistics(TStatistics& statistics);
    unsigned int ApplyCorrection(TApplication& arguments);
    unsigned int SetRegion(int newLeft, int newTop, int newWidth, int newHeight);
    unsigned int GetRegion(std::vector<int>& region);
    unsigned int ImportCorrections(const TImportSource& source, bool overwrite);
    unsigned int LoadFileHeaderOnly(const std::optional<std::string>& fileName);
    unsigned int LoadFile(const std::optional<std::string>& fileName);
    unsigned int SaveFile(const std::optional<std::string>& fileName);
    TKey GetLastErrorMessage(); // nothing: a null pointer

private:
    TLiteralDisk& disk;

    unsigned int Fail(unsigned int code, const std::string& text);
    void ReleaseCurrentGroup();
    unsigned int ExtractGroupValues(const std::string& key, TTexts& found) const;
    bool IsCurrentGroup(const TTexts& others) const;
    unsigned int BuildGroupFileName(const std::string& start, const TTexts& groupValues, std::string& path) const;
    unsigned int ParseGroupValuesFromFileName(const std::string& path, const std::string& start, TTexts& found) const;
    void ApplyPendingSettings(TProcessor& target) const;
    unsigned int SelectGroup(const std::string& key);
    const TEntry* FindEntryForKey(const std::string& key);
    unsigned int DeriveBaseFileName(const std::string& path, TTexts& names, std::string& found, std::uint32_t& version);
    TTexts ListGroupFiles(const TTexts& names, const std::string& start) const;
    unsigned int RemoveStoreFiles(const std::string& path);
    unsigned int Import(const TImportSource& source, std::size_t index, const std::string& key, bool overwrite);
    unsigned int SaveSplit(const std::string& target, const std::string& fileName);
    unsigned int SaveCopy(const std::string& target);
};

} // namespace Literal

#endif
