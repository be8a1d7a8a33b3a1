// The operations of the world, each with what is to come of it.
#include "OperationWorld.h"

#include "Check.h"
#include "HostChecks.h"
#include "MemoryFiles.h"

#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "platform/RawFile.h"

#include <algorithm>
#include <functional>

using FileBytes::TBytes;

namespace {

constexpr unsigned int kMinusOne = 4294967295u;
constexpr unsigned int kMinusTwo = 4294967294u;

// Whatever switching to a group may give.
const std::set<unsigned int> kSwitching = {0, 513, 769, 772, 1024, kMinusOne, kMinusTwo};

std::set<unsigned int> And(const std::set<unsigned int>& codes, std::set<unsigned int> more)
{
    more.insert(codes.begin(), codes.end());
    return more;
}

// A host's delegate that calls back, on the same thread.
class TCallingDelegate : public QX_KRLSDK::ICorrectionDelegate {
public:
    std::function<void()> action;
    int calls = 0;

    unsigned int SubtractInPlace(unsigned short*, const unsigned short*, int, int, bool, bool) override
    {
        return Call(11);
    }
    unsigned int SubtractInto(unsigned short*, const unsigned short*, const unsigned short*, int, int, bool,
                              bool) override
    {
        return Call(12);
    }
    unsigned int ProcessInPlace(unsigned short*, int, int) override { return Call(13); }

private:
    unsigned int Call(unsigned int result)
    {
        ++calls;
        action();
        return result;
    }
};

} // namespace

void TOperationWorld::Add(std::size_t i)
{
    const std::string key = Key();
    const unsigned int refusal = input.Below(24); // mostly none
    const int width = 1 + static_cast<int>(input.Below(7));
    const int height = 1 + static_cast<int>(input.Below(5));
    std::vector<Literal::TImage> frames(1 + input.Below(6), {width, height, {}});
    std::uint32_t state = input.Number();
    for (Literal::TImage& frame : frames) {
        for (int pixel = 0; pixel < width * height; ++pixel) {
            state = state * 1664525 + 1013904223;
            frame.pixels.push_back(static_cast<std::uint16_t>(state >> 16));
        }
    }
    std::vector<const unsigned short*> pointers;
    for (const Literal::TImage& frame : frames) {
        pointers.push_back(frame.pixels.data());
    }
    const float exposure = Float();
    const float intensity = Float();
    const unsigned int code =
        objects[i]->AddCorrection(refusal == 1 ? nullptr : key.c_str(), refusal == 2 ? nullptr : pointers.data(),
                                  refusal == 3 ? 0 : static_cast<int>(frames.size()), refusal == 4 ? 0 : width,
                                  refusal == 5 ? -1 : height, exposure, intensity);
    unsigned int expected = 0;
    if (!IsStore(i)) {
        expected = refusal >= 1 && refusal <= 5 && !Model(i).headerOnly
                       ? 512 + refusal
                       : Model(i).AddCorrection(key, frames, exposure, intensity);
    }
    CheckResult(i, code, expected, And(kSwitching, {514, 515, 516, 517, 518, 519, 770}));
    if (IsStore(i) && code == 0) {
        storeKeys[i].push_back(key);
    }
}

void TOperationWorld::SetActive(std::size_t i)
{
    const unsigned int choice = input.Below(8);
    if (choice == 0) {
        CheckResult(i, objects[i]->SetActiveCorrection(nullptr), 0, {0});
        if (!IsStore(i)) {
            Model(i).Deactivate();
        }
        return;
    }
    // Also texts that the object gave away itself, and that may be gone while they are used.
    const char* const given = objects[i]->GetCorrectionKey(input.Below(4));
    const std::string key = choice < 4 && given != nullptr ? given : Key();
    const unsigned int code = objects[i]->SetActiveCorrection(choice < 4 && given != nullptr ? given : key.c_str());
    CheckResult(i, code, IsStore(i) ? 0 : Model(i).SetActiveCorrection(key), kSwitching);
}

void TOperationWorld::Delete(std::size_t i)
{
    const unsigned int choice = input.Below(8);
    const char* const given = objects[i]->GetCorrectionKey(input.Below(4));
    const std::string key = choice > 0 && choice < 4 && given != nullptr ? given : Key();
    const char* const argument = choice == 0 ? nullptr : choice < 4 && given != nullptr ? given : key.c_str();
    const unsigned int code = objects[i]->DeleteCorrection(argument);
    unsigned int expected = 0;
    if (!IsStore(i)) {
        expected = choice > 0 || Model(i).headerOnly ? Model(i).DeleteCorrection(key) : 513;
    }
    CheckResult(i, code, expected, And(kSwitching, {770}));
    if (IsStore(i) && code == 0) {
        storeKeys[i].erase(std::remove(storeKeys[i].begin(), storeKeys[i].end(), key), storeKeys[i].end());
    }
}

void TOperationWorld::SetLevel(std::size_t i)
{
    const int percent = input.Flag() ? static_cast<int>(input.Below(110)) : Small();
    const unsigned int code = objects[i]->SetCorrectionLevel(percent);
    CheckResult(i, code, IsStore(i) ? 0 : Model(i).SetCorrectionLevel(percent), {0, 770});
    FUZZ_CHECK(!IsStore(i) || code != 0 || objects[i]->GetCorrectionLevel() == percent);
}

void TOperationWorld::SetExposure(std::size_t i)
{
    const float exposure = Float();
    const float intensity = Float();
    const unsigned int code = objects[i]->SetExposureAndIntensity(exposure, intensity);
    CheckResult(i, code, IsStore(i) ? 0 : Model(i).SetExposureAndIntensity(exposure, intensity), {0, 770});
}

void TOperationWorld::SetRegion(std::size_t i)
{
    const int left = Small();
    const int top = Small();
    const int width = Small();
    const int height = Small();
    const unsigned int code = objects[i]->SetRegion(left, top, width, height);
    CheckResult(i, code, IsStore(i) ? 0 : Model(i).SetRegion(left, top, width, height), {0, 513, 514, 515, 516, 770});
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
    std::vector<std::uint16_t> image(static_cast<std::size_t>(std::max(length, 0)));
    for (std::size_t pixel = 0; pixel < image.size(); ++pixel) {
        image[pixel] = static_cast<std::uint16_t>(pixel * 9973);
    }
    std::vector<std::uint16_t> output(static_cast<std::size_t>(std::max(outputLength, 0)), 4711);
    const std::vector<std::uint16_t> imageBefore = image;
    const std::vector<std::uint16_t> outputBefore = output;
    std::uint16_t nothing = 0; // where an empty image lies
    const bool imageIsNull = input.Below(8) == 0;
    unsigned short* const imagePointer = imageIsNull ? nullptr : image.empty() ? &nothing : image.data();
    const unsigned int target = input.Below(3);
    unsigned short* const outputPointer = target == 0   ? nullptr
                                          : target == 1 ? (output.empty() ? &nothing : output.data())
                                                        : imagePointer;
    const unsigned int flags = input.Below(16);
    const bool useDelegate = (flags & 1) != 0;
    const bool processing = (flags & 2) != 0;
    TCallingDelegate delegate;
    delegate.action = [&] {
        if (mayDelegate) {
            Operate(false);
        }
    };
    const bool hasDelegate = (flags & 8) == 0;

    unsigned int expected = 0;
    std::vector<std::uint16_t> expectedImage = imageBefore;
    std::vector<std::uint16_t> expectedOutput = outputBefore;
    if (!IsStore(i)) {
        const TProcessorModel& model = Model(i);
        const bool delegated = useDelegate && hasDelegate;
        std::vector<std::uint16_t>& result =
            outputPointer == nullptr || outputPointer == imagePointer ? expectedImage : expectedOutput;
        if (model.headerOnly) {
            expected = 770;
        } else if (imageIsNull && !(useDelegate && !processing)) {
            expected = 513;
        } else if (outputPointer != nullptr && length != outputLength) {
            expected = 516;
        } else if (length != model.PixelCount()) {
            expected = 514;
        } else if (!model.active) {
            if (!imageIsNull) {
                result = imageBefore;
            }
            expected = delegated && processing ? 13 : 0;
        } else if (!model.background || model.background->size() != image.size()) {
            expected = 1024;
        } else if (delegated) {
            expected = outputPointer == nullptr ? 11 : 12;
        } else if (!imageIsNull) {
            const Literal::TImage background = {model.width, model.height, *model.background};
            result = Literal::Subtract({model.width, model.height, imageBefore}, background).pixels;
        }
    }
    const unsigned int code =
        objects[i]->ApplyCorrection(imagePointer, length, outputPointer, outputLength,
                                    hasDelegate ? &delegate : nullptr, useDelegate, processing, (flags & 4) != 0);
    CheckResult(i, code, expected, {0, 11, 12, 13, 513, 514, 516, 770, 1024});
    FUZZ_CHECK_EQUAL(delegate.calls, code >= 11 && code <= 13 ? 1 : 0);
    if (!IsStore(i)) {
        FUZZ_CHECK(image == expectedImage && output == expectedOutput);
    } else if (code >= 513) {
        FUZZ_CHECK(image == imageBefore && output == outputBefore);
    }
}

void TOperationWorld::Import(std::size_t i)
{
    const std::size_t source = input.Below(kObjects + 1);
    const bool overwrite = input.Flag();
    const bool isNull = source == kObjects;
    const unsigned int code = objects[i]->ImportCorrections(isNull ? nullptr : objects[source], overwrite);
    unsigned int expected = 0;
    if (!IsStore(i)) {
        expected = Model(i).headerOnly         ? 770
                   : isNull || IsStore(source) ? 513
                                               : Model(i).ImportCorrections(Model(source), overwrite);
    }
    CheckResult(i, code, expected, And(kSwitching, {770}));
    for (const std::size_t store : {i, source}) { // which keys came over, other tests compare
        if (store < kObjects && IsStore(store)) {
            storeKeys[store] = Keys(store);
        }
    }
}

void TOperationWorld::Load(std::size_t i, bool headerOnly)
{
    const bool isNull = input.Below(16) == 0;
    const std::string path = Path();
    const char* const argument = isNull ? nullptr : path.c_str();
    const unsigned int before = objects[i]->GetNumberOfCorrections();
    const unsigned int code = headerOnly ? objects[i]->LoadFileHeaderOnly(argument) : objects[i]->LoadFile(argument);
    if (IsStore(i)) {
        CheckResult(i, code, 0, {0, 513, 768, 769, 771, 772, 1024, kMinusOne, kMinusTwo});
        FUZZ_CHECK(code == 0 || !headerOnly || objects[i]->GetNumberOfCorrections() == before);
        storeKeys[i] = Keys(i);
        return;
    }
    const auto expected = Model(i).Load(isNull ? nullptr : MemoryFiles::Find(path), headerOnly);
    if (expected) {
        FUZZ_CHECK_EQUAL(code, *expected);
    } else {
        Model(i).corrections = ProcessorDriver::Corrections(Processor(i));
        Model(i).Deactivate();
    }
}

void TOperationWorld::Save(std::size_t i)
{
    const bool isNull = input.Below(16) == 0;
    const std::string path = Path();
    const unsigned int code = objects[i]->SaveFile(isNull ? nullptr : path.c_str());
    if (IsStore(i)) {
        CheckResult(i, code, 0, And(kSwitching, {271, 768, 770}));
        storeKeys[i] = Keys(i); // a store without a name is opened again from its files
        return;
    }
    if (!Model(i).headerOnly && (isNull || !MemoryFiles::CanBeWritten(path))) {
        FUZZ_CHECK_EQUAL(code, 769u);
        return;
    }
    TBytes expectedBytes;
    FUZZ_CHECK_EQUAL(code, Model(i).Save(expectedBytes));
    const TBytes* const written = MemoryFiles::Find(path);
    FUZZ_CHECK(code == 770 || (written != nullptr && *written == expectedBytes));
}

void TOperationWorld::ChangeFiles()
{
    const std::vector<std::string> paths = MemoryFiles::Paths();
    const std::string chosen = paths.empty() ? "d/f" : paths[input.Byte() % paths.size()];
    const TBytes* const found = MemoryFiles::Find(chosen);
    TBytes bytes = found != nullptr ? *found : TBytes();
    switch (input.Below(6)) {
    case 0:
        Platform::RemoveFile(chosen.c_str());
        break;
    case 1:
        bytes.resize(bytes.size() - std::min<std::size_t>(bytes.size(), input.Byte()));
        MemoryFiles::Put(chosen, bytes);
        break;
    case 2:
        if (!bytes.empty()) {
            const std::size_t offset = input.Byte() + 256u * input.Below(4);
            bytes[offset % bytes.size()] = input.Byte();
        }
        MemoryFiles::Put(chosen, bytes);
        break;
    case 3: {
        const std::string path = Path();
        if (!path.empty() && path != "d") {
            MemoryFiles::Put(path, bytes);
        }
        break;
    }
    case 4: {
        const TSampleFile sample = SampleFiles::All()[input.Below(8)];
        MemoryFiles::Put(chosen, sample.bytes);
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
        MemoryFiles::Put(chosen, bytes);
        break;
    }
    }
}
