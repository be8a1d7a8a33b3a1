// The live processor without memory: every allocation of every operation fails once, and from there on.
#include "faults/Campaign.h"
#include "faults/Worlds.h"

#include <gtest/gtest.h>

using namespace Worlds;
using Campaign::TRule;
using Campaign::TScenario;
using Campaign::TStep;

namespace {
namespace ProcessorMemoryFaults {

constexpr char kNamesFile[] = "grouped";

TStep Step(const char* name, unsigned int (*call)(TWorld&), TRule memory = {})
{
    return {name, call, std::move(memory), {}, {}, {}};
}

const TRule kUnchangedWith(const std::set<std::string>& outcomes)
{
    return {outcomes, {Campaign::Unchanged}, true, {}, {}};
}
const TRule kSetting = {{kNoBackground}, {Campaign::WithoutBackground}, true, {}, {}};
const TRule kLoading = {kNotLoaded, {Campaign::BeginningOfList}, true, {}, {}};

// Each correction is as before or as after, or has lost its pixels: they are freed before there are new ones.
bool PartlyOverwritten(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now)
{
    if (now.entries.size() < before.entries.size() || now.entries.size() > after.entries.size()) {
        return false;
    }
    for (std::size_t i = 0; i < now.entries.size(); ++i) {
        const std::string& wanted = after.entries[i];
        const std::string half = wanted.substr(0, wanted.rfind(" pixels") + 7);
        const bool isOld = i < before.entries.size() && now.entries[i] == before.entries[i];
        if (!isOld && now.entries[i] != wanted && now.entries[i] != half) {
            return false;
        }
    }
    return now.fields.at("region") == before.fields.at("region") &&
           now.fields.at("level") == before.fields.at("level") &&
           now.fields.at("background") == before.fields.at("background") &&
           now.fields.at("modified") == before.fields.at("modified");
}

// Room for what a grouped load hands out, so that only the library allocates.
unsigned int LoadGrouped(TWorld& world, const char* name, bool headerOnly)
{
    std::vector<std::string> names;
    std::uint32_t version = 0;
    return headerOnly ? world.Processor().LoadGroupedFileHeaderOnly(name, names, version)
                      : world.Processor().LoadGroupedFileFull(name, names, version);
}

unsigned int SaveGrouped(TWorld& world)
{
    static const std::vector<std::string> names = {"A", "B"};
    return world.Processor().SaveGroupedFile("saved", names);
}

unsigned int AddEntry(TWorld& world)
{
    return world.Processor().AddEntryCopy(
        *dynamic_cast<TBackgroundCorrectionProcessorUINT16&>(*world.source).GetEntryAt(0));
}

const TStep kAddOne = Step(
    "AddCorrection of one frame",
    [](TWorld& world) { return world.object->AddCorrection("k", Frames(), 1, 3, 3, 1.0f, 100.0f); },
    kUnchangedWith(kNotAdded));
const TStep kAddTwo = Step(
    "AddCorrection of two frames",
    [](TWorld& world) { return world.object->AddCorrection("k2", Frames(), 2, 3, 3, 1.0f, 100.0f); },
    kUnchangedWith(kNotAdded));
const TStep kSave = Step(
    "SaveFile", [](TWorld& world) { return world.object->SaveFile("saved"); }, kUnchangedWith({Thrown(kConstruction)}));
const TStep kLoad = Step("LoadFile", [](TWorld& world) { return world.object->LoadFile("three"); }, kLoading);
const TStep kImport =
    Step("ImportCorrections", [](TWorld& world) { return world.object->ImportCorrections(world.source, false); },
         {{Thrown(kConstruction), Thrown(kImporting)}, {Campaign::SomeMore}, true, {}, {}});

std::vector<TScenario> Scenarios()
{
    const auto fill = FillProcessorFolder;
    std::vector<TScenario> all = {
        {"Factory",
         nullptr,
         [](TWorld&) {},
         {Step(
             "CreateBackgroundCorrection",
             [](TWorld& world) {
                 world.object = CreateBackgroundCorrection();
                 return 0u;
             },
             kUnchangedWith({"bad_alloc"}))}},
        {"AddOneFrame", fill, MakeProcessor, {kAddOne}},
        {"AddTwoFrames", fill, MakeProcessor, {kAddTwo}},
        {"AddBeyondWhatIsReserved", fill, MakeManyCorrections, {kAddTwo, kAddOne}},
        {"AddEntryCopy",
         fill,
         MakeProcessor,
         {Step("AddEntryCopy", AddEntry, kUnchangedWith({NotCreated(kConstruction), NotCreated(kAdding)}))}},
        {"SetActiveCorrection",
         fill,
         MakeProcessor,
         {Step(
             "SetActiveCorrection", [](TWorld& world) { return world.object->SetActiveCorrection("flat"); },
             kSetting)}},
        {"SetRegion",
         fill,
         MakeProcessor,
         {Step(
             "SetRegion", [](TWorld& world) { return world.object->SetRegion(1, 0, 2, 2); }, kSetting)}},
        {"Import", fill, MakeProcessor, {kImport}},
        {"ImportOverwriting",
         fill,
         MakeProcessor,
         {Step("ImportCorrections", [](TWorld& world) { return world.object->ImportCorrections(world.source, true); },
               {{Thrown(kConstruction), Thrown(kImporting)}, {PartlyOverwritten}, true, {}, {}})}},
        {"Save", fill, MakeProcessor, {kSave}},
        {"SaveOver",
         fill,
         MakeProcessor,
         {Step(
             "SaveFile", [](TWorld& world) { return world.object->SaveFile("three"); },
             kUnchangedWith({Thrown(kConstruction)}))}},
        {"SaveGrouped",
         fill,
         MakeProcessor,
         {Step("SaveGroupedFile", SaveGrouped, kUnchangedWith({Thrown(kConstruction)}))}},
        {"Load", fill, MakeProcessor, {kLoad}},
        {"LoadHeaderOnly",
         fill,
         MakeProcessor,
         {Step("LoadFileHeaderOnly", [](TWorld& world) { return world.object->LoadFileHeaderOnly("three"); },
               {{NotCreated(kAdding)}, {Campaign::BeginningOfList}, true, {}, {}})}},
        {"LoadVersion1AsGrouped",
         fill,
         MakeProcessor,
         {Step(
             "LoadGroupedFileFull", [](TWorld& world) { return LoadGrouped(world, "three", false); }, kLoading)}},
        {"BuildSelectApplySaveLoadImport",
         fill,
         MakeProcessor,
         {kAddTwo,
          {"SetActiveCorrection",
           [](TWorld& world) { return world.object->SetActiveCorrection("k2"); },
           kSetting,
           {},
           {},
           {"513 'Background correction key not found - 'k2''"}},
          {"ApplyCorrection",
           [](TWorld& world) {
               unsigned short image[9] = {1, 2, 3, 400, 500, 600, 7, 8, 9};
               return world.object->ApplyCorrection(image, 9, nullptr, 0, nullptr, false, false, false);
           },
           {},
           {},
           {},
           {"1024", "1024 'Error allocating correction memory.'",
            "514 'The input image size does not match parameters.'"}},
          kSave,
          kLoad,
          kImport}},
    };
    TStep grouped = Step("LoadGroupedFileFull", [](TWorld& world) { return LoadGrouped(world, kNamesFile, false); });
    grouped.memory = {kNotLoaded, {Campaign::BeginningOfList, Campaign::Unchanged}, true, {}, {}};
    grouped.memory.outcomes.insert("bad_alloc"); // for the names
    all.push_back({"LoadGrouped", fill, MakeProcessor, {grouped}});
    grouped = Step("LoadGroupedFileHeaderOnly", [](TWorld& world) { return LoadGrouped(world, kNamesFile, true); });
    grouped.memory = {{NotCreated(kAdding), "bad_alloc"}, {Campaign::BeginningOfList}, true, {}, {}};
    grouped.waypoints = {[](TWorld& world) { world.object->LoadFileHeaderOnly("missing"); }};
    all.push_back({"LoadGroupedHeaderOnly", fill, MakeProcessor, {grouped}});
    // Out of the other mode.
    all.push_back({"LoadAfterHeaderOnly", fill, MakeHeaderOnlyProcessor, {kLoad}});
    return all;
}

// What must work when there is no memory at all.
std::vector<TStep> StepsThatNeedNothing()
{
    static int region[4];
    static float values[2];
    static unsigned short statistics[3];
    static unsigned short image[6] = {1, 200, 3, 4, 5, 6};
    static unsigned short output[6];
    static const std::string longText(600, 'x');
    return {
        Step("SetRegion", [](TWorld& world) { return world.object->SetRegion(0, 0, 3, 2); }),
        Step("SetExposure", [](TWorld& world) { return world.object->SetExposureAndIntensity(1.0f, 2.0f); }),
        Step("SetLevel", [](TWorld& world) { return world.object->SetCorrectionLevel(30); }),
        Step("GetLevel", [](TWorld& world) { return static_cast<unsigned int>(world.object->GetCorrectionLevel()); }),
        Step("GetExposure",
             [](TWorld& world) { return world.object->GetExposureAndIntensity(&values[0], &values[1]); }),
        Step("GetReference",
             [](TWorld& world) { return world.object->GetReferenceExposureAndIntensity(&values[0], &values[1]); }),
        Step("GetStatistics",
             [](TWorld& world) {
                 return world.object->GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]);
             }),
        Step("GetScaledStatistics",
             [](TWorld& world) {
                 return world.object->GetScaledCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]);
             }),
        Step("GetRegion",
             [](TWorld& world) { return world.object->GetRegion(&region[0], &region[1], &region[2], &region[3]); }),
        Step("GetActiveKey", [](TWorld& world) { return world.object->GetActiveCorrectionKey() != nullptr ? 0u : 1u; }),
        Step("GetKey", [](TWorld& world) { return world.object->GetCorrectionKey(1) != nullptr ? 0u : 1u; }),
        Step("GetNumber", [](TWorld& world) { return world.object->GetNumberOfCorrections() > 1 ? 0u : 1u; }),
        Step("GetMessage", [](TWorld& world) { return world.object->GetLastErrorMessage() != nullptr ? 0u : 1u; }),
        Step("ApplyInPlace",
             [](TWorld& world) {
                 return world.object->ApplyCorrection(image, 6, nullptr, 0, nullptr, false, false, false);
             }),
        Step("ApplyInto",
             [](TWorld& world) {
                 return world.object->ApplyCorrection(image, 6, output, 6, nullptr, false, false, false);
             }),
        Step("RefusedKey", [](TWorld& world) { return world.object->SetActiveCorrection(longText.c_str()); }),
        Step("RefusedFile", [](TWorld& world) { return world.object->LoadFile(longText.c_str()); }),
        Step("Delete", [](TWorld& world) { return world.object->DeleteCorrection("flat"); }),
        Step("Deactivate", [](TWorld& world) { return world.object->SetActiveCorrection(nullptr); }),
        Step("Clear", [](TWorld& world) { return world.object->ClearCorrections(); }),
        Step("LoadNothing", [](TWorld& world) { return world.object->LoadFileHeaderOnly("empty"); }),
        Step("DeleteBackgroundCorrection",
             [](TWorld& world) {
                 const unsigned int code = DeleteBackgroundCorrection(world.object);
                 world.object = nullptr;
                 return code;
             }),
    };
}

class ProcessorMemoryCampaign : public testing::TestWithParam<TScenario> {};

TEST_P(ProcessorMemoryCampaign, HoldsAtEveryAllocation)
{
    Campaign::FailMemory(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Faults, ProcessorMemoryCampaign, testing::ValuesIn(Scenarios()), Campaign::NameOf);

TEST(ProcessorMemoryCampaignOf, WhatNeedsNoMemory)
{
    TScenario scenario = {"NoMemory", FillProcessorFolder, MakeProcessor, StepsThatNeedNothing(), true};
    Campaign::FailMemory(scenario);
}

} // namespace ProcessorMemoryFaults
} // namespace
