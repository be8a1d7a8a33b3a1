// An offline store as a host holds it, the folder it works in, and the shorthand that its tests need.
#ifndef TESTS_OFFLINE_STORESUPPORT_H
#define TESTS_OFFLINE_STORESUPPORT_H

#include "QX_BackgroundCorrection.h"

#include "file/FileBytes.h"
#include "model/LiteralArithmetic.h"
#include "model/LiteralDisk.h" // kBackslashSystem
#include "offline/TBackgroundCorrectionFileManager.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <map>
#include <ostream>
#include <string>
#include <vector>

// Shows the store's own text, which GetLastErrorMessage clears before it hands it out: the address that it hands out is
// always that of the store's message buffer, so a failure that came later can be read there.
class TStoreText {
public:
    // Provokes a failure to get the address, and clears its text again.
    explicit TStoreText(QX_KRLSDK::QX_IBackgroundCorrection& store)
    {
        store.AddCorrection(nullptr, nullptr, 0, 0, 0, 0.0f, 0.0f);
        buffer = store.GetLastErrorMessage();
    }
    std::string Text() const { return buffer; }

private:
    const char* buffer;
};

// The grouping names of most stores that are tested.
inline const std::vector<std::string> kAB = {"A", "B"};

// Made and destroyed through the exports.
class TTestStore {
public:
    explicit TTestStore(const std::vector<std::string>& groupingNames = kAB);
    ~TTestStore();
    TTestStore(const TTestStore&) = delete;
    TTestStore& operator=(const TTestStore&) = delete;

    QX_KRLSDK::QX_IBackgroundCorrection* operator->() const { return object; }
    QX_KRLSDK::QX_IBackgroundCorrection* Get() const { return object; }

    // The store's own text.
    std::string Text() const { return text.Text(); }
    // The text of the loaded group's processor; only while the store has no text of its own.
    std::string InnerText() const;

    // A correction from one frame of 2 x 1 pixels of this value.
    unsigned int Add(const std::string& key, std::uint16_t value = 100, float exposureSeconds = 1.0f,
                     float intensityPercent = 1.0f) const;
    unsigned int AddFrames(const std::string& key, const std::vector<Literal::TImage>& frames, float exposureSeconds,
                           float intensityPercent) const;
    unsigned int Select(const std::string& key) const { return object->SetActiveCorrection(key.c_str()); }
    unsigned int Save(const std::string& path) const { return object->SaveFile(path.c_str()); }
    unsigned int Load(const std::string& path) const { return object->LoadFile(path.c_str()); }

    std::vector<std::string> Keys() const;
    // In alphabetical order: after loading, the order of keys is that of the folder.
    std::vector<std::string> SortedKeys() const;
    // Null as "(null)".
    std::string ActiveKey() const;
    bool HasGroup() const; // whether a group is loaded
    // A pixel of value 1000 after correction, in a region of one pixel set for that.
    int Corrected() const;

private:
    QX_KRLSDK::QX_IBackgroundCorrection* object;
    TStoreText text;
};

// A temporary folder that is the current one meanwhile, so that names without folders land there.
class TStoreFolder {
public:
    // Under `parent`, or the system's folder for temporary files.
    explicit TStoreFolder(const std::string& parent = std::string());
    ~TStoreFolder();
    TStoreFolder(const TStoreFolder&) = delete;
    TStoreFolder& operator=(const TStoreFolder&) = delete;

    const std::string& Path() const { return folder.Path(); }
    // With backslashes, whatever the system.
    std::string BackslashPath(const std::string& name) const;

    // Names of files with their bytes, of folders below with no bytes; separators are "/".
    std::map<std::string, FileBytes::TBytes> Files() const;
    std::vector<std::string> Names() const;
    FileBytes::TBytes Read(const std::string& name) const { return FileBytes::ReadFile(name); }
    void Write(const std::string& name, const FileBytes::TBytes& bytes) const { FileBytes::WriteFile(name, bytes); }
    void MakeFolder(const std::string& name) const { std::filesystem::create_directory(name); }
    void Remove(const std::string& name) const { std::filesystem::remove_all(name); }

private:
    TTemporaryFolder folder;
    std::filesystem::path before;
};

namespace StoreFiles {

struct TCorrection {
    std::string key;
    std::uint32_t width;
    std::uint32_t height;
    float exposureSeconds;
    float intensityPercent;
    std::vector<std::uint16_t> pixels;
};

// What Add makes of a key.
TCorrection Flat(const std::string& key, std::uint16_t value = 100, float exposureSeconds = 1.0f,
                 float intensityPercent = 1.0f);

// The bytes of a file of structure version 2 or 1, put together from numbers and texts.
FileBytes::TBytes Grouped(const std::vector<std::string>& names, const std::vector<TCorrection>& corrections);
FileBytes::TBytes Ungrouped(const std::vector<TCorrection>& corrections);

} // namespace StoreFiles

#endif
