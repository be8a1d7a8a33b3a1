// The operations of the world, each done to the library's objects and to the model's.
#include "OperationWorld.h"

#include "Check.h"
#include "HostChecks.h"
#include "MemoryFiles.h"

#include "file/SampleFiles.h"

#include <algorithm>
#include <functional>
#include <numeric>

using Literal::TBytes;

namespace {

// A host's delegate that writes down its calls and calls back, on the same thread.
class TCallingDelegate : public QX_KRLSDK::ICorrectionDelegate {
public:
    Literal::TDelegate notes;
    std::function<void()> action;

    unsigned int SubtractInPlace(unsigned short*, const unsigned short* background, int width, int height,
                                 bool processing, bool option) override
    {
        return Subtract("SubtractInPlace", background, width, height, processing, option);
    }
    unsigned int SubtractInto(unsigned short*, const unsigned short*, const unsigned short* background, int width,
                              int height, bool processing, bool option) override
    {
        return Subtract("SubtractInto", background, width, height, processing, option);
    }
    unsigned int ProcessInPlace(unsigned short*, int width, int height) override
    {
        const unsigned int result = notes.Note("ProcessInPlace", width, height);
        action();
        return result;
    }

private:
    unsigned int Subtract(const std::string& operation, const unsigned short* background, int width, int height,
                          bool processing, bool option)
    {
        const std::int64_t count = std::int64_t{width} * height;
        const unsigned int result =
            notes.Note(operation + (processing ? " processing" : "") + (option ? " option" : ""), width, height,
                       std::accumulate(background, background + count, 0LL));
        action();
        return result;
    }
};

} // namespace

void TOperationWorld::Add(std::size_t i)
{
    Literal::TAddition addition;
    addition.key = Key();
    const unsigned int refusal = input.Below(24); // mostly none
    addition.width = 1 + static_cast<int>(input.Below(7));
    addition.height = 1 + static_cast<int>(input.Below(5));
    addition.frames.assign(1 + input.Below(6), {addition.width, addition.height, {}});
    addition.frameCount = static_cast<int>(addition.frames.size());
    std::uint32_t state = input.Number();
    std::vector<const unsigned short*> pointers;
    for (Literal::TImage& frame : addition.frames) {
        for (int pixel = 0; pixel < addition.width * addition.height; ++pixel) {
            state = state * 1664525 + 1013904223;
            frame.pixels.push_back(static_cast<std::uint16_t>(state >> 16));
        }
        pointers.push_back(frame.pixels.data());
    }
    addition.exposure = Float();
    addition.intensity = Float();
    addition.key = refusal == 1 ? std::nullopt : addition.key;
    addition.framesAreNull = refusal == 2;
    addition.frameCount = refusal == 3 ? 0 : addition.frameCount;
    addition.width = refusal == 4 ? 0 : addition.width;
    addition.height = refusal == 5 ? -1 : addition.height;
    const unsigned int code = objects[i]->AddCorrection(
        addition.key.has_value() ? addition.key->c_str() : nullptr, addition.framesAreNull ? nullptr : pointers.data(),
        addition.frameCount, addition.width, addition.height, addition.exposure, addition.intensity);
    FUZZ_CHECK_EQUAL(code, WithModel(i, [&](auto& model) { return model.AddCorrection(addition); }));
}

void TOperationWorld::SetActive(std::size_t i)
{
    const unsigned int choice = input.Below(8);
    if (choice == 0) {
        FUZZ_CHECK_EQUAL(objects[i]->SetActiveCorrection(nullptr), 0u);
        WithModel(i, [](auto& model) { return model.SetActiveCorrection(std::nullopt); });
        return;
    }
    // Also texts that the object gave away itself, and that may be gone while they are used.
    const char* const given = objects[i]->GetCorrectionKey(input.Below(4));
    const std::string key = choice < 4 && given != nullptr ? given : Key();
    const unsigned int code = objects[i]->SetActiveCorrection(choice < 4 && given != nullptr ? given : key.c_str());
    FUZZ_CHECK_EQUAL(code, WithModel(i, [&](auto& model) { return model.SetActiveCorrection(key); }));
}

void TOperationWorld::Delete(std::size_t i)
{
    const unsigned int choice = input.Below(8);
    const char* const given = objects[i]->GetCorrectionKey(input.Below(4));
    const std::string text = choice > 0 && choice < 4 && given != nullptr ? given : Key();
    const Literal::TKey key = choice == 0 ? std::nullopt : Literal::TKey(text);
    const char* const argument = choice == 0 ? nullptr : choice < 4 && given != nullptr ? given : text.c_str();
    const unsigned int code = objects[i]->DeleteCorrection(argument);
    FUZZ_CHECK_EQUAL(code, WithModel(i, [&](auto& model) { return model.DeleteCorrection(key); }));
}

void TOperationWorld::SetLevel(std::size_t i)
{
    const int percent = input.Flag() ? static_cast<int>(input.Below(110)) : Small();
    const unsigned int code = objects[i]->SetCorrectionLevel(percent);
    FUZZ_CHECK_EQUAL(code, WithModel(i, [&](auto& model) { return model.SetCorrectionLevel(percent); }));
}

void TOperationWorld::SetExposure(std::size_t i)
{
    const float exposure = Float();
    const float intensity = Float();
    const unsigned int code = objects[i]->SetExposureAndIntensity(exposure, intensity);
    FUZZ_CHECK_EQUAL(code,
                     WithModel(i, [&](auto& model) { return model.SetExposureAndIntensity(exposure, intensity); }));
}

void TOperationWorld::SetRegion(std::size_t i)
{
    const int left = Small();
    const int top = Small();
    const int width = Small();
    const int height = Small();
    const unsigned int code = objects[i]->SetRegion(left, top, width, height);
    FUZZ_CHECK_EQUAL(code, WithModel(i, [&](auto& model) { return model.SetRegion(left, top, width, height); }));
}

void TOperationWorld::Apply(std::size_t i, bool mayDelegate)
{
    int region[4] = {0, 0, 1, 1};
    objects[i]->GetRegion(&region[0], &region[1], &region[2], &region[3]);
    const std::int64_t pixels = std::int64_t{region[2]} * region[3];
    const int right = pixels > 0 && pixels <= HostChecks::kMostPixels ? static_cast<int>(pixels) : 2;
    const unsigned int lengths = input.Below(16); // mostly right
    const int length = lengths == 1 ? 0 : lengths == 2 ? -1 : lengths == 3 ? right + 1 : right;
    const int outputLength = lengths == 4 ? right + 1 : lengths == 5 ? -1 : length;
    Literal::TApplication expected;
    expected.imageLength = length;
    expected.image.resize(static_cast<std::size_t>(std::max(length, 0)));
    for (std::size_t pixel = 0; pixel < expected.image.size(); ++pixel) {
        expected.image[pixel] = static_cast<std::uint16_t>(pixel * 9973);
    }
    expected.outputLength = outputLength;
    expected.output.assign(static_cast<std::size_t>(std::max(outputLength, 0)), 4711);
    std::vector<std::uint16_t> image = expected.image;
    std::vector<std::uint16_t> output = expected.output;
    std::uint16_t nothing = 0; // where an empty image lies
    expected.imageIsNull = input.Below(8) == 0;
    unsigned short* const imagePointer = expected.imageIsNull ? nullptr : image.empty() ? &nothing : image.data();
    const unsigned int target = input.Below(3);
    unsigned short* const outputPointer = target == 0   ? nullptr
                                          : target == 1 ? (output.empty() ? &nothing : output.data())
                                                        : imagePointer;
    expected.hasOutput = outputPointer != nullptr;
    expected.outputIsImage = outputPointer == imagePointer;
    const unsigned int flags = input.Below(16);
    expected.useDelegate = (flags & 1) != 0;
    expected.delegateProcessing = (flags & 2) != 0;
    expected.delegateOption = (flags & 4) != 0;
    expected.hasDelegate = (flags & 8) == 0;
    TCallingDelegate delegate;
    delegate.action = [&] {
        if (mayDelegate) {
            Operate(false);
        }
    };
    // The model first: the delegate changes it as well.
    const unsigned int expectedCode = WithModel(i, [&](auto& model) { return model.ApplyCorrection(expected); });
    const unsigned int code = objects[i]->ApplyCorrection(
        imagePointer, length, outputPointer, outputLength, expected.hasDelegate ? &delegate : nullptr,
        expected.useDelegate, expected.delegateProcessing, expected.delegateOption);
    FUZZ_CHECK_EQUAL(code, expectedCode);
    FUZZ_CHECK_EQUAL(delegate.notes.calls, expected.delegate.calls);
    FUZZ_CHECK(image == expected.image && output == expected.output);
}

void TOperationWorld::Import(std::size_t i)
{
    const std::size_t source = input.Below(kObjects + 1);
    const bool overwrite = input.Flag();
    const bool isNull = source == kObjects;
    const unsigned int code = objects[i]->ImportCorrections(isNull ? nullptr : objects[source], overwrite);
    const Literal::TImportSource expected = isNull            ? Literal::TImportSource()
                                            : IsStore(source) ? Literal::TImportSource{nullptr, &Store(source)}
                                                              : Literal::TImportSource{Processor(source), nullptr};
    FUZZ_CHECK_EQUAL(code, WithModel(i, [&](auto& model) { return model.ImportCorrections(expected, overwrite); }));
    if (!isNull) { // a store that is imported from switches its groups
        Compare(source);
    }
}

void TOperationWorld::Load(std::size_t i, bool headerOnly)
{
    const bool isNull = input.Below(16) == 0;
    const std::string text = Path();
    const auto path = isNull ? std::nullopt : std::optional<std::string>(text);
    const char* const argument = isNull ? nullptr : text.c_str();
    const unsigned int code = headerOnly ? objects[i]->LoadFileHeaderOnly(argument) : objects[i]->LoadFile(argument);
    unsigned int expected = 0;
    if (IsStore(i)) {
        expected = headerOnly ? Store(i).LoadFileHeaderOnly(path) : Store(i).LoadFile(path);
    } else {
        const Literal::TOpened file = disk.Open(path);
        expected = headerOnly ? processors[i].LoadFileHeaderOnly(file) : processors[i].LoadFile(file);
    }
    FUZZ_CHECK_EQUAL(code, expected);
}

void TOperationWorld::Save(std::size_t i)
{
    const bool isNull = input.Below(16) == 0;
    const std::string text = Path();
    const auto path = isNull ? std::nullopt : std::optional<std::string>(text);
    const unsigned int code = objects[i]->SaveFile(isNull ? nullptr : text.c_str());
    FUZZ_CHECK_EQUAL(code, IsStore(i) ? Store(i).SaveFile(path) : processors[i].SaveFile(disk, path));
}

void TOperationWorld::Write(const std::string& path, const TBytes& bytes)
{
    MemoryFiles::Disk().Write(path, bytes);
    disk.Write(path, bytes);
}

void TOperationWorld::ChangeFiles()
{
    std::vector<std::string> paths;
    for (const auto& [path, node] : disk.nodes) {
        if (node.has_value()) {
            paths.push_back(path);
        }
    }
    const std::string chosen = paths.empty() ? "d/f" : paths[input.Byte() % paths.size()];
    TBytes bytes = disk.Read(chosen).value_or(TBytes());
    switch (input.Below(6)) {
    case 0:
        MemoryFiles::Disk().Remove(chosen);
        disk.Remove(chosen);
        break;
    case 1:
        bytes.resize(bytes.size() - std::min<std::size_t>(bytes.size(), input.Byte()));
        Write(chosen, bytes);
        break;
    case 2:
        if (!bytes.empty()) {
            const std::size_t offset = input.Byte() + 256u * input.Below(4);
            bytes[offset % bytes.size()] = input.Byte();
        }
        Write(chosen, bytes);
        break;
    case 3:
        Write(Path(), bytes);
        break;
    case 4: {
        const TSampleFile sample = SampleFiles::All()[input.Below(8)];
        Write(chosen, sample.bytes);
        break;
    }
    default: {
        const std::string key = Key();
        const std::uint32_t width = input.Flag() ? 1u + input.Below(4) : input.Number();
        const std::uint32_t height = input.Flag() ? 1u + input.Below(4) : input.Number();
        const float exposure = Float();
        const float intensity = Float();
        TBytes pixels(input.Below(64));
        std::fill(pixels.begin(), pixels.end(), input.Byte());
        const TBytes records = SampleFiles::Correction(key.substr(0, 512), width, height, exposure, intensity, pixels);
        bytes = SampleFiles::Beginning(1 + input.Below(2));
        bytes.insert(bytes.end(), records.begin(), records.end());
        Write(chosen, bytes);
        break;
    }
    }
}
