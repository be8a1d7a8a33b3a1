#include "model/LiteralStore.h"

#include <algorithm>

namespace Literal {

namespace {

const char kHeaderOnly[] = "This file has been opened in header only mode. Cannot modify or apply corrections.";

// Where hosts write folders with "/", the operations that take a file name turn it into "\".
std::string StoreSpelling(std::string fileName)
{
    if (!kBackslashSystem) {
        std::replace(fileName.begin(), fileName.end(), '/', '\\');
    }
    return fileName;
}

} // namespace

unsigned int TStore::Fail(unsigned int code, const std::string& text)
{
    message = Cut(text);
    return code;
}

void TStore::ReleaseCurrentGroup()
{
    processor.reset();
    values.clear();
}

unsigned int TStore::SetGroupingParameters(const std::optional<TTexts>& names, int count)
{
    if (!names.has_value()) {
        return Fail(513, "Grouping parameters are NULL.");
    }
    if (count <= 0) {
        return Fail(513, "One of the grouping parameter is NULL.");
    }
    for (int i = 0; i < count; ++i) {
        const std::string& name = names->at(static_cast<std::size_t>(i));
        if (name.empty()) {
            return Fail(513, "One of the grouping parameter is NULL.");
        }
        groupingNames.push_back(name);
    }
    return 0;
}

unsigned int TStore::AddCorrection(const TAddition& addition)
{
    if (!addition.key.has_value()) {
        return Fail(513, "Input key is NULL.");
    }
    unsigned int result = SelectGroup(*addition.key);
    if (result == 0) {
        result = processor->AddCorrection(addition);
    }
    if (result == 0) {
        keys.push_back(*addition.key);
    }
    return result;
}

unsigned int TStore::SetActiveCorrection(const TKey& key)
{
    if (!key.has_value()) {
        return processor != nullptr ? processor->SetActiveCorrection(key) : 0;
    }
    const unsigned int result = SelectGroup(*key);
    if (result != 0) {
        return result;
    }
    if (processor == nullptr) {
        return Fail(513, "Background correction key not found - '" + *key + "'");
    }
    return processor->SetActiveCorrection(key);
}

TKey TStore::GetActiveCorrectionKey() const
{
    return processor != nullptr ? processor->GetActiveCorrectionKey() : std::nullopt;
}

TKey TStore::GetCorrectionKey(std::size_t index) const
{
    return index < keys.size() ? TKey(keys[index]) : std::nullopt;
}

unsigned int TStore::ClearCorrections()
{
    ReleaseCurrentGroup();
    keys.clear();
    base.clear();
    headerOnly = false;
    return 0;
}

unsigned int TStore::DeleteCorrection(const TKey& key)
{
    if (!key.has_value()) {
        return Fail(513, "Input key is NULL.");
    }
    unsigned int result = SelectGroup(*key);
    if (result == 0) {
        result = processor->DeleteCorrection(key);
    }
    if (result == 0) {
        keys.erase(std::remove(keys.begin(), keys.end(), *key), keys.end());
    }
    return result;
}

unsigned int TStore::SetCorrectionLevel(int percent)
{
    const unsigned int result = processor != nullptr ? processor->SetCorrectionLevel(percent) : 0;
    if (result == 0) {
        level = percent;
    }
    return result;
}

unsigned int TStore::SetExposureAndIntensity(float exposureSeconds, float intensityPercent)
{
    const unsigned int result =
        processor != nullptr ? processor->SetExposureAndIntensity(exposureSeconds, intensityPercent) : 0;
    if (result == 0) {
        exposure = exposureSeconds;
        intensity = intensityPercent;
    }
    return result;
}

unsigned int TStore::GetExposureAndIntensity(float& exposureSeconds, float& intensityPercent)
{
    if (processor != nullptr) {
        return processor->GetExposureAndIntensity(exposureSeconds, intensityPercent);
    }
    exposureSeconds = exposure;
    intensityPercent = intensity;
    return 0;
}

unsigned int TStore::GetReferenceExposureAndIntensity(float& exposureSeconds, float& intensityPercent)
{
    return processor != nullptr ? processor->GetReferenceExposureAndIntensity(exposureSeconds, intensityPercent)
                                : Fail(1280, "No correction active.");
}

unsigned int TStore::GetCorrectionStatistics(TStatistics& statistics)
{
    return processor != nullptr ? processor->GetCorrectionStatistics(statistics) : Fail(1280, "No correction active.");
}

unsigned int TStore::GetScaledCorrectionStatistics(TStatistics& statistics)
{
    return processor != nullptr ? processor->GetScaledCorrectionStatistics(statistics)
                                : Fail(1280, "No correction active.");
}

unsigned int TStore::ApplyCorrection(TApplication& a)
{
    if (a.imageIsNull) {
        return Fail(513, "Input Source image 1 pointer is NULL.");
    }
    if (processor != nullptr) {
        return processor->ApplyCorrection(a);
    }
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (a.hasOutput) {
        if (a.imageLength != a.outputLength) {
            return Fail(516, "The input image sizes do not match.");
        }
        if (!a.outputIsImage && a.imageLength > 0) {
            std::copy_n(a.image.begin(), a.imageLength, a.output.begin());
        }
    }
    return a.useDelegate && a.hasDelegate ? a.delegate.Note("ProcessInPlace", width, height) : 0;
}

unsigned int TStore::SetRegion(int newLeft, int newTop, int newWidth, int newHeight)
{
    const unsigned int result = processor != nullptr ? processor->SetRegion(newLeft, newTop, newWidth, newHeight) : 0;
    if (result == 0) {
        left = newLeft;
        top = newTop;
        width = newWidth;
        height = newHeight;
    }
    return result;
}

unsigned int TStore::GetRegion(std::vector<int>& region)
{
    if (processor != nullptr) {
        return processor->GetRegion(region);
    }
    region = {left, top, width, height};
    return 0;
}

TKey TStore::GetLastErrorMessage()
{
    if (message.empty()) {
        return processor != nullptr ? TKey(processor->message) : std::nullopt;
    }
    message.clear();
    return TKey("");
}

unsigned int TStore::ImportCorrections(const TImportSource& source, bool overwrite)
{
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    if (source.store == nullptr && source.processor == nullptr) {
        return Fail(513, "The supplied import source is NULL.");
    }
    const std::size_t count =
        source.store != nullptr ? source.store->GetNumberOfCorrections() : source.processor->GetNumberOfCorrections();
    std::string savedKey;
    if (processor != nullptr && processor->active != nullptr) {
        savedKey = processor->active->key;
        processor->SetActiveCorrection(std::nullopt);
    }
    unsigned int result = 0;
    for (std::size_t i = 0; i < count && result == 0; ++i) {
        // Of this round: a store that imports itself loses keys on the way, and the later ones move up.
        const TKey key =
            source.store != nullptr ? source.store->GetCorrectionKey(i) : source.processor->GetCorrectionKey(i);
        if (key.has_value()) {
            result = Import(source, i, *key, overwrite);
        }
    }
    if (!savedKey.empty()) {
        result = SelectGroup(savedKey);
        if (result == 0) {
            result = processor->SetActiveCorrection(savedKey);
        }
    }
    return result;
}

unsigned int TStore::Import(const TImportSource& source, std::size_t index, const std::string& key, bool overwrite)
{
    unsigned int result = SelectGroup(key);
    if (result != 0) {
        return result;
    }
    if (std::count(keys.begin(), keys.end(), key) != 0) {
        if (!overwrite) {
            return 0;
        }
        result = processor->DeleteCorrection(key);
        keys.erase(std::remove(keys.begin(), keys.end(), key), keys.end());
        if (result != 0) {
            return result;
        }
    }
    const TEntry* const entry =
        source.store != nullptr ? source.store->FindEntryForKey(key) : source.processor->entries[index].get();
    if (entry == nullptr) {
        return 0;
    }
    result = processor->AddEntryCopy(*entry);
    if (result == 0) {
        keys.push_back(key);
    }
    return result;
}

unsigned int TStore::LoadFileHeaderOnly(const std::optional<std::string>& fileName)
{
    if (!fileName.has_value()) {
        return Fail(513, "Input file name is NULL.");
    }
    const std::string path = StoreSpelling(*fileName);
    TTexts fileNames;
    std::string derivedBase;
    std::uint32_t version = 0;
    const unsigned int derived = DeriveBaseFileName(path, fileNames, derivedBase, version);
    TTexts files;
    if (derived == 771) {
        files = ListGroupFiles(groupingNames, path);
        if (files.empty()) {
            return 771;
        }
        fileNames = groupingNames;
    } else if (derived == 0 && version != 1) {
        files = ListGroupFiles(fileNames, derivedBase);
    } else if ((derived == 0 || derived == 772) && version == 1) {
        files = {path};
    } else {
        return derived;
    }
    auto scratch = std::make_unique<TProcessor>();
    TTexts found;
    for (const std::string& file : files) {
        TTexts ignoredNames;
        std::uint32_t ignoredVersion = 0;
        const unsigned int result = scratch->LoadGroupedFile(disk.Open(file), ignoredNames, ignoredVersion, true);
        if (result != 0) {
            return result;
        }
        for (const auto& entry : scratch->entries) {
            found.push_back(entry->key);
        }
    }
    ClearCorrections();
    if (version != 1) {
        groupingNames = fileNames;
        base = derivedBase;
    } else {
        processor = std::move(scratch);
    }
    keys = found;
    headerOnly = true;
    return 0;
}

unsigned int TStore::LoadFile(const std::optional<std::string>& fileName)
{
    if (!fileName.has_value()) {
        return Fail(513, "Input file name is NULL.");
    }
    const unsigned int result = LoadFileHeaderOnly(fileName);
    if (result != 0) {
        return result;
    }
    headerOnly = false;
    SetActiveCorrection(std::nullopt);
    if (processor == nullptr) {
        return 0;
    }
    TTexts ignoredNames;
    std::uint32_t ignoredVersion = 0;
    return processor->LoadGroupedFile(disk.Open(StoreSpelling(*fileName)), ignoredNames, ignoredVersion, false);
}

unsigned int TStore::SaveFile(const std::optional<std::string>& fileName)
{
    if (!fileName.has_value()) {
        return Fail(513, "Input file name is NULL.");
    }
    if (headerOnly) {
        return Fail(770, kHeaderOnly);
    }
    const std::string path = StoreSpelling(*fileName);
    if (!base.empty() && processor != nullptr) {
        std::string groupFile;
        unsigned int result = BuildGroupFileName(base, values, groupFile);
        if (result == 0) {
            result = processor->SaveGroupedFile(disk, groupFile, groupingNames);
        }
        if (result != 0) {
            return result;
        }
    }
    if (!base.empty() && IsGroupFileOf(path, groupingNames, base)) {
        return 0;
    }
    TTexts fileNames;
    std::string target;
    std::uint32_t version = 0;
    const unsigned int derived = DeriveBaseFileName(path, fileNames, target, version);
    if (derived == 0 || (derived == 772 && version == 1)) {
        const unsigned int removed = RemoveStoreFiles(path);
        if (removed != 0) {
            return removed;
        }
    } else if (derived != 771) {
        return derived;
    }
    for (const std::string& file : ListGroupFiles(groupingNames, target)) {
        const unsigned int removed = RemoveStoreFiles(file);
        if (removed != 0) {
            return removed;
        }
    }
    if (!base.empty()) {
        return SaveCopy(target);
    }
    if (processor == nullptr) {
        return 0;
    }
    return SaveSplit(target, *fileName);
}

} // namespace Literal
