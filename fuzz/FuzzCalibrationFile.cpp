// The bytes are a calibration file. It is loaded in every way by a processor, and what was loaded is used, saved and
// loaded again; then a store opens it, whole and without pixels. All of it is compared with the literal model.
#include "Check.h"
#include "HostChecks.h"
#include "LimitedMemory.h"
#include "MemoryFiles.h"

#include "file/LiteralLoad.h"
#include "file/ProcessorDriver.h"
#include "model/LiteralStore.h"
#include "model/LiteralWriter.h"
#include "offline/GroupNaming.h"
#include "offline/TBackgroundCorrectionFileManager.h"

#include <algorithm>

using FileBytes::TBytes;
using HostChecks::TKind;

namespace {

constexpr char kPath[] = "d\\file";
constexpr std::size_t kUsedCorrections = 4;
constexpr std::size_t kMostNames = 64;
constexpr std::int64_t kMostAttempts = 1000; // of the literal reader, which knows no shortcut

bool IsLoadResult(unsigned int code)
{
    return code == 0 || code == 769 || code == 772 || code == 1024 || code == 4294967295u || code == 4294967294u;
}

void UseCorrections(TBackgroundCorrectionProcessorUINT16& processor, const std::vector<TStoredCorrection>& corrections)
{
    Literal::TProcessor model = LiteralProcessorWith(corrections);
    HostChecks::CheckState(processor, TKind::kProcessor);
    for (std::size_t i = 0; i < std::min(corrections.size(), kUsedCorrections); ++i) {
        const TStoredCorrection& correction = corrections[i];
        FUZZ_CHECK_EQUAL(processor.SetActiveCorrection(correction.key.c_str()), 0u);
        FUZZ_CHECK_EQUAL(std::string(processor.GetActiveCorrectionKey()), correction.key);
        HostChecks::CheckState(processor, TKind::kProcessor);
        float exposure = 0.0f;
        float intensity = 0.0f;
        processor.GetReferenceExposureAndIntensity(&exposure, &intensity);
        FUZZ_CHECK_EQUAL(BitsOf(exposure), correction.exposureBits);
        FUZZ_CHECK_EQUAL(BitsOf(intensity), correction.intensityBits);
        model.SetActiveCorrection(correction.key);
        if (!correction.pixels.empty()) {
            FUZZ_CHECK_EQUAL(processor.SetExposureAndIntensity(1.5f, 30.0f), 0u);
            model.SetExposureAndIntensity(1.5f, 30.0f);
            const auto background = HostChecks::CheckApplication(processor);
            FUZZ_CHECK(!background || background == model.scaled);
            Literal::TStatistics expected;
            model.GetCorrectionStatistics(expected);
            unsigned short statistics[3] = {};
            processor.GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]);
            FUZZ_CHECK(statistics[0] == expected.minimum && statistics[1] == expected.maximum &&
                       statistics[2] == expected.average);
        }
    }
}

void SaveAndLoadAgain(TBackgroundCorrectionProcessorUINT16& processor,
                      const std::vector<TStoredCorrection>& corrections, const std::vector<std::string>& groupingNames)
{
    const bool grouped = !groupingNames.empty();
    FUZZ_CHECK_EQUAL(grouped ? processor.SaveGroupedFile("d\\saved", groupingNames) : processor.SaveFile("d\\saved"),
                     0u);
    TBytes expected;
    FUZZ_CHECK(Literal::Written(LiteralProcessorWith(corrections),
                                grouped ? std::make_optional(groupingNames) : std::nullopt, expected));
    FUZZ_CHECK(MemoryFiles::Disk().Read("d\\saved") == expected);
    TBackgroundCorrectionProcessorUINT16 again;
    const TLoadOutcome outcome = ProcessorDriver::Load(again, "d\\saved", {grouped, false});
    FUZZ_CHECK_EQUAL(outcome.result, 0u);
    FUZZ_CHECK(outcome.corrections == corrections);
    FUZZ_CHECK(!grouped || outcome.groupingNames == groupingNames);
}

// Corrections without pixels are in no state that a host could not reach: a load that fails ends header-only mode.
void UseDescriptions(TBackgroundCorrectionProcessorUINT16& processor)
{
    HostChecks::CheckState(processor, TKind::kProcessor);
    FUZZ_CHECK_EQUAL(processor.LoadFile("gone\\file"), 769u);
    const unsigned int count = processor.GetNumberOfCorrections();
    for (unsigned int i = 0; i < std::min<unsigned int>(count, kUsedCorrections); ++i) {
        FUZZ_CHECK_EQUAL(processor.SetActiveCorrection(processor.GetCorrectionKey(i)), 0u);
        HostChecks::CheckState(processor, TKind::kProcessor);
        const auto background = HostChecks::CheckApplication(processor);
        FUZZ_CHECK(!background || std::count(background->begin(), background->end(), std::uint16_t{0}) ==
                                      static_cast<std::ptrdiff_t>(background->size()));
    }
    TBackgroundCorrectionProcessorUINT16 other;
    FUZZ_CHECK_EQUAL(other.ImportCorrections(&processor, true), 0u);
    FUZZ_CHECK(ProcessorDriver::Corrections(other) == ProcessorDriver::Corrections(processor));
    const unsigned int saved = other.SaveFile("d\\saved");
    FUZZ_CHECK(saved == 0 || saved == 4294967295u);
}

// Gives the number of grouping names.
std::size_t LoadWithProcessor(const TBytes& bytes, TLoadKind kind)
{
    const TStoredCorrection held = {"Held", 2, 1, BitsOf(0.5f), BitsOf(100.0f), {1, 2}};
    TBackgroundCorrectionProcessorUINT16 processor;
    ProcessorDriver::Store(processor, held);
    processor.SetActiveCorrection("held");
    TLoadOutcome before;
    before.corrections = {held};
    before.active = true;

    const TLoadOutcome outcome = ProcessorDriver::Load(processor, kPath, kind);
    FUZZ_CHECK(IsLoadResult(outcome.result));
    FUZZ_CHECK_EQUAL(MemoryFiles::OpenStreams(), 0u);
    const auto model = LoadLiterally(bytes, kPath, kind, before, {}, kMostAttempts);
    if (model && !(outcome == *model)) {
        Fuzz::Fail(__FILE__, __LINE__,
                   Describe(kind) + "\nlibrary: " + Describe(outcome) + "\nmodel: " + Describe(*model));
    }
    if (kind.headerOnly) {
        UseDescriptions(processor);
    } else {
        UseCorrections(processor, outcome.corrections);
        SaveAndLoadAgain(processor, outcome.corrections, outcome.groupingNames);
    }
    return outcome.groupingNames.size();
}

// Where a store looks for the file: under its base, the recorded names and, when the first key names a group, that.
std::string StorePath(TTextList& names)
{
    TBackgroundCorrectionProcessorUINT16 reader;
    std::vector<std::string> recordedNames;
    std::uint32_t version = 0;
    reader.LoadGroupedFileHeaderOnly(kPath, recordedNames, version);
    names = TTextList(recordedNames.begin(), recordedNames.end());
    TTextList values;
    if (reader.GetNumberOfCorrections() == 0 ||
        GroupNaming::ExtractGroupValues(reader.GetCorrectionKey(0), names, values) != 0) {
        values = TTextList(names.size(), "1");
    }
    TDualString path;
    FUZZ_CHECK_EQUAL(GroupNaming::BuildGroupFileName("d\\s", names, values, path), 0u);
    return path.Narrow();
}

void OpenWithStore(const TBytes& bytes)
{
    TTextList names;
    const std::string path = StorePath(names);
    MemoryFiles::Put(path, bytes);
    for (const bool headerOnly : {true, false}) {
        TLiteralDisk disk = MemoryFiles::Disk();
        disk.mostAttempts = kMostAttempts;
        Literal::TStore model(disk);
        bool decided = true;
        const auto expect = [&decided](unsigned int code, const auto& operation) {
            try {
                FUZZ_CHECK(!decided || code == operation());
            } catch (const Literal::TUndecided&) {
                decided = false;
            }
        };
        TBackgroundCorrectionFileManager store;
        const char* const grouping[] = {"A", "B"};
        store.SetGroupingParameters(grouping, 2);
        model.SetGroupingParameters(Literal::TTexts{"A", "B"}, 2);
        const unsigned int result = headerOnly ? store.LoadFileHeaderOnly(path.c_str()) : store.LoadFile(path.c_str());
        FUZZ_CHECK(IsLoadResult(result) || result == 768);
        expect(result, [&] { return headerOnly ? model.LoadFileHeaderOnly(path) : model.LoadFile(path); });
        FUZZ_CHECK(result == 0 || !headerOnly || store.GetNumberOfCorrections() == 0);
        HostChecks::CheckState(store, TKind::kStore);
        const unsigned int count = store.GetNumberOfCorrections();
        for (unsigned int i = 0; i < std::min<unsigned int>(count, kUsedCorrections); ++i) {
            const std::string key = store.GetCorrectionKey(i);
            const unsigned int chosen = store.SetActiveCorrection(store.GetCorrectionKey(i));
            FUZZ_CHECK(IsLoadResult(chosen) || chosen == 513);
            expect(chosen, [&] { return model.SetActiveCorrection(key); });
            HostChecks::CheckState(store, TKind::kStore);
            const auto background = HostChecks::CheckApplication(store);
            FUZZ_CHECK(!decided || !background || background == model.processor->scaled);
        }
        const unsigned int saved = store.SaveFile("d\\t");
        FUZZ_CHECK(headerOnly && result == 0 ? saved == 770 : IsLoadResult(saved) || saved == 513);
        expect(saved, [&] { return model.SaveFile("d\\t"); });
        FUZZ_CHECK(!decided || MemoryFiles::Disk().nodes == disk.nodes);
        HostChecks::CheckState(store, TKind::kStore);
        FUZZ_CHECK_EQUAL(MemoryFiles::OpenStreams(), 0u);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const TLimitedMemory limitedMemory;
    Literal::mostBackgroundPixels = TLimitedMemory::kLargestBlock / sizeof(std::uint16_t);
    const TBytes bytes(data, data + size);
    MemoryFiles::Clear();
    MemoryFiles::MakeFolder("d");
    MemoryFiles::Put(kPath, bytes);
    // Thousands of grouping names take time and find nothing that a few would not: they are read once.
    if (LoadWithProcessor(bytes, {true, false}) <= kMostNames) {
        LoadWithProcessor(bytes, {true, true});
        LoadWithProcessor(bytes, {false, false});
        LoadWithProcessor(bytes, {false, true});
        OpenWithStore(bytes);
    }
    MemoryFiles::Clear(); // what stays looks like a leak and is searched for every time
    return 0;
}
