// qxbackground list: what a calibration file holds, without reading its pixels.
#include "base/JsonText.h"
#include "base/Names.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Listing.h"
#include "calibration/SteadyRead.h"
#include "calibration/TCalibrationPlace.h"
#include "calibration/TCalibrationWalk.h"
#include "verbs/Options.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TListOptions {
    std::string file;
    bool json = false;
};

void RunList(const TContext& context, const TListOptions& options)
{
    // Without pixels the library returns keys and conditions but no sizes, so the sizes come from the records.
    TCalibrationWalk walk;
    std::vector<TListedCorrection> listed;
    ReadFileSteadily(options.file, [&] {
        walk = WalkCalibrationFile(options.file);
        RefuseOtherFiles(options.file, walk);
        QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
        Call(options.file, [&] { object.LoadHeaderOnly(LibraryName(options.file)); });
        listed = ListCorrections(object, walk);
    });
    // What the corrections were built from; "check" says whether it is true.
    std::string record = TCalibrationPlace(options.file).ProvenanceFile();
    if (!StateOf(record).exists)
        record.clear();
    if (options.json) {
        std::cout << JsonText(nlohmann::json{{"file", options.file},
                                             {"bytes", walk.fileBytes},
                                             {"whole", walk.Whole()},
                                             {"provenance", record.empty() ? nlohmann::json() : nlohmann::json(record)},
                                             {"corrections", ListingJson(listed)}});
        return;
    }
    std::cout << options.file << ": " << Counted(listed.size(), "correction") << ", " << Counted(walk.fileBytes, "byte")
              << '\n'
              << ListingTable(listed);
    if (!record.empty())
        std::cout << "What they were built from is recorded in " << record << '\n';
    if (!walk.Whole())
        std::cout << "This file does not load whole (" << walk.Complaint()
                  << "); see 'qxbackground check' and\n"
                     "'qxbackground import --salvage'.\n";
}

} // namespace

void AddListVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("list", "List a calibration file's corrections (reads no pixels)");
    const auto options = std::make_shared<TListOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { RunList(context, *options); });
}

} // namespace workbench
