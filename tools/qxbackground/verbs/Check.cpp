// qxbackground check: looks at every record of a calibration file and says where it departs from the format.
#include "base/Names.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/SteadyRead.h"
#include "calibration/TCalibrationWalk.h"
#include "verbs/ProvenanceCheck.h"
#include "verbs/Verbs.h"

#include "file/CalibrationFormat.h"

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TCheckOptions {
    std::vector<std::string> files;
    bool noProvenance = false;
};

void Check(TContext& context, const std::string& path, bool noProvenance)
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
    for (const TDeparture& departure : walk.departures)
        std::cout << path << ": byte " << departure.offset << ": " << Printable(departure.what) << '\n';
    std::cout << path << ": structure version " << walk.structureVersion << ", ";
    if (walk.structureVersion == CalibrationFormat::kGroupedVersion)
        std::cout << Counted(walk.groupingNames.size(), "grouping name") << ", ";
    std::cout << Counted(walk.corrections.size(), "correction") << ", " << Counted(walk.fileBytes, "byte") << ": ";
    if (walk.Whole()) {
        std::cout << "loads whole\n";
    } else {
        std::cout << Counted(walk.departures.size(), "departure") << '\n';
        context.status = kSomeFailed;
    }
    if (!noProvenance && walk.structureVersion != 0 && !CheckProvenance(path, walk))
        context.status = kSomeFailed;
}

} // namespace

void AddCheckVerb(TVerb& app, TContext& context)
{
    TVerb& verb =
        app.AddVerb("check", "Check every record of calibration files, and what is recorded beside them. Exit "
                             "status: 0 all load whole and nothing differs, 1 not");
    const auto options = std::make_shared<TCheckOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("files", options->files, "Calibration files")->required());
    verb.add_flag("--no-provenance", options->noProvenance,
                  "Do not compare them with FILE.json (of a group file: BASE.json), which says what corrections were "
                  "built from, nor with the frames it names");
    verb.Run([&context, options] {
        for (const std::string& file : options->files)
            Check(context, file, options->noProvenance);
    });
}

} // namespace workbench
