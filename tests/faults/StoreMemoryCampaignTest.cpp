// The offline store without memory: every allocation of every operation fails once, and from there on.
#include "faults/Campaign.h"
#include "faults/StoreRules.h"
#include "faults/Worlds.h"

#include "offline/TBackgroundCorrectionFileManager.h"

#include <gtest/gtest.h>

using namespace Worlds;
using Campaign::TRule;
using Campaign::TScenario;
using Campaign::TStep;

namespace {
namespace StoreMemoryFaults {

constexpr char kBadAlloc[] = "bad_alloc";
constexpr char kGroupNotLoaded[] = "1024"; // its text goes with the processor that was to hold the group
const std::string kNotWritten = Thrown(kConstruction);

TStep Step(const char* name, unsigned int (*call)(TWorld&), TRule memory = {})
{
    return {name, call, std::move(memory), {}, {}, {}};
}

std::set<std::string> Together(std::set<std::string> left, const std::set<std::string>& right)
{
    left.insert(right.begin(), right.end());
    return left;
}

TRule UnchangedWith(const std::set<std::string>& outcomes, const std::set<std::string>& torn = {})
{
    return {outcomes, {Campaign::Unchanged}, true, torn, {}};
}

// A step of the named store that goes to another group first. The switch may be done when the rest fails; the file of
// the group that is left may be half written, but then its corrections are still loaded.
TStep Switching(const char* name, unsigned int (*call)(TWorld&), const std::set<std::string>& outcomes,
                void (*switchOnly)(TWorld&))
{
    TStep step = Step(name, call, UnchangedWith(Together(outcomes, {kBadAlloc, kNotWritten}), {"st_A_1_B_1"}));
    step.waypoints = {switchOnly};
    return step;
}

void SwitchToSecond(TWorld& world)
{
    world.object->SetActiveCorrection("A,2,B,2,nobody");
}

void SwitchToNew(TWorld& world)
{
    world.object->SetActiveCorrection("A,4,B,4,nobody");
}

constexpr char kLongName[] = "a grouping name that is long enough to need memory";

unsigned int Group(TWorld& world)
{
    static const char* names[] = {"C", kLongName};
    return dynamic_cast<TBackgroundCorrectionFileManager&>(*world.object).SetGroupingParameters(names, 2);
}

unsigned int Add(TWorld& world, const char* key)
{
    return world.object->AddCorrection(key, Frames(), 2, 3, 3, 1.0f, 100.0f);
}

const TStep kAddFresh = Step(
    "AddCorrection", [](TWorld& world) { return Add(world, "A,7,B,7,third and longer than a text keeps"); },
    UnchangedWith(Together(kNotAdded, {kBadAlloc})));
const TRule kSetting = {{kNoBackground}, {Campaign::WithoutBackground}, true, {}, {}};
const TRule kSelecting = {{kNoBackground, kBadAlloc}, {Campaign::WithoutBackground, Campaign::Unchanged}, true, {}, {}};
// A save that ends half way leaves the file that it was writing, and the next one to the same name stumbles over it; to
// another name it goes well. The last step opens the store from the new files: that it fails is not reported, and the
// store then stays as it was, with all it has.
const TStep kSplit = Step("SaveFile", [](TWorld& world) { return world.object->SaveFile("split"); },
                          {{kBadAlloc, kNotWritten, "0"}, {Campaign::Unchanged}, false, {}, {}});

std::vector<TScenario> SmallScenarios()
{
    const auto fill = FillStoreFolder;
    return {
        {"Factory",
         nullptr,
         [](TWorld& world) { world.keyToUse = std::string(kLongName) + ",use"; },
         {Step(
             "CreateBackgroundCorrectionOffline",
             [](TWorld& world) {
                 static std::string name = kLongName;
                 static char* names[] = {name.data(), name.data()};
                 world.object = CreateBackgroundCorrectionOffline(names, 2);
                 return 0u;
             },
             UnchangedWith({kBadAlloc}))}},
        {"GroupEmpty",
         fill,
         [](TWorld& world) {
             MakeEmptyStore(world);
             world.keyToUse += ",C,use," + std::string(kLongName) + ",use";
         },
         {Step("SetGroupingParameters", Group, {{kBadAlloc}, {Campaign::Unchanged}, false, {}, {}})}},
        {"GroupNamed",
         fill,
         [](TWorld& world) {
             MakeNamedStore(world);
             world.keyToUse += ",C,use," + std::string(kLongName) + ",use";
         },
         {Step("SetGroupingParameters", Group,
               {{kBadAlloc, kNotWritten}, {Campaign::Unchanged, StoreRules::Cleared}, false, {"st_A_1_B_1"}, {}})}},
        {"AddToEmpty",
         fill,
         MakeEmptyStore,
         {Step("AddCorrection", [](TWorld& world) { return Add(world, "A,1,B,1"); },
               {Together(kNotAdded, {kBadAlloc}), {Campaign::Unchanged, StoreRules::GroupMade}, true, {}, {}})}},
        {"AddToFresh", fill, MakeFreshStore, {kAddFresh}},
        {"AddToLoadedGroup",
         fill,
         MakeNamedStore,
         {Step(
             "AddCorrection", [](TWorld& world) { return Add(world, "A,1,B,1,newer"); },
             UnchangedWith(Together(kNotAdded, {kBadAlloc})))}},
        {"AddToOtherGroup",
         fill,
         MakeNamedStore,
         {Switching(
             "AddCorrection", [](TWorld& world) { return Add(world, "A,2,B,2,newer"); },
             Together(kNotAdded, {kGroupNotLoaded}), SwitchToSecond)}},
        {"AddToNewGroup",
         fill,
         MakeNamedStore,
         {Switching(
             "AddCorrection", [](TWorld& world) { return Add(world, "A,4,B,4,newer"); }, kNotAdded, SwitchToNew)}},
        {"SelectInGroup",
         fill,
         MakeNamedStore,
         {Step(
             "SetActiveCorrection", [](TWorld& world) { return world.object->SetActiveCorrection("A,1,B,1,new"); },
             kSelecting)}},
        {"SelectInFresh",
         fill,
         MakeFreshStore,
         {Step(
             "SetActiveCorrection", [](TWorld& world) { return world.object->SetActiveCorrection("A,7,B,7,second"); },
             kSelecting)}},
        {"SelectHeaderOnly",
         fill,
         MakeHeaderOnlyStore,
         {Step(
             "SetActiveCorrection", [](TWorld& world) { return world.object->SetActiveCorrection("A,2,B,2"); },
             UnchangedWith({kBadAlloc, kGroupNotLoaded}))}},
        {"DeleteInOtherGroup",
         fill,
         MakeNamedStore,
         {Switching(
             "DeleteCorrection", [](TWorld& world) { return world.object->DeleteCorrection("A,2,B,2"); },
             {kGroupNotLoaded}, SwitchToSecond)}},
        {"SetRegion",
         fill,
         MakeFreshStore,
         {Step(
             "SetRegion", [](TWorld& world) { return world.object->SetRegion(0, 1, 2, 1); }, kSetting)}},
        {"LoadByBase",
         fill,
         MakeNamedStore,
         {Step(
             "LoadFile", [](TWorld& world) { return world.object->LoadFile("old"); },
             UnchangedWith({kBadAlloc, kGroupNotLoaded}))}},
        {"LoadByGroupFile",
         fill,
         MakeNamedStore,
         {Step(
             "LoadFile", [](TWorld& world) { return world.object->LoadFile("old_A_9_B_9"); },
             UnchangedWith({kBadAlloc, kGroupNotLoaded}))}},
        {"LoadHeaderOnly",
         fill,
         MakeNamedStore,
         {Step(
             "LoadFileHeaderOnly", [](TWorld& world) { return world.object->LoadFileHeaderOnly("old"); },
             UnchangedWith({kBadAlloc, kGroupNotLoaded}))}},
        {"LoadVersion1HeaderOnly",
         fill,
         MakeNamedStore,
         {Step(
             "LoadFileHeaderOnly", [](TWorld& world) { return world.object->LoadFileHeaderOnly("ungrouped"); },
             UnchangedWith({kBadAlloc, kGroupNotLoaded}))}},
        {"LoadVersion1", // the keys are known when the pixels are read
         fill,
         MakeNamedStore,
         {Step("LoadFile", [](TWorld& world) { return world.object->LoadFile("ungrouped"); },
               {Together(kNotLoaded, {kBadAlloc, kGroupNotLoaded}),
                {Campaign::Unchanged, Campaign::AsAfter},
                true,
                {},
                {}})}},
    };
}

std::vector<TScenario> LargeScenarios()
{
    const auto fill = FillStoreFolder;
    const auto withProcessor = [](TWorld& world) {
        MakeNamedStore(world);
        AddProcessorSource(world);
    };
    const auto withStore = [](TWorld& world) {
        MakeNamedStore(world);
        AddStoreSource(world);
    };
    const auto emptyWithProcessor = [](TWorld& world) {
        MakeEmptyStore(world);
        AddProcessorSource(world);
    };
    const auto freshWithStore = [](TWorld& world) {
        MakeFreshStore(world);
        AddStoreSource(world);
    };
    // Making the active correction active again decides the result, also when an import before it has failed.
    const std::set<std::string> importing = {kBadAlloc,
                                             kNotWritten,
                                             kGroupNotLoaded,
                                             NotCreated(kConstruction),
                                             NotCreated(kAdding),
                                             "0",
                                             "0" + NotCreated(kConstruction).substr(4),
                                             "0" + NotCreated(kAdding).substr(4),
                                             kNoBackground};
    const std::set<std::string> torn = {"st_A_1_B_1",     "st_A_2_B_2",     "st_A_4_B_4",
                                        "source_A_1_B_1", "source_A_2_B_2", "source_A_4_B_4"};
    // An import makes active again what was active; not so one that memory ends.
    const std::set<std::string> active = {"active", "background", "reference", "region", "statistics"};
    TStep import =
        Step("ImportCorrections", [](TWorld& world) { return world.object->ImportCorrections(world.source, false); },
             {importing, {StoreRules::PartlyImported}, true, torn, active});
    TStep replace =
        Step("ImportCorrections", [](TWorld& world) { return world.object->ImportCorrections(world.source, true); },
             {importing, {StoreRules::PartlyReplaced}, true, torn, active});
    import.waypoints = {SwitchToSecond, SwitchToNew};
    replace.waypoints = {SwitchToSecond, SwitchToNew, [](TWorld& world) {
                             world.object->DeleteCorrection("A,1,B,1,a"); // what is to be replaced goes first
                             SwitchToNew(world);
                         }};
    return {
        {"ImportFromProcessor", fill, withProcessor, {import}},
        {"ImportFromProcessorReplacing", fill, withProcessor, {replace}},
        {"ImportFromStore", fill, withStore, {import}},
        {"ImportFromStoreReplacing", fill, withStore, {replace}},
        {"ImportIntoFresh", fill, freshWithStore, {import}},
        {"ImportIntoEmpty", fill, emptyWithProcessor, {import}}, // its first key needs memory
        {"SplitFresh", fill, MakeFreshStore, {kSplit}},
        {"SplitOntoOther",
         fill,
         MakeFreshStore,
         {Step("SaveFile", [](TWorld& world) { return world.object->SaveFile("old"); },
               {{kBadAlloc, kNotWritten, kGroupNotLoaded, "0"}, {Campaign::Unchanged}, false, {}, {}})}},
        {"SaveNamed",
         fill,
         MakeNamedStore,
         {Step(
             "SaveFile", [](TWorld& world) { return world.object->SaveFile("st"); },
             UnchangedWith({kBadAlloc, kNotWritten}, {"st_A_1_B_1"}))}},
        {"CopyNamed",
         fill,
         MakeNamedStore,
         {Step("SaveFile", [](TWorld& world) { return world.object->SaveFile("copy"); },
               {{kBadAlloc, kNotWritten, kGroupNotLoaded}, {Campaign::Unchanged}, false, {"st_A_1_B_1"}, {}})}},
        {"CopyOntoGroupFileOfOther",
         fill,
         MakeNamedStore,
         {Step("SaveFile", [](TWorld& world) { return world.object->SaveFile("old_A_1_B_1"); },
               {{kBadAlloc, kNotWritten, kGroupNotLoaded}, {Campaign::Unchanged}, false, {"st_A_1_B_1"}, {}})}},
        {"BuildSelectApplySaveLoadImportSwitch",
         fill,
         freshWithStore,
         {kAddFresh,
          {"SetActiveCorrection",
           [](TWorld& world) { return world.object->SetActiveCorrection("A,7,B,7,first"); },
           kSelecting,
           {},
           {},
           {}},
          {"ApplyCorrection",
           [](TWorld& world) {
               unsigned short image[2] = {1, 200};
               return world.object->ApplyCorrection(image, 2, nullptr, 0, nullptr, false, false, false);
           },
           {},
           {},
           {},
           {"1024 'Error allocating correction memory.'", "514 'The input image size does not match parameters.'"}},
          kSplit,
          Step(
              "LoadFile", [](TWorld& world) { return world.object->LoadFile("split"); },
              UnchangedWith({kBadAlloc, kGroupNotLoaded})),
          import,
          {"SetActiveCorrection",
           [](TWorld& world) { return world.object->SetActiveCorrection("A,8,B,8"); },
           {{kNoBackground, kBadAlloc, kGroupNotLoaded, kNotWritten},
            {Campaign::WithoutBackground, Campaign::Unchanged},
            true,
            {"split_A_1_B_1", "split_A_2_B_2", "split_A_4_B_4"},
            {}},
           {},
           {[](TWorld& world) { world.object->SetActiveCorrection("A,8,B,8,nobody"); }},
           {}}}},
    };
}

std::vector<TStep> StepsThatNeedNothing()
{
    static int region[4];
    static float values[2];
    static unsigned short statistics[3];
    static unsigned short image[4] = {1, 200, 3, 4};
    return {
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
        Step("Apply",
             [](TWorld& world) {
                 return world.object->ApplyCorrection(image, 4, nullptr, 0, nullptr, false, false, false);
             }),
        Step("Deactivate", [](TWorld& world) { return world.object->SetActiveCorrection(nullptr); }),
        Step("Refused", [](TWorld& world) { return world.object->SaveFile(nullptr); }),
        Step("Clear", [](TWorld& world) { return world.object->ClearCorrections(); }),
        Step("DeleteBackgroundCorrection",
             [](TWorld& world) {
                 const unsigned int code = DeleteBackgroundCorrection(world.object);
                 world.object = nullptr;
                 return code;
             }),
    };
}

class StoreMemoryCampaign : public testing::TestWithParam<TScenario> {};

TEST_P(StoreMemoryCampaign, HoldsAtEveryAllocation)
{
    Campaign::FailMemory(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Small, StoreMemoryCampaign, testing::ValuesIn(SmallScenarios()), Campaign::NameOf);
INSTANTIATE_TEST_SUITE_P(Large, StoreMemoryCampaign, testing::ValuesIn(LargeScenarios()), Campaign::NameOf);

TEST(StoreMemoryCampaignOf, WhatNeedsNoMemory)
{
    TScenario scenario = {"NoMemory", FillStoreFolder, MakeFreshStore, StepsThatNeedNothing(), true};
    Campaign::FailMemory(scenario);
}

} // namespace StoreMemoryFaults
} // namespace
