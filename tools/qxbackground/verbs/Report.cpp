// qxbackground report: whether a calibration is good, and for which images, as one page.
#include "base/JsonText.h"
#include "base/TextFile.h"
#include "base/Wording.h"
#include "commandline/Limits.h"
#include "report/ReportData.h"
#include "report/ReportPage.h"
#include "report/TCorrectionSet.h"
#include "verbs/Options.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TReportOptions {
    TReportRequest request;
    std::string page, table;
    bool json = false;
    bool overwrite = false;
};

// The page's data are one line: nobody reads them there.
std::string Compact(const nlohmann::json& json)
{
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void RunReport(const TContext& context, TReportOptions& options)
{
    if (options.page.empty() && options.table.empty() && !options.json)
        throw TToolError("nothing was asked for: -o writes the page, --csv a table, --json prints the figures");
    if (!options.page.empty() && !HasPage())
        PageAround({}); // says what is missing, before any work
    options.request.pictures = !options.page.empty();
    options.request.toolVersion = QXBACKGROUND_VERSION;
    nlohmann::json report = MakeReport(context, options.request);
    if (!options.page.empty())
        WriteText(options.page, PageAround(Compact(report)), ExistingFor(options.overwrite));
    if (!options.table.empty())
        WriteText(options.table, ReportCsv(report), ExistingFor(options.overwrite));
    if (options.json) {
        for (nlohmann::json& one : report["corrections"]) {
            one.erase("picture");
            one.erase("detail");
        }
        for (nlohmann::json& one : report["against"]) {
            one.erase("picture");
            one.erase("stored");
        }
        std::cout << JsonText(report);
        return;
    }
    std::size_t good = 0;
    for (const nlohmann::json& one : report["corrections"])
        good += one["mark"] == "good" ? std::size_t{1} : 0;
    std::cout << options.request.source << ": " << Counted(report["corrections"].size(), "correction") << ", of which "
              << good << " without remarks\n";
    for (const nlohmann::json& sentence : report["scaling"]["sentences"])
        std::cout << "  " << sentence.get<std::string>() << '\n';
    for (const std::string& written : {options.page, options.table}) {
        if (!written.empty())
            std::cout << "Report: " << written << '\n';
    }
}

} // namespace

void AddReportVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("report", "Tell on one page whether a calibration is good, and for which images");
    const auto options = std::make_shared<TReportOptions>();
    TReportRequest& request = options->request;
    verb.Reads(
        TPathKind::CalibrationOrStore,
        verb.add_option("source", request.source, "Calibration file, or a store's base name or group file")->required(),
        [options](const std::string& name, TPathPlan& plan) {
            const TReportRequest& wanted = options->request;
            if (IsCalibrationFile(wanted.source))
                plan.AddFile(name, TPathUse::Reads, wanted.source);
            else
                plan.AddStore(name, TPathUse::Reads, StoreOf(wanted.source, wanted.groups));
        });
    verb.add_option("--group", request.groups, kGroupHelp)->allow_extra_args(false);
    verb.Creates(
        TPathKind::Page,
        verb.add_option("-o,--output", options->page, "Write the report: one HTML page that needs nothing else"),
        options->overwrite);
    verb.Creates(TPathKind::Table,
                 verb.add_option("--csv", options->table, "Write the corrections' figures as a table"),
                 options->overwrite);
    AddJsonOption(verb, options->json);
    AddFrames(verb, "--dark,--darks", request.darks,
              "Dark frames: adds read noise, dark current, drift and frames that are off");
    verb.add_option(
            "--dark-exposure", request.darkExposureSeconds,
            "Exposure time in seconds of dark frames that do not say theirs: one for all files, or one for each, "
            "separated by blanks or commas")
        ->delimiter(',')
        ->check(AboveZero());
    AddFrames(verb, "--against", request.against.images,
              "Images to try the corrections on (the first page of each): adds before and after");
    verb.NamesKey(
        verb.add_option("--key", request.against.key,
                        "Which correction the images get (default: of those of their size the one scaled least)"));
    verb.add_option("--exposure", request.against.exposureSeconds,
                    "Exposure time of the images in seconds (default: what they say, else the correction's)")
        ->check(AboveZero());
    verb.add_option("--intensity", request.against.lightIntensityPercent,
                    "Light intensity of the images in percent (default: the correction's)")
        ->check(AboveZero());
    AddInputOptions(verb, request.against.input);
    verb.Run([&context, options] { RunReport(context, *options); });
}

} // namespace workbench
