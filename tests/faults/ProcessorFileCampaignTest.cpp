// The live processor when files fail: every file operation of every save and load fails once, and from there on. What
// the failures of single reads leave is compared with a model in CalibrationFileFaultsTest.cpp; here it is followed up.
#include "faults/Campaign.h"
#include "faults/Worlds.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Worlds;
using Campaign::TRule;
using Campaign::TScenario;
using Campaign::TStep;

namespace {
namespace ProcessorFileFaults {

std::string Short(const std::string& text)
{
    return "4294967295 'Couldn't " + text + " calibration file.'";
}

// As after, but corrections are missing.
bool SomeOfList(const TSnapshot&, const TSnapshot& after, const TSnapshot& now)
{
    for (const std::string& entry : now.entries) {
        if (std::find(after.entries.begin(), after.entries.end(), entry) == after.entries.end()) {
            return false;
        }
    }
    return now.fields == after.fields;
}

TStep Saving(const char* name, unsigned int (*call)(TWorld&), const std::string& path)
{
    const std::vector<Campaign::TStateRule> unchanged = {Campaign::Unchanged};
    TStep step = {name, call, {}, {}, {}, {}};
    step.files[TFileOperation::kOpenForWriting] = {
        {"769 'Could not create file - '" + path + "''"}, unchanged, true, {}, {}};
    step.files[TFileOperation::kWrite] = {{Short("write Data in"), Short("write Entry ID in"),
                                           Short("write Entry Version in"), Short("write Entry Data Length in"),
                                           Short("read Data from")},
                                          unchanged,
                                          true,
                                          {},
                                          {}};
    step.files[TFileOperation::kClose] = {{Short("write Data in")}, unchanged, true, {}, {}};
    return step;
}

TStep Loading(const char* name, unsigned int (*call)(TWorld&), const std::string& path, bool headerOnly)
{
    TStep step = {name, call, {}, {}, {}, {}};
    step.files[TFileOperation::kOpenForReading] = {
        {"769 'Could not open file - '" + path + "''"}, {Campaign::Unchanged}, true, {}, {}};
    // A correction that could not be read is left out, and the result is that of the last.
    TRule& reading = step.files[TFileOperation::kRead];
    reading = {{Short("read Data from"), Short("read Entry ID from"), Short("read Entry Version from"),
                Short("read Entry Data Length from"), "4294967294 'Calibration file contains invalid data.'",
                "4294967295 'Unexpected end of calibration file.'"},
               {Campaign::Unchanged, SomeOfList},
               true,
               {},
               {}};
    for (const char* const part : {"Data", "Entry ID", "Entry Version", "Entry Data Length"}) {
        reading.outcomes.insert("0 'Error loading file - 'Couldn't read " + std::string(part) +
                                " from calibration file.''");
    }
    reading.outcomes.insert("0 'Error loading file - 'Calibration file contains invalid data.''");
    step.files[TFileOperation::kSeek] = reading;
    step.files[TFileOperation::kClose] = {{"0"}, {Campaign::AsAfter}, true, {}, {}};
    if (headerOnly) { // the mode is entered whatever becomes of the file
        step.waypoints = {[](TWorld& world) { world.object->LoadFileHeaderOnly("missing"); }};
    } else {
        step.waypoints = {[](TWorld& world) { world.object->LoadFile("missing"); }};
    }
    return step;
}

unsigned int LoadGrouped(TWorld& world, const char* name, bool headerOnly)
{
    std::vector<std::string> names;
    std::uint32_t version = 0;
    return headerOnly ? world.Processor().LoadGroupedFileHeaderOnly(name, names, version)
                      : world.Processor().LoadGroupedFileFull(name, names, version);
}

std::vector<TScenario> Scenarios()
{
    const TStep save = Saving("SaveFile", [](TWorld& world) { return world.object->SaveFile("saved"); }, "saved");
    const TStep saveOver = Saving("SaveFile", [](TWorld& world) { return world.object->SaveFile("three"); }, "three");
    const TStep saveGrouped = Saving(
        "SaveGroupedFile", [](TWorld& world) { return world.Processor().SaveGroupedFile("grouped", {"A", "B"}); },
        "grouped");
    const TStep load =
        Loading("LoadFile", [](TWorld& world) { return world.object->LoadFile("three"); }, "three", false);
    const TStep loadHeader = Loading(
        "LoadFileHeaderOnly", [](TWorld& world) { return world.object->LoadFileHeaderOnly("three"); }, "three", true);
    const TStep loadGrouped = Loading(
        "LoadGroupedFileFull", [](TWorld& world) { return LoadGrouped(world, "grouped", false); }, "grouped", false);
    const TStep loadGroupedHeader = Loading(
        "LoadGroupedFileHeaderOnly", [](TWorld& world) { return LoadGrouped(world, "grouped", true); }, "grouped",
        true);
    const TStep import = {"ImportCorrections",
                          [](TWorld& world) { return world.object->ImportCorrections(world.source, false); },
                          {},
                          {},
                          {},
                          {}};
    const auto fill = FillProcessorFolder;
    return {
        {"Save", fill, MakeProcessor, {save}},
        {"SaveOver", fill, MakeProcessor, {saveOver}},
        {"SaveGroupedOver", fill, MakeProcessor, {saveGrouped}},
        {"Load", fill, MakeProcessor, {load}},
        {"LoadHeaderOnly", fill, MakeProcessor, {loadHeader}},
        {"LoadGrouped", fill, MakeProcessor, {loadGrouped}},
        {"LoadGroupedHeaderOnly", fill, MakeProcessor, {loadGroupedHeader}},
        {"LoadAfterHeaderOnly", fill, MakeHeaderOnlyProcessor, {load}},
        {"SaveImportSaveLoad", fill, MakeProcessor, {save, import, saveOver, load}},
        {"NoFile", fill, MakeProcessor, {import}, true},
    };
}

class ProcessorFileCampaign : public testing::TestWithParam<TScenario> {};

TEST_P(ProcessorFileCampaign, HoldsAtEveryFileOperation)
{
    Campaign::FailFiles(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Faults, ProcessorFileCampaign, testing::ValuesIn(Scenarios()), Campaign::NameOf);

} // namespace ProcessorFileFaults
} // namespace
