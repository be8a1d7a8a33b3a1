#include "faults/Snapshot.h"

#include "file/ProcessorDriver.h"
#include "offline/TBackgroundCorrectionFileManager.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <future>
#include <set>
#include <thread>

using QX_KRLSDK::QX_IBackgroundCorrection;
namespace fs = std::filesystem;

unsigned int AddEven(QX_IBackgroundCorrection& object, const char* key, int width, int height, unsigned short value)
{
    const std::vector<unsigned short> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), value);
    const unsigned short* frames[] = {pixels.data()};
    return object.AddCorrection(key, frames, 1, width, height, 1.0f, 100.0f);
}

TWorld::~TWorld()
{
    DeleteBackgroundCorrection(object);
    DeleteBackgroundCorrection(source);
}

void TWorld::MakeProcessor()
{
    object = CreateBackgroundCorrection();
}

void TWorld::MakeStore()
{
    char first[] = "A";
    char second[] = "B";
    char* names[] = {first, second};
    object = CreateBackgroundCorrectionOffline(names, 2);
    // A store's own text always stands at the address that is handed out for it, whatever else is handed out later.
    object->AddCorrection(nullptr, nullptr, 0, 0, 0, 0.0f, 0.0f);
    ownText = object->GetLastErrorMessage();
}

bool TWorld::IsStore() const
{
    return dynamic_cast<TBackgroundCorrectionFileManager*>(object) != nullptr;
}

TBackgroundCorrectionProcessorUINT16& TWorld::Processor() const
{
    return dynamic_cast<TBackgroundCorrectionProcessorUINT16&>(*object);
}

std::string TWorld::Text() const
{
    if (object == nullptr || (ownText != nullptr && *ownText != '\0')) {
        return object == nullptr ? "" : ownText;
    }
    const char* const text = object->GetLastErrorMessage();
    return text != nullptr ? text : "";
}

void TWorld::ForgetText() const
{
    if (ownText != nullptr && *ownText != '\0') {
        object->GetLastErrorMessage();
    }
}

namespace Snapshots {

namespace {

std::string OrNull(const char* text)
{
    return text != nullptr ? text : "(null)";
}

template <typename... TNumbers> std::string Numbers(TNumbers... numbers)
{
    std::string text;
    for (const std::string& number : {std::to_string(numbers)...}) {
        text += number + " ";
    }
    return text;
}

std::vector<std::string> KeysOf(const TWorld& world)
{
    std::vector<std::string> keys;
    for (unsigned int i = 0; i < world.object->GetNumberOfCorrections(); ++i) {
        keys.push_back(OrNull(world.object->GetCorrectionKey(i)));
    }
    return keys;
}

std::string Background(const TWorld& world, int width, int height)
{
    const int length = width > 0 && height > 0 ? width * height : 1;
    std::vector<unsigned short> image(static_cast<std::size_t>(length), 65535);
    std::string text =
        Numbers(world.object->ApplyCorrection(image.data(), length, nullptr, 0, nullptr, false, false, false));
    for (const unsigned short pixel : image) {
        text += Numbers(65535 - pixel);
    }
    return text;
}

std::string Statistics(const TWorld& world)
{
    unsigned short values[3] = {4711, 4711, 4711};
    const unsigned int code = world.object->GetCorrectionStatistics(&values[0], &values[1], &values[2]);
    return Numbers(code, values[0], values[1], values[2]);
}

TSnapshot TakeFields(const TWorld& world)
{
    TSnapshot snapshot;
    if (world.object == nullptr) {
        return snapshot;
    }
    QX_IBackgroundCorrection& object = *world.object;
    auto& fields = snapshot.fields;
    int region[4] = {-4711, -4711, -4711, -4711};
    float values[2] = {-4711.0f, -4711.0f};
    fields["active"] = OrNull(object.GetActiveCorrectionKey());
    fields["level"] = Numbers(object.GetCorrectionLevel());
    unsigned int code = object.GetRegion(&region[0], &region[1], &region[2], &region[3]);
    fields["region"] = Numbers(code, region[0], region[1], region[2], region[3]);
    code = object.GetExposureAndIntensity(&values[0], &values[1]);
    fields["exposure"] = Numbers(code, values[0], values[1]);
    values[0] = values[1] = -4711.0f;
    code = object.GetReferenceExposureAndIntensity(&values[0], &values[1]);
    fields["reference"] = Numbers(code, values[0], values[1]);
    fields["statistics"] = Statistics(world);
    fields["background"] = Background(world, region[2], region[3]);
    if (world.IsStore()) {
        snapshot.entries = KeysOf(world);
        std::sort(snapshot.entries.begin(), snapshot.entries.end()); // a folder is listed in any order
    } else {
        for (const TStoredCorrection& correction : ProcessorDriver::Corrections(world.Processor())) {
            snapshot.entries.push_back(Describe(correction));
        }
        fields["modified"] = world.Processor().IsModified() ? "yes" : "no";
    }
    world.ForgetText();
    return snapshot;
}

} // namespace

TSnapshot Take(const TWorld& world)
{
    TSnapshot snapshot = TakeFields(world);
    snapshot.files = Files();
    return snapshot;
}

TSnapshot TakeWithContents(const TWorld& world)
{
    TSnapshot snapshot = TakeFields(world);
    if (world.object == nullptr) {
        return snapshot;
    }
    std::vector<std::string> keys = KeysOf(world);
    std::sort(keys.begin(), keys.end());
    for (const std::string& key : keys) {
        const unsigned int code = world.object->SetActiveCorrection(key.c_str());
        snapshot.fields["contents of " + key] =
            Numbers(code) + Statistics(world) + OrNull(world.object->GetActiveCorrectionKey());
    }
    world.ForgetText();
    snapshot.files = Files();
    return snapshot;
}

std::map<std::string, FileBytes::TBytes> Files()
{
    std::map<std::string, FileBytes::TBytes> files;
    for (const auto& entry : fs::recursive_directory_iterator(fs::current_path())) {
        const std::string name = entry.path().lexically_relative(fs::current_path()).generic_string();
        files[name] = entry.is_directory() ? FileBytes::TBytes() : FileBytes::ReadFile(entry.path().string());
    }
    return files;
}

void RestoreFiles(const std::map<std::string, FileBytes::TBytes>& files)
{
    const std::map<std::string, FileBytes::TBytes> present = Files();
    for (const auto& file : present) {
        if (files.count(file.first) == 0) {
            fs::remove(file.first);
        }
    }
    for (const auto& file : files) {
        const auto found = present.find(file.first);
        if (found == present.end() || found->second != file.second) {
            fs::remove(file.first); // some file systems wait for the disk when a file is written over
            FileBytes::WriteFile(file.first, file.second);
        }
    }
}

std::string Contradictions(const TWorld& world)
{
    if (world.object == nullptr) {
        return "";
    }
    std::string found;
    std::vector<std::string> keys = KeysOf(world);
    const std::string active = OrNull(world.object->GetActiveCorrectionKey());
    if (active != "(null)" && std::find(keys.begin(), keys.end(), active) == keys.end()) {
        found += "the active key " + active + " is not in the list; ";
    }
    if (std::set<std::string>(keys.begin(), keys.end()).size() != keys.size()) {
        found += "a key is there twice; ";
    }
    if (std::find(keys.begin(), keys.end(), "(null)") != keys.end()) {
        found += "the list is shorter than its number; ";
    }
    if (!world.IsStore()) {
        int region[4] = {0, 0, 0, 0};
        const bool isKnown = world.object->GetRegion(&region[0], &region[1], &region[2], &region[3]) == 0;
        for (unsigned int i = 0; i < keys.size(); ++i) {
            const TBackgroundCorrectionEntry& entry = *world.Processor().GetEntryAt(i);
            const int width = static_cast<int>(entry.Width());
            const int height = static_cast<int>(entry.Height());
            if (isKnown && active == entry.Key() && (region[0] + region[2] > width || region[1] + region[3] > height)) {
                found += "the region reaches beyond the active correction; ";
            }
        }
    }
    return found;
}

bool LockIsFree(QX_IBackgroundCorrection* object)
{
    if (object == nullptr) {
        return true;
    }
    // A thread that has to wait for ever cannot be joined: it is left alone with what it uses.
    auto* const done = new std::promise<void>;
    std::future<void> finished = done->get_future();
    std::thread thread([done, object] {
        object->GetNumberOfCorrections();
        done->set_value();
    });
    if (finished.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        thread.detach();
        return false;
    }
    thread.join();
    delete done;
    return true;
}

std::string Use(TWorld& world, bool everything)
{
    if (world.object == nullptr) {
        return "";
    }
    QX_IBackgroundCorrection& object = *world.object;
    unsigned short pixel = 0;
    if (object.ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false) == 770) {
        object.ClearCorrections();
    }
    const unsigned int before = object.GetNumberOfCorrections();
    const char* const key = world.keyToUse.c_str();
    if (AddEven(object, key, 3, 1, 40) != 0 || object.SetActiveCorrection(key) != 0) {
        return "cannot add: " + world.Text();
    }
    object.SetExposureAndIntensity(2.0f, 100.0f);
    object.SetCorrectionLevel(50);
    object.SetRegion(1, 0, 2, 1);
    std::vector<unsigned short> image = {100, 30};
    if (object.ApplyCorrection(image.data(), 2, nullptr, 0, nullptr, false, false, false) != 0 ||
        image != std::vector<unsigned short>{60, 0}) {
        return "corrects wrongly: " + world.Text();
    }
    if (object.GetNumberOfCorrections() != before + 1) {
        return "does not count";
    }
    if (!everything) { // groups may be torn on disk
        object.ClearCorrections();
        AddEven(object, key, 3, 1, 40);
    }
    if (object.SaveFile("use") != 0) {
        return "cannot save: " + world.Text();
    }
    if (object.LoadFile("use") != 0 || object.SetActiveCorrection(key) != 0) {
        return "cannot load: " + world.Text();
    }
    if (everything && object.GetNumberOfCorrections() != before + 1) {
        return "has lost corrections";
    }
    return "";
}

std::size_t OpenDescriptors()
{
#ifdef _WIN32
    return 0; // Wine shows the folder below, with descriptors of its own that come and go
#else
    const fs::path folder = "/proc/self/fd";
    if (!fs::exists(folder)) {
        return 0;
    }
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
#endif
}

std::string Difference(const TSnapshot& expected, const TSnapshot& actual)
{
    std::string text;
    const auto note = [&text](const std::string& what, const std::string& wanted, const std::string& found) {
        text += "  " + what + ": expected '" + wanted + "', found '" + found + "'\n";
    };
    auto fields = expected.fields;
    fields.insert(actual.fields.begin(), actual.fields.end());
    for (const auto& field : fields) {
        const auto wanted = expected.fields.find(field.first);
        const auto found = actual.fields.find(field.first);
        const std::string left = wanted == expected.fields.end() ? "(nothing)" : wanted->second;
        const std::string right = found == actual.fields.end() ? "(nothing)" : found->second;
        if (left != right) {
            note(field.first, left, right);
        }
    }
    if (expected.entries != actual.entries) {
        const auto joined = [](const std::vector<std::string>& entries) {
            std::string all;
            for (const std::string& entry : entries) {
                all += entry + " | ";
            }
            return all;
        };
        note("list", joined(expected.entries), joined(actual.entries));
    }
    auto files = expected.files;
    files.insert(actual.files.begin(), actual.files.end());
    for (const auto& file : files) {
        const auto wanted = expected.files.find(file.first);
        const auto found = actual.files.find(file.first);
        if (wanted == expected.files.end() || found == actual.files.end()) {
            note("file " + file.first, wanted == expected.files.end() ? "(none)" : "a file",
                 found == actual.files.end() ? "(none)" : "a file");
        } else if (wanted->second != found->second) {
            note("file " + file.first, "its bytes", FileBytes::Difference(found->second, wanted->second));
        }
    }
    return text;
}

} // namespace Snapshots
