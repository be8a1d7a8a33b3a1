// qxbackground check: looks at every record of a calibration file and says where it departs from the format.
#include "base/Names.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Doubts.h"
#include "calibration/SteadyRead.h"
#include "calibration/TCalibrationWalk.h"
#include "verbs/DarkFrames.h"
#include "verbs/Verbs.h"

#include "file/CalibrationFormat.h"

#include <iostream>
#include <memory>

namespace workbench {

namespace {

void Check(TContext& context, const std::string& path)
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
        PrintWarnings(HotterThanLonger(path, walk.corrections));
    } else {
        std::cout << Counted(walk.departures.size(), "departure") << '\n';
        context.status = kSomeFailed;
    }
}

} // namespace

void AddCheckVerb(TVerb& app, TContext& context)
{
    TVerb& verb = app.AddVerb("check", "Check every record of calibration files. Exit status: 0 all load whole, 1 not");
    const auto files = std::make_shared<std::vector<std::string>>();
    verb.Reads(TPathKind::Calibration, verb.add_option("files", *files, "Calibration files")->required());
    verb.Run([&context, files] {
        for (const std::string& file : *files)
            Check(context, file);
    });
}

} // namespace workbench
