#include "offline/StoreSupport.h"

#include "file/SampleFiles.h"

#include <algorithm>

using FileBytes::TBytes;

namespace {

QX_KRLSDK::QX_IBackgroundCorrection* Create(std::vector<std::string> names)
{
    std::vector<char*> pointers;
    for (std::string& name : names) {
        pointers.push_back(name.data());
    }
    char* none = nullptr;
    return CreateBackgroundCorrectionOffline(pointers.empty() ? &none : pointers.data(),
                                             static_cast<int>(pointers.size()));
}

} // namespace

TTestStore::TTestStore(const std::vector<std::string>& groupingNames) : object(Create(groupingNames)), text(*object) {}

TTestStore::~TTestStore()
{
    DeleteBackgroundCorrection(object);
}

std::string TTestStore::InnerText() const
{
    const char* const message = object->GetLastErrorMessage();
    return message != nullptr ? message : "(null)";
}

unsigned int TTestStore::Add(const std::string& key, std::uint16_t value, float exposureSeconds,
                             float intensityPercent) const
{
    return AddFrames(key, {{2, 1, {value, value}}}, exposureSeconds, intensityPercent);
}

unsigned int TTestStore::AddFrames(const std::string& key, const std::vector<Literal::TImage>& frames,
                                   float exposureSeconds, float intensityPercent) const
{
    std::vector<const unsigned short*> pointers;
    for (const Literal::TImage& frame : frames) {
        pointers.push_back(frame.pixels.data());
    }
    return object->AddCorrection(key.c_str(), pointers.data(), static_cast<int>(pointers.size()), frames.front().width,
                                 frames.front().height, exposureSeconds, intensityPercent);
}

std::vector<std::string> TTestStore::Keys() const
{
    std::vector<std::string> keys;
    for (unsigned int i = 0; i < object->GetNumberOfCorrections(); ++i) {
        keys.push_back(object->GetCorrectionKey(i));
    }
    return keys;
}

std::vector<std::string> TTestStore::SortedKeys() const
{
    std::vector<std::string> keys = Keys();
    std::sort(keys.begin(), keys.end());
    return keys;
}

std::string TTestStore::ActiveKey() const
{
    const char* const key = object->GetActiveCorrectionKey();
    return key != nullptr ? key : "(null)";
}

bool TTestStore::HasGroup() const
{
    float exposure = 0.0f;
    float intensity = 0.0f;
    const bool hasGroup = object->GetReferenceExposureAndIntensity(&exposure, &intensity) != 1280;
    if (!hasGroup) {
        object->GetLastErrorMessage(); // takes the text away again
    }
    return hasGroup;
}

int TTestStore::Corrected() const
{
    object->SetRegion(0, 0, 1, 1);
    unsigned short pixel = 1000;
    const unsigned int result = object->ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false);
    return result == 0 ? pixel : -1;
}

TStoreFolder::TStoreFolder(const std::string& parent) : folder(parent), before(std::filesystem::current_path())
{
    std::filesystem::current_path(folder.Path());
}

TStoreFolder::~TStoreFolder()
{
    std::error_code ignored;
    std::filesystem::current_path(before, ignored);
}

std::string TStoreFolder::BackslashPath(const std::string& name) const
{
    std::string path = folder.Path() + "\\" + name;
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

std::map<std::string, TBytes> TStoreFolder::Files() const
{
    std::map<std::string, TBytes> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
        const std::string name = entry.path().lexically_relative(folder.Path()).generic_string();
        files[name] = entry.is_directory() ? TBytes() : FileBytes::ReadFile(entry.path().string());
    }
    return files;
}

std::vector<std::string> TStoreFolder::Names() const
{
    std::vector<std::string> names;
    for (const auto& file : Files()) {
        names.push_back(file.first);
    }
    return names;
}

namespace StoreFiles {

namespace {

TBytes Corrections(const std::vector<TCorrection>& corrections)
{
    TBytes bytes = FileBytes::Join({FileBytes::Number(61), FileBytes::Number(1), FileBytes::Number(4),
                                    FileBytes::Number(static_cast<std::uint32_t>(corrections.size()))});
    for (const TCorrection& correction : corrections) {
        TBytes pixels;
        for (const std::uint16_t pixel : correction.pixels) {
            pixels.push_back(static_cast<unsigned char>(pixel & 0xFF));
            pixels.push_back(static_cast<unsigned char>(pixel >> 8));
        }
        bytes = FileBytes::Join(
            {bytes, SampleFiles::Correction(correction.key, correction.width, correction.height,
                                            correction.exposureSeconds, correction.intensityPercent, pixels)});
    }
    return bytes;
}

TBytes Beginning(std::uint32_t version)
{
    return FileBytes::Join({FileBytes::Padded("Background Correction File", 26), FileBytes::Number(version)});
}

} // namespace

TCorrection Flat(const std::string& key, std::uint16_t value, float exposureSeconds, float intensityPercent)
{
    return {key, 2, 1, exposureSeconds, intensityPercent, {value, value}};
}

TBytes Grouped(const std::vector<std::string>& names, const std::vector<TCorrection>& corrections)
{
    TBytes bytes = FileBytes::Join({Beginning(2), FileBytes::Number(69), FileBytes::Number(2), FileBytes::Number(4),
                                    FileBytes::Number(static_cast<std::uint32_t>(names.size()))});
    for (const std::string& name : names) {
        bytes = FileBytes::Join(
            {bytes, FileBytes::Number(70), FileBytes::Number(2), FileBytes::Number(16), FileBytes::Padded(name, 16)});
    }
    return FileBytes::Join({bytes, Corrections(corrections)});
}

TBytes Ungrouped(const std::vector<TCorrection>& corrections)
{
    return FileBytes::Join({Beginning(1), Corrections(corrections)});
}

} // namespace StoreFiles
