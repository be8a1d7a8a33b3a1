// qxbackground check: looks at every record of a calibration file and says where it departs from the format.
#include "CalibrationFile.h"
#include "CalibrationWalk.h"
#include "Verbs.h"

#include "file/CalibrationFormat.h"

#include <iostream>
#include <memory>

namespace workbench {

namespace {

constexpr int kDeparts = 1;

void Run(TContext& context, const std::string& path)
{
    TCalibrationWalk walk = WalkCalibrationFile(path);
    // The walk is this program's own reading of the format; the library has the last word on its own files.
    if (walk.Whole() && walk.structureVersion == CalibrationFormat::kUngroupedVersion) {
        QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
        Call(path, [&] { object.LoadHeaderOnly(path); });
        if (object.Get().GetNumberOfCorrections() != walk.corrections.size())
            walk.departures.push_back({0, "the library finds another number of corrections in it"});
    }
    for (const TDeparture& departure : walk.departures)
        std::cout << path << ": byte " << departure.offset << ": " << Printable(departure.what) << '\n';
    std::cout << path << ": structure version " << walk.structureVersion << ", ";
    if (walk.structureVersion == CalibrationFormat::kGroupedVersion)
        std::cout << walk.groupingNames.size() << " grouping names, ";
    std::cout << walk.corrections.size() << " corrections, " << walk.fileBytes << " bytes: ";
    if (walk.Whole()) {
        std::cout << "loads whole\n";
    } else {
        std::cout << walk.departures.size() << " departures\n";
        context.status = kDeparts;
    }
}

} // namespace

void AddCheckVerb(CLI::App& app, TContext& context)
{
    CLI::App* const verb =
        app.add_subcommand("check", "Check every record of a calibration file. Exit status: 0 loads whole, 1 does not");
    const auto file = std::make_shared<std::string>();
    verb->add_option("file", *file, "Calibration file")->required();
    verb->callback([&context, file] { Run(context, *file); });
}

} // namespace workbench
