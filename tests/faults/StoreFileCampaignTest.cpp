// The offline store when files fail: every file operation of everything that touches files fails once, and from there
// on. Files that cannot be probed, opened or removed count as missing, missing and removed; that is how the store is
// meant to be, and so some failures go unreported.
#include "faults/Campaign.h"
#include "faults/StoreRules.h"
#include "faults/Worlds.h"

#include <gtest/gtest.h>

using namespace Worlds;
using Campaign::TRule;
using Campaign::TScenario;
using Campaign::TStateRule;
using Campaign::TStep;

namespace {
namespace StoreFileFaults {

constexpr char kShort[] = "4294967295";
constexpr char kUnexpected[] = "4294967294";
constexpr char kNotOpened[] = "769";

// A host sees the text of the loaded group's processor, where it is that one which failed.
std::string NotCreated(const std::string& path)
{
    return "769 'Could not create file - '" + path + "''";
}

TStep Step(const char* name, unsigned int (*call)(TWorld&))
{
    return {name, call, {}, {}, {}, {}};
}

TRule Rule(const std::set<std::string>& outcomes, const std::vector<TStateRule>& states, bool heals,
           const std::set<std::string>& torn = {}, const std::set<std::string>& made = {})
{
    return {outcomes, states, heals, torn, {}, made};
}

const std::vector<TStateRule> kUnchanged = {Campaign::Unchanged};
const std::vector<TStateRule> kDone = {Campaign::AsAfter};
const std::vector<TStateRule> kEither = {Campaign::Unchanged, Campaign::AsAfter};
const std::vector<TStateRule> kPart = {Campaign::Unchanged, Campaign::AsAfter, StoreRules::SomeKeys};

// Loads read the headers of every file; a correction that cannot be read is left out.
TStep Loading(const char* name, unsigned int (*call)(TWorld&))
{
    TStep step = Step(name, call);
    step.files[TFileOperation::kPathExists] = Rule({"0"}, {Campaign::AsAfter, StoreRules::SomeKeys}, true);
    step.files[TFileOperation::kOpenForReading] = Rule({kNotOpened}, kUnchanged, true);
    step.files[TFileOperation::kRead] = Rule({kShort, kUnexpected, "0"}, kPart, true);
    step.files[TFileOperation::kSeek] = Rule({kShort, kUnexpected, "0"}, kPart, true);
    step.files[TFileOperation::kClose] = Rule({"0"}, kDone, true);
    return step;
}

// Goes to another group of the named store: the group's file is probed and read, that of the old group written. A probe
// that fails makes the group an empty one, and what fails while the old group is written goes unreported.
TStep Switching(const char* name, unsigned int (*call)(TWorld&), const std::set<std::string>& withoutGroup,
                void (*switchOnly)(TWorld&))
{
    TStep step = Step(name, call);
    std::set<std::string> opening = withoutGroup;
    opening.insert(kNotOpened);
    const std::vector<TStateRule> moved = {Campaign::AsAfter, Campaign::Unchanged, StoreRules::SwitchedToNothing};
    step.files[TFileOperation::kOpenForReading] = Rule(opening, moved, false);
    std::set<std::string> reading = withoutGroup;
    reading.insert({kShort, kUnexpected, "0"});
    for (const char* const part : {"Data", "Entry ID", "Entry Version", "Entry Data Length"}) {
        reading.insert("0 'Error loading file - 'Couldn't read " + std::string(part) + " from calibration file.''");
    }
    step.files[TFileOperation::kRead] = Rule(reading, moved, false);
    step.files[TFileOperation::kSeek] = step.files[TFileOperation::kRead];
    step.files[TFileOperation::kOpenForWriting] =
        Rule({"0", "0 'Could not create file - 'st_A_1_B_1''"}, kDone, false, {"st_A_1_B_1"});
    step.files[TFileOperation::kWrite] = Rule({"0"}, kDone, false, {"st_A_1_B_1"});
    step.files[TFileOperation::kClose] = Rule({"0"}, kDone, true);
    step.waypoints = {switchOnly};
    return step;
}

// Opens the store from the new files in the end, whatever became of them.
TStep Splitting(const char* name, unsigned int (*call)(TWorld&))
{
    TStep step = Step(name, call);
    step.files[TFileOperation::kPathExists] =
        Rule({"0", kNotOpened, kShort},
             {Campaign::Unchanged, Campaign::AsAfter, StoreRules::SomeKeys, StoreRules::MoreKeys}, false);
    step.files[TFileOperation::kOpenForReading] = Rule({"0", kNotOpened}, kEither, false);
    step.files[TFileOperation::kOpenForWriting] = Rule({kNotOpened}, kPart, false);
    step.files[TFileOperation::kWrite] = Rule({kShort}, kPart, false);
    step.files[TFileOperation::kRead] = Rule({"0", kShort, kUnexpected}, kPart, false);
    step.files[TFileOperation::kSeek] = Rule({"0", kShort, kUnexpected}, kPart, false);
    step.files[TFileOperation::kClose] = Rule({"0", kShort}, kPart, false);
    step.files[TFileOperation::kRemove] = Rule({"0"}, {Campaign::AsAfter, StoreRules::MoreKeys}, false);
    return step;
}

// One file after the other is read and written; what could not be read is missing in the copy.
TStep Copying(const char* name, unsigned int (*call)(TWorld&), const std::string& target)
{
    const std::set<std::string> torn = {"st_A_1_B_1"};
    const std::set<std::string> made = {target + "_A_1_B_1", target + "_A_2_B_2", target + "_A_3_B_3"};
    TStep step = Step(name, call);
    step.files[TFileOperation::kPathExists] = Rule({"0"}, kUnchanged, false);
    step.files[TFileOperation::kOpenForReading] = Rule({"0", kNotOpened}, kUnchanged, false);
    step.files[TFileOperation::kOpenForWriting] = Rule({kNotOpened, NotCreated("st_A_1_B_1")}, kUnchanged, true);
    step.files[TFileOperation::kWrite] = Rule({kShort}, kUnchanged, false, torn);
    step.files[TFileOperation::kRead] = Rule({"0", kShort, kUnexpected}, kUnchanged, false, {}, made);
    step.files[TFileOperation::kSeek] = Rule({"0", kShort, kUnexpected}, kUnchanged, false, {}, made);
    step.files[TFileOperation::kClose] = Rule({"0", kShort}, kUnchanged, true);
    step.files[TFileOperation::kRemove] = Rule({"0"}, kUnchanged, false);
    return step;
}

unsigned int Add(TWorld& world, const char* key)
{
    return world.object->AddCorrection(key, Frames(), 1, 3, 3, 1.0f, 100.0f);
}

void SwitchToSecond(TWorld& world)
{
    world.object->SetActiveCorrection("A,2,B,2,nobody");
}

// A file of structure version 1 is first taken for one of version 2.
const std::string kReadTexts[] = {"Could not load file - 'ungrouped'\nStructure version not correct [ 1 ].",
                                  "Error loading file - 'Couldn't read Data from calibration file.'",
                                  "Error loading file - 'Couldn't read Entry ID from calibration file.'",
                                  "Error loading file - 'Couldn't read Entry Version from calibration file.'",
                                  "Error loading file - 'Couldn't read Entry Data Length from calibration file.'",
                                  "Error loading file - 'Calibration file contains invalid data.'"};
// What was active before an import is not to be found again.
const char kNotFoundAgain[] = "513 'Background correction key not found - 'A,1,B,1,b''";
const char kNobody[] = "513 'Background correction key not found - 'A,2,B,2''";

std::vector<TScenario> Scenarios()
{
    const auto fill = FillStoreFolder;
    TStep saveNamed = Step("SaveFile", [](TWorld& world) { return world.object->SaveFile("st"); });
    saveNamed.files[TFileOperation::kOpenForWriting] = Rule({NotCreated("st_A_1_B_1")}, kUnchanged, true);
    saveNamed.files[TFileOperation::kWrite] = Rule({kShort}, kUnchanged, true, {"st_A_1_B_1"});
    saveNamed.files[TFileOperation::kClose] = Rule({kShort}, kUnchanged, true);

    const auto withStore = [](TWorld& world) {
        MakeNamedStore(world);
        AddStoreSource(world);
    };
    TStep import =
        Step("ImportCorrections", [](TWorld& world) { return world.object->ImportCorrections(world.source, true); });
    for (const TFileOperation operation :
         {TFileOperation::kOpenForReading, TFileOperation::kRead, TFileOperation::kSeek,
          TFileOperation::kOpenForWriting, TFileOperation::kWrite}) {
        import.files[operation] =
            Rule({"0", kNotOpened, kShort, kUnexpected, kNotFoundAgain}, {StoreRules::SameSettingsAndKnownKeys}, false,
                 {}, {"st_A_1_B_1", "st_A_2_B_2", "st_A_4_B_4", "source_A_1_B_1", "source_A_2_B_2", "source_A_4_B_4"});
    }
    for (const std::string& text : kReadTexts) {
        import.files[TFileOperation::kRead].outcomes.insert("0 '" + text + "'");
    }
    import.files[TFileOperation::kClose] = Rule({"0"}, {StoreRules::SameSettingsAndKnownKeys}, true);
    import.waypoints = {SwitchToSecond, [](TWorld& world) {
                            world.object->DeleteCorrection("A,1,B,1,a"); // what is to be replaced goes first
                            SwitchToSecond(world);
                        }};

    TStep loadVersion1 = Loading("LoadFile", [](TWorld& world) { return world.object->LoadFile("ungrouped"); });
    // The headers were read, and the store is that file's; then the pixels could not be.
    loadVersion1.files[TFileOperation::kOpenForReading] =
        Rule({kNotOpened, "769 'Could not open file - 'ungrouped''"}, kEither, true);
    loadVersion1.files[TFileOperation::kPathExists] = Rule({"0"}, {StoreRules::Reopened}, true);
    for (const TFileOperation operation : {TFileOperation::kRead, TFileOperation::kSeek, TFileOperation::kClose}) {
        for (const std::string& text : kReadTexts) {
            loadVersion1.files[operation].outcomes.insert(
                {"0 '" + text + "'", kShort + (" '" + text + "'"), kUnexpected + (" '" + text + "'")});
        }
    }
    TStep splitOntoFile = Splitting("SaveFile", [](TWorld& world) { return world.object->SaveFile("old_A_1_B_1"); });
    // A file that is not found does not lead to the store that it belongs to: its whole name is the base.
    splitOntoFile.files[TFileOperation::kPathExists] = Rule({"0"}, {StoreRules::Reopened, Campaign::AsAfter}, false, {},
                                                            {"old_A_1_B_1_A_7_B_7", "old_A_1_B_1_A_8_B_8"});
    splitOntoFile.files[TFileOperation::kRemove].states.push_back(StoreRules::Reopened);

    return {
        {"LoadByBase",
         fill,
         MakeNamedStore,
         {Loading("LoadFile", [](TWorld& world) { return world.object->LoadFile("old"); })}},
        {"LoadByGroupFile",
         fill,
         MakeNamedStore,
         {Loading("LoadFile", [](TWorld& world) { return world.object->LoadFile("old_A_9_B_9"); })}},
        {"LoadHeaderOnly",
         fill,
         MakeNamedStore,
         {Loading("LoadFileHeaderOnly", [](TWorld& world) { return world.object->LoadFileHeaderOnly("old"); })}},
        {"LoadVersion1", fill, MakeNamedStore, {loadVersion1}},
        {"AddToOtherGroup",
         fill,
         MakeNamedStore,
         {Switching(
             "AddCorrection", [](TWorld& world) { return Add(world, "A,2,B,2,newer"); }, {"0"}, SwitchToSecond)}},
        {"SelectInOtherGroup",
         fill,
         MakeNamedStore,
         {Switching(
             "SetActiveCorrection", [](TWorld& world) { return world.object->SetActiveCorrection("A,2,B,2"); },
             {kNobody}, SwitchToSecond)}},
        {"DeleteInOtherGroup",
         fill,
         MakeNamedStore,
         {Switching(
             "DeleteCorrection", [](TWorld& world) { return world.object->DeleteCorrection("A,2,B,2"); },
             {"513 'The supplied key was not found - 'A,2,B,2''"}, SwitchToSecond)}},
        {"Import", fill, withStore, {import}},
        {"SplitFresh",
         fill,
         MakeFreshStore,
         {Splitting("SaveFile", [](TWorld& world) { return world.object->SaveFile("split"); })}},
        {"SplitOntoOther",
         fill,
         MakeFreshStore,
         {Splitting("SaveFile", [](TWorld& world) { return world.object->SaveFile("old"); })}},
        {"SplitOntoGroupFileOfOther", fill, MakeFreshStore, {splitOntoFile}},
        {"SaveNamed", fill, MakeNamedStore, {saveNamed}},
        {"CopyNamed",
         fill,
         MakeNamedStore,
         {Copying(
             "SaveFile", [](TWorld& world) { return world.object->SaveFile("copy"); }, "copy")}},
        {"CopyOntoOther",
         fill,
         MakeNamedStore,
         {Copying(
             "SaveFile", [](TWorld& world) { return world.object->SaveFile("old"); }, "old")}},
    };
}

class StoreFileCampaign : public testing::TestWithParam<TScenario> {};

TEST_P(StoreFileCampaign, HoldsAtEveryFileOperation)
{
    Campaign::FailFiles(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Faults, StoreFileCampaign, testing::ValuesIn(Scenarios()), Campaign::NameOf);

} // namespace StoreFileFaults
} // namespace
