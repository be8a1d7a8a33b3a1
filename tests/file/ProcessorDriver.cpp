#include "file/ProcessorDriver.h"

#include <chrono>
#include <cstdint>
#include <future>
#include <stdexcept>
#include <thread>

namespace ProcessorDriver {

void Store(TBackgroundCorrectionProcessorUINT16& processor, const TStoredCorrection& correction)
{
    const std::uint16_t* const frames[] = {correction.pixels.data()};
    TBackgroundCorrectionEntry entry;
    entry.Build(correction.key.c_str(), correction.pixels.empty() ? nullptr : frames, 1, correction.width,
                correction.height, FromBits(correction.exposureBits), FromBits(correction.intensityBits), false);
    if (processor.AddEntryCopy(entry) != 0) {
        throw std::runtime_error("cannot store " + Describe(correction));
    }
}

void Store(TBackgroundCorrectionProcessorUINT16& processor, const std::vector<TStoredCorrection>& corrections)
{
    for (const TStoredCorrection& correction : corrections) {
        Store(processor, correction);
    }
}

TStoredCorrection Stored(const TBackgroundCorrectionEntry& entry)
{
    TStoredCorrection correction;
    correction.key = entry.Key();
    correction.width = entry.Width();
    correction.height = entry.Height();
    correction.exposureBits = BitsOf(entry.ReferenceExposureSeconds());
    correction.intensityBits = BitsOf(entry.ReferenceIntensityPercent());
    if (entry.Pixels() != nullptr) {
        const std::size_t count = std::size_t{entry.Width()} * entry.Height();
        correction.pixels.assign(entry.Pixels(), entry.Pixels() + count);
    }
    return correction;
}

std::vector<TStoredCorrection> Corrections(TBackgroundCorrectionProcessorUINT16& processor)
{
    std::vector<TStoredCorrection> corrections;
    for (unsigned int i = 0; i < processor.GetNumberOfCorrections(); ++i) {
        corrections.push_back(Stored(*processor.GetEntryAt(i)));
    }
    return corrections;
}

bool IsHeaderOnly(TBackgroundCorrectionProcessorUINT16& processor)
{
    return processor.GetExposureAndIntensity(nullptr, nullptr) == 770;
}

TLoadOutcome State(TBackgroundCorrectionProcessorUINT16& processor)
{
    TLoadOutcome outcome;
    outcome.mainText = processor.GetLastErrorMessage();
    outcome.fileText = processor.FileMessage();
    outcome.corrections = Corrections(processor);
    outcome.active = processor.GetActiveCorrectionKey() != nullptr;
    outcome.headerOnly = IsHeaderOnly(processor);
    return outcome;
}

TLoadOutcome Load(TBackgroundCorrectionProcessorUINT16& processor, const char* path, TLoadKind kind)
{
    std::vector<std::string> names = {"left over"};
    std::uint32_t version = 4711;
    unsigned int result = 0;
    if (kind.grouped) {
        result = kind.headerOnly ? processor.LoadGroupedFileHeaderOnly(path, names, version)
                                 : processor.LoadGroupedFileFull(path, names, version);
    } else {
        result = kind.headerOnly ? processor.LoadFileHeaderOnly(path) : processor.LoadFile(path);
    }
    TLoadOutcome outcome = State(processor);
    outcome.result = result;
    if (kind.grouped) {
        outcome.groupingNames = names;
        outcome.structureVersion = version;
    }
    return outcome;
}

void UseEverything(TBackgroundCorrectionProcessorUINT16& processor)
{
    for (unsigned int i = 0; i < processor.GetNumberOfCorrections(); ++i) {
        float exposure = 0.0f;
        float intensity = 0.0f;
        unsigned short values[3] = {};
        int region[4] = {0, 0, 1, 1};
        processor.SetActiveCorrection(processor.GetCorrectionKey(i));
        processor.GetReferenceExposureAndIntensity(&exposure, &intensity);
        processor.GetCorrectionStatistics(&values[0], &values[1], &values[2]);
        processor.GetScaledCorrectionStatistics(&values[0], &values[1], &values[2]);
        processor.SetExposureAndIntensity(exposure, intensity);
        processor.SetRegion(0, 0, 1, 1);
        processor.GetRegion(&region[0], &region[1], &region[2], &region[3]);
        const std::int64_t pixelCount = std::int64_t{region[2]} * region[3];
        if (pixelCount > 0 && pixelCount <= 1'000'000) {
            std::vector<unsigned short> image(static_cast<std::size_t>(pixelCount), 1000);
            std::vector<unsigned short> output(image.size());
            const int length = static_cast<int>(pixelCount);
            processor.ApplyCorrection(image.data(), length, output.data(), length, nullptr, false, false, false);
            processor.ApplyCorrection(image.data(), length, nullptr, 0, nullptr, false, false, false);
        }
    }
}

bool LockIsFree(TBackgroundCorrectionProcessorUINT16& processor)
{
    // A thread that has to wait for ever cannot be joined: it is left alone with what it uses.
    auto* const done = new std::promise<void>;
    std::future<void> finished = done->get_future();
    std::thread thread([done, &processor] {
        processor.GetNumberOfCorrections();
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

} // namespace ProcessorDriver
