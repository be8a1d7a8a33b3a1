// qxbackground list: what a calibration file holds, without reading its pixels.
#include "CalibrationFile.h"
#include "CalibrationWalk.h"
#include "Listing.h"
#include "Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TOptions {
    std::string file;
    bool json = false;
};

void Run(const TContext& context, const TOptions& options)
{
    // The library tells keys and conditions; sizes it tells only with pixels, so they come from the records.
    const TCalibrationWalk walk = WalkCalibrationFile(options.file);
    RefuseGroupFile(options.file, walk.structureVersion);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    Call(options.file, [&] { object.LoadHeaderOnly(options.file); });
    const std::vector<TListedCorrection> listed = ListCorrections(object, walk);
    if (options.json) {
        std::cout << Text(nlohmann::json{{"file", options.file},
                                         {"bytes", walk.fileBytes},
                                         {"whole", walk.Whole()},
                                         {"corrections", ListingJson(listed)}});
        return;
    }
    std::cout << options.file << ": " << listed.size() << (listed.size() == 1 ? " correction, " : " corrections, ")
              << walk.fileBytes << " bytes\n"
              << ListingTable(listed);
    if (!walk.Whole())
        std::cout << "This file does not load whole (" << walk.Complaint() << "); see 'qxbackground check'.\n";
}

} // namespace

void AddListVerb(const TVerb& app, const TContext& context)
{
    const TVerb verb = app.Add("list", "List a calibration file's corrections (reads no pixels)");
    const auto options = std::make_shared<TOptions>();
    verb.Option("file", options->file, "Calibration file").Required();
    verb.Flag("--json", options->json, "Print as JSON");
    verb.Run([&context, options] { Run(context, *options); });
}

} // namespace workbench
