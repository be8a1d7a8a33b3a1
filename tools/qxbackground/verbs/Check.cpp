// qxbackground check: looks at every record of a calibration file and says where it departs from the format.
#include "base/JsonText.h"
#include "base/Names.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Doubts.h"
#include "calibration/SteadyRead.h"
#include "calibration/TCalibrationWalk.h"
#include "verbs/DarkFrames.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceCheck.h"
#include "verbs/Verbs.h"

#include "file/CalibrationFormat.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace workbench {

namespace {

struct TCheckOptions {
    std::vector<std::string> files;
    bool noProvenance = false;
    bool json = false;
};

TCalibrationWalk CheckedWalk(const TContext& context, const std::string& path)
{
    TCalibrationWalk walk;
    ReadFileSteadily(path, [&] {
        walk = WalkCalibrationFile(path);
        // The walk is this program's own reader of the format; whether a file loads, the library decides.
        if (walk.Whole() && walk.structureVersion == CalibrationFormat::kUngroupedVersion) {
            QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
            Call(path, [&] { object.LoadHeaderOnly(LibraryName(path)); });
            if (object.Count() != walk.corrections.size())
                walk.departures.push_back({0, "the library finds another number of corrections in it"});
        }
    });
    return walk;
}

std::vector<std::string> WarningsOf(const std::string& path, const TCalibrationWalk& walk)
{
    return walk.Whole() ? HotterThanLonger(path, walk.corrections) : std::vector<std::string>();
}

void PrintCheck(const std::string& path, const TCalibrationWalk& walk)
{
    for (const TDeparture& departure : walk.departures)
        std::cout << path << ": byte " << departure.offset << ": " << Printable(departure.what) << '\n';
    std::cout << path << ": structure version " << walk.structureVersion << ", ";
    if (walk.structureVersion == CalibrationFormat::kGroupedVersion)
        std::cout << Counted(walk.groupingNames.size(), "grouping name") << ", ";
    std::cout << Counted(walk.corrections.size(), "correction") << ", " << Counted(walk.fileBytes, "byte") << ": ";
    std::cout << (walk.Whole() ? "loads whole" : Counted(walk.departures.size(), "departure")) << '\n';
    PrintWarnings(WarningsOf(path, walk));
}

nlohmann::json CheckJson(const std::string& path, const TCalibrationWalk& walk)
{
    nlohmann::json departures = nlohmann::json::array();
    for (const TDeparture& departure : walk.departures)
        departures.push_back({{"byte", departure.offset}, {"what", departure.what}});
    return {{"file", path},
            {"structureVersion", walk.structureVersion},
            {"groupingNames", walk.groupingNames},
            {"corrections", walk.corrections.size()},
            {"bytes", walk.fileBytes},
            {"whole", walk.Whole()},
            {"departures", departures},
            {"warnings", WarningsOf(path, walk)}};
}

void RunCheck(TContext& context, const TCheckOptions& options)
{
    nlohmann::json files = nlohmann::json::array();
    for (const std::string& file : options.files) {
        const TCalibrationWalk walk = CheckedWalk(context, file);
        if (!walk.Whole())
            context.status = kSomeFailed;
        TProvenanceCheck provenance;
        if (!options.noProvenance && walk.structureVersion != 0)
            provenance = CheckProvenance(file, walk);
        if (provenance.FoundDifference())
            context.status = kSomeFailed;
        if (options.json) {
            files.push_back(CheckJson(file, walk));
            files.back()["provenance"] = provenance.Json();
        } else {
            PrintCheck(file, walk);
            provenance.Print();
        }
    }
    if (options.json)
        std::cout << JsonText({{"files", files}});
}

} // namespace

void AddCheckVerb(TVerb& app, TContext& context)
{
    TVerb& verb = app.AddVerb("check", "Check every record of calibration files, and what is recorded beside them");
    const auto options = std::make_shared<TCheckOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("files", options->files, "Calibration files")->required());
    verb.add_flag("--no-provenance", options->noProvenance,
                  "Do not compare them with FILE.json (of a group file: BASE.json), which says what corrections were "
                  "built from, nor with the frames that it names");
    AddJsonOption(verb, options->json);
    verb.AddNote("Exit status: 0 all load whole and nothing differs from what is recorded, 1 not so, 2 one cannot be "
                 "read at all.");
    verb.Run([&context, options] { RunCheck(context, *options); });
}

} // namespace workbench
