// One operation, done to the library's objects and to the model's.
#include "offline/StoreModelWorld.h"

#include <limits>
#include <numeric>
#include <sstream>

using FileBytes::TBytes;
namespace fs = std::filesystem;

namespace {

class TNotingDelegate : public QX_KRLSDK::ICorrectionDelegate {
public:
    explicit TNotingDelegate(Literal::TDelegate& notes) : delegate(notes) {}

    unsigned int SubtractInPlace(unsigned short*, const unsigned short* background, int width, int height,
                                 bool processing, bool option) override
    {
        return Subtract("SubtractInPlace", background, width, height, processing, option);
    }
    unsigned int SubtractInto(unsigned short*, unsigned short const*, const unsigned short* background, int width,
                              int height, bool processing, bool option) override
    {
        return Subtract("SubtractInto", background, width, height, processing, option);
    }
    unsigned int ProcessInPlace(unsigned short*, int width, int height) override
    {
        return delegate.Note("ProcessInPlace", width, height);
    }

private:
    unsigned int Subtract(const std::string& operation, const unsigned short* background, int width, int height,
                          bool processing, bool option)
    {
        return delegate.Note(operation + (processing ? " processing" : "") + (option ? " option" : ""), width, height,
                             std::accumulate(background, background + width * height, 0LL));
    }

    Literal::TDelegate& delegate;
};

std::vector<Literal::TImage> FramesOf(const TOperation& operation)
{
    constexpr int kSizes[][2] = {{1, 1}, {2, 1}, {2, 2}, {3, 2}};
    const int* const size = kSizes[operation.numbers[0]];
    std::vector<Literal::TImage> frames(operation.numbers[2] == 0 ? 1 : 2, {size[0], size[1], {}});
    for (std::size_t frame = 0; frame < frames.size(); ++frame) {
        for (int i = 0; i < size[0] * size[1]; ++i) {
            const int value = operation.numbers[1] + 7 * i * i + 3 * static_cast<int>(frame);
            frames[frame].pixels.push_back(static_cast<std::uint16_t>(value));
        }
    }
    return frames;
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kExposures[] = {1.0f, 0.5f, 2.0f, -1.0f, 0.1f, 4.0f, 1e-30f, kNaN, -kNaN, kInfinity, -kInfinity};
constexpr float kIntensities[] = {1.0f, 100.0f, 50.0f, -1.0f, 0.0f, 10.0f, 1e-30f, kNaN, -kNaN, kInfinity, -kInfinity};
static_assert(sizeof kExposures == kFactorCount * sizeof(float) && sizeof kIntensities == sizeof kExposures);

// Of corrections whose number of pixels, or its double, does not fit into 32 bits, or whose sides are no signed number.
constexpr std::uint32_t kOddSizes[][2] = {{0xFFFFFFFF, 1},    {1, 0xFFFFFFFF},    {0x80000000, 2}, {0x80000000, 0},
                                          {0x10000, 0x10000}, {0x10001, 0x10000}, {3, 0},          {0, 0xFFFFFFFF}};
static_assert(sizeof kOddSizes / sizeof *kOddSizes == kOddSizeCount);

} // namespace

Literal::TAddition TStoreModelWorld::AdditionOf(const TOperation& operation)
{
    return Literal::Addition(operation.text, FramesOf(operation),
                             kExposures[static_cast<std::size_t>(operation.numbers[3])],
                             kIntensities[static_cast<std::size_t>(operation.numbers[4])]);
}

unsigned int TStoreModelWorld::DoToStore(const TOperation& operation, TTestStore& store)
{
    const std::array<int, 6>& n = operation.numbers;
    const char* const text = operation.text.c_str();
    const char* const handedOut = store->GetCorrectionKey(static_cast<unsigned int>(n[0]));
    switch (operation.kind) {
    case TKind::kAdd:
        return store.AddFrames(operation.text, FramesOf(operation), kExposures[n[3]], kIntensities[n[4]]);
    case TKind::kSelect:
        return store->SetActiveCorrection(text);
    case TKind::kSelectNothing:
        return store->SetActiveCorrection(nullptr);
    case TKind::kSelectHandedOut:
        return store->SetActiveCorrection(handedOut);
    case TKind::kDelete:
        return store->DeleteCorrection(text);
    case TKind::kDeleteHandedOut:
        return handedOut != nullptr ? store->DeleteCorrection(handedOut) : 0;
    case TKind::kClear:
        return store->ClearCorrections();
    case TKind::kSetLevel:
        return store->SetCorrectionLevel(n[0]);
    case TKind::kSetExposure:
        return store->SetExposureAndIntensity(kExposures[n[0]], kIntensities[n[1]]);
    case TKind::kSetRegion:
        return store->SetRegion(n[0], n[1], n[2], n[3]);
    case TKind::kImport:
        return store->ImportCorrections(n[0] == 2 ? live->Get() : stores[static_cast<std::size_t>(n[0])]->Get(),
                                        n[1] != 0);
    case TKind::kSave:
        return store->SaveFile(text);
    case TKind::kSaveHandedOut:
        return handedOut != nullptr ? store->SaveFile(handedOut) : 0;
    case TKind::kLoad:
        return store->LoadFile(text);
    case TKind::kLoadHandedOut:
        return handedOut != nullptr ? store->LoadFile(handedOut) : 0;
    case TKind::kLoadHeaderOnly:
        return store->LoadFileHeaderOnly(text);
    default:
        return 0;
    }
}

unsigned int TStoreModelWorld::DoToModel(const TOperation& operation, Literal::TStore& model)
{
    const std::array<int, 6>& n = operation.numbers;
    const std::optional<std::string> handedOut = model.GetCorrectionKey(static_cast<std::size_t>(n[0]));
    switch (operation.kind) {
    case TKind::kAdd:
        return model.AddCorrection(AdditionOf(operation));
    case TKind::kSelect:
        return model.SetActiveCorrection(operation.text);
    case TKind::kSelectNothing:
        return model.SetActiveCorrection(std::nullopt);
    case TKind::kSelectHandedOut:
        return model.SetActiveCorrection(handedOut);
    case TKind::kDelete:
        return model.DeleteCorrection(operation.text);
    case TKind::kDeleteHandedOut:
        return handedOut.has_value() ? model.DeleteCorrection(*handedOut) : 0;
    case TKind::kClear:
        return model.ClearCorrections();
    case TKind::kSetLevel:
        return model.SetCorrectionLevel(n[0]);
    case TKind::kSetExposure:
        return model.SetExposureAndIntensity(kExposures[n[0]], kIntensities[n[1]]);
    case TKind::kSetRegion:
        return model.SetRegion(n[0], n[1], n[2], n[3]);
    case TKind::kImport:
        return n[0] == 2 ? model.ImportCorrections({&liveModel, nullptr}, n[1] != 0)
                         : model.ImportCorrections({nullptr, models[static_cast<std::size_t>(n[0])].get()}, n[1] != 0);
    case TKind::kSave:
        return model.SaveFile(operation.text);
    case TKind::kSaveHandedOut:
        return handedOut.has_value() ? model.SaveFile(*handedOut) : 0;
    case TKind::kLoad:
        return model.LoadFile(operation.text);
    case TKind::kLoadHandedOut:
        return handedOut.has_value() ? model.LoadFile(*handedOut) : 0;
    case TKind::kLoadHeaderOnly:
        return model.LoadFileHeaderOnly(operation.text);
    default:
        return 0;
    }
}

std::string TStoreModelWorld::Apply(const TOperation& operation)
{
    const std::array<int, 6>& n = operation.numbers;
    const unsigned int flags = static_cast<unsigned int>(n[2]);
    Literal::TApplication arguments;
    arguments.image = {0, 50, 100, 150, 1000, 65535, 7, 8};
    arguments.output = std::vector<std::uint16_t>(8, 4711);
    arguments.imageLength = n[0];
    arguments.hasOutput = n[1] >= -1;
    arguments.outputLength = n[1];
    arguments.outputIsImage = arguments.hasOutput && (flags & 32) != 0;
    arguments.imageIsNull = (flags & 31) == 31;
    arguments.hasDelegate = (flags & 1) != 0;
    arguments.useDelegate = (flags & 2) != 0;
    arguments.delegateProcessing = (flags & 4) != 0;
    arguments.delegateOption = (flags & 8) != 0;
    Literal::TApplication real = arguments;

    TNotingDelegate delegate(real.delegate);
    unsigned short* const image = real.imageIsNull ? nullptr : real.image.data();
    unsigned short* const output = !real.hasOutput ? nullptr : real.outputIsImage ? image : real.output.data();
    const std::size_t i = static_cast<std::size_t>(operation.store);
    const unsigned int result = (*stores[i])
                                    ->ApplyCorrection(image, real.imageLength, output, real.outputLength,
                                                      real.hasDelegate ? &delegate : nullptr, real.useDelegate,
                                                      real.delegateProcessing, real.delegateOption);
    arguments.hasOutput = output != nullptr; // an output that is the null image is none
    const unsigned int expected = models[i]->ApplyCorrection(arguments);
    seen.insert("Apply " + std::to_string(expected));

    const auto text = [](unsigned int code, const Literal::TApplication& application) {
        std::ostringstream lines;
        lines << code << '\n' << application.delegate.calls;
        for (const auto* const pixels : {&application.image, &application.output}) {
            for (const std::uint16_t pixel : *pixels) {
                lines << pixel << ' ';
            }
            lines << '\n';
        }
        return lines.str();
    };
    return Differing("ApplyCorrection", text(result, real), text(expected, arguments));
}

std::string TStoreModelWorld::DoToDisk(const TOperation& operation)
{
    const std::array<int, 6>& n = operation.numbers;
    if (operation.kind == TKind::kAddLive) {
        return Differing("Result",
                         std::to_string(live->AddFrames(operation.text.c_str(), FramesOf(operation), kExposures[n[3]],
                                                        kIntensities[n[4]])),
                         std::to_string(liveModel.AddCorrection(AdditionOf(operation))));
    }
    if (operation.kind == TKind::kDeleteLive) {
        return Differing("Result", std::to_string((*live)->DeleteCorrection(operation.text.c_str())),
                         std::to_string(liveModel.DeleteCorrection(operation.text)));
    }
    if (operation.kind == TKind::kLoadLive || operation.kind == TKind::kLoadLiveHeaderOnly) {
        const bool headerOnly = operation.kind == TKind::kLoadLiveHeaderOnly;
        const char* const path = operation.text.c_str();
        const unsigned int result = headerOnly ? (*live)->LoadFileHeaderOnly(path) : (*live)->LoadFile(path);
        const unsigned int expected = headerOnly ? liveModel.LoadFileHeaderOnly(disk.Open(operation.text))
                                                 : liveModel.LoadFile(disk.Open(operation.text));
        return Differing("Result", std::to_string(result), std::to_string(expected)) +
               Differing("Text", live->Message(), liveModel.message);
    }
    std::vector<std::string> files;
    for (const auto& [path, node] : disk.nodes) {
        if (node.has_value()) {
            files.push_back(path);
        }
    }
    const std::string chosen = files.empty() ? std::string() : files[static_cast<std::size_t>(n[0]) % files.size()];
    const bool isFree = disk.nodes.count(operation.text) == 0;
    const auto rename = [this](const std::string& from, const std::string& to) {
        if (disk.nodes.count(from) == 0 || disk.nodes.count(to) != 0) {
            return;
        }
        fs::rename(from, to);
        TLiteralDisk::TNodes moved;
        for (const auto& [path, node] : disk.nodes) {
            const bool isBelow = path == from || path.compare(0, from.size() + 1, from + "/") == 0;
            moved[isBelow ? to + path.substr(from.size()) : path] = node;
        }
        disk.nodes = moved;
    };
    switch (operation.kind) {
    case TKind::kWriteUngrouped:
        if (isFree || disk.nodes[operation.text].has_value()) {
            WriteBoth(operation.text, StoreFiles::Ungrouped({StoreFiles::Flat("A,1,B,1,old", 30),
                                                             StoreFiles::Flat(n[1] == 0 ? "plain" : "A,2,B,1", 31)}));
        }
        break;
    case TKind::kWriteForeign:
        if (isFree || disk.nodes[operation.text].has_value()) {
            WriteBoth(operation.text,
                      StoreFiles::Grouped({n[1] == 0 ? "Other" : "A"}, {StoreFiles::Flat("A,1,Other,3", 32)}));
        }
        break;
    case TKind::kWriteOddSizes:
        if (isFree || disk.nodes[operation.text].has_value()) {
            const std::uint32_t* const size = kOddSizes[n[2]];
            const std::vector<StoreFiles::TCorrection> corrections = {
                StoreFiles::Flat("A,1,B,1,flat", 33),
                {"A,1,B,1,odd", size[0], size[1], kExposures[n[3]], kIntensities[n[4]], {}}};
            WriteBoth(operation.text, n[1] == 0 ? StoreFiles::Ungrouped(corrections)
                                                : StoreFiles::Grouped({n[1] == 1 ? "A" : "B"}, corrections));
        }
        break;
    case TKind::kTruncate:
        if (!chosen.empty()) {
            TBytes bytes = *disk.nodes[chosen];
            bytes.resize(bytes.size() > static_cast<std::size_t>(n[1]) ? bytes.size() - static_cast<std::size_t>(n[1])
                                                                       : 0);
            WriteBoth(chosen, bytes);
        }
        break;
    case TKind::kSpoilVersion:
        if (!chosen.empty() && disk.nodes[chosen]->size() > 30) {
            TBytes bytes = *disk.nodes[chosen];
            bytes[static_cast<std::size_t>(n[1])] = 3; // 26: the structure version; 5: the text
            WriteBoth(chosen, bytes);
        }
        break;
    case TKind::kCopyFile:
        if (!chosen.empty() && (isFree || disk.nodes[operation.text].has_value())) {
            WriteBoth(operation.text, *disk.nodes[chosen]);
        }
        break;
    case TKind::kRemoveFile:
        if (!chosen.empty()) {
            fs::remove(chosen);
            disk.nodes.erase(chosen);
        }
        break;
    case TKind::kMakeFolder:
        if (isFree && fs::exists(fs::path(folder.Path()) / fs::path(operation.text).parent_path())) {
            folder.MakeFolder(operation.text);
            disk.nodes[operation.text] = std::nullopt;
        }
        break;
    case TKind::kHideFolder:
        rename("cal", "away");
        break;
    case TKind::kShowFolder:
        rename("away", "cal");
        break;
    default:
        break;
    }
    return CompareDisk();
}

void TStoreModelWorld::WriteBoth(const std::string& name, const TBytes& bytes)
{
    if (disk.Write(name, bytes)) { // not into a folder that is gone
        folder.Write(name, bytes);
    }
}
