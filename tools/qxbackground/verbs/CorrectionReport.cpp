// What the correcting verbs print when they are done.
#include "verbs/CorrectionReport.h"

#include "base/JsonText.h"
#include "base/Wording.h"
#include "batch/TStatisticsSample.h"
#include "verbs/CorrectionPicture.h"
#include "verbs/DarkFrames.h"
#include "verbs/TPageTable.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <iostream>

namespace workbench {

nlohmann::json RunJson(const TCorrectionReport& report, const TCorrectOptions& options)
{
    nlohmann::json json{{"output", options.output}, {"pages", report.pages}};
    json["corrections"] = nlohmann::json::array();
    for (const TUsedCorrection& used : report.corrections)
        json["corrections"].push_back(
            {{"correction", used.what}, {"exposureSeconds", used.exposureSeconds}, {"scaledBy", used.factor}});
    if (!report.notes.empty())
        json["notes"] = report.notes;
    if (!report.warnings.empty())
        json["warnings"] = report.warnings;
    if (!report.files.empty() || !report.failures.empty()) { // otherwise all pages went into one file
        json["files"] = nlohmann::json::array();
        for (const TCorrectionReport::TFile& file : report.files)
            json["files"].push_back({{"input", file.input}, {"output", file.output}});
        json["failures"] = nlohmann::json::array();
        for (const TCorrectionReport::TFailure& failure : report.failures)
            json["failures"].push_back({{"input", failure.input}, {"why", failure.why}});
    }
    return json;
}

namespace {

nlohmann::json ReportJson(const TCorrectionReport& report, const TCorrectOptions& options)
{
    nlohmann::json json = RunJson(report, options);
    if (!options.noStatistics) {
        json["statisticsPages"] = report.statisticsPages;
        json["before"] = report.before.Json();
        json["background"] = report.background.Json();
        json["after"] = report.after.Json();
        json["bits"] = report.bits.Json();
        json["perPage"] = nlohmann::json::array();
        for (const TCorrectionReport::TMeasured& page : report.measured)
            json["perPage"].push_back({{"input", page.input},
                                       {"page", page.page},
                                       {"before", page.before.Json()},
                                       {"after", page.after.Json()}});
    }
    return json;
}

void PrintStatistics(const TCorrectionReport& report, const TCorrectOptions& options)
{
    if (report.statisticsPages < report.pages)
        std::cout << "Statistics of " << report.statisticsPages << " of these pages: of the first "
                  << TStatisticsSample::kAlways / 1'000'000 << " million pixels, then of every "
                  << TStatisticsSample::kEvery << "th page (--full-statistics: of all)\n";
    if (report.measured.size() > 1) {
        const TPageTable table(options.inputs);
        std::cout << table.HeadOfTwo();
        for (const TCorrectionReport::TMeasured& page : report.measured)
            std::cout << table.RowOfTwo(page.input, std::to_string(page.page), page.before, page.after);
        std::cout << "These " << Counted(report.measured.size(), "page") << " together:\n";
    }
    if (!report.bits.Text().empty())
        std::cout << "The images: " << report.bits.Text() << '\n';
    std::cout << StatisticsTable({"before", "background", "after"},
                                 {report.before.Figures(), report.background.Figures(), report.after.Figures()});
}

} // namespace

void AddWarnings(TCorrectionReport& report, const TCorrectOptions& options, double factor)
{
    if (factor > 1.001) // what a shutter adds is no guess
        report.warnings.push_back(fmt::format("the background is scaled up by {:.4g}, and its noise{} with it; dark "
                                              "frames of the images' own exposure, or "
                                              "a longer one, need no guess",
                                              factor,
                                              options.bias.empty() ? ", and the camera's offset (see --bias)," : ""));
    const auto zeros = [](const TSeriesStatistics& series) {
        return static_cast<double>(series.Histogram().CountOf(0));
    };
    const auto all = static_cast<double>(report.after.Histogram().Count());
    const double percent = all > 0 ? 100 * (zeros(report.after) - zeros(report.before)) / all : 0;
    if (percent > options.clippedPercent)
        report.warnings.push_back(
            fmt::format("{:.3g} % of the pixels were cut off at zero: {}", percent,
                        percent > 50 ? "does the correction belong to these images?"
                                     : "what lay below is lost, and the mean is too high; --pedestal keeps it"));
}

void PrintReport(const TCorrectionReport& report, const TCorrectOptions& options)
{
    if (options.json) {
        std::cout << JsonText(ReportJson(report, options));
        return;
    }
    std::cout << "Corrected ";
    if (options.IsBatch()) {
        const std::size_t all = report.files.size() + report.failures.size();
        std::cout << (report.failures.empty() ? std::string() : std::to_string(report.files.size()) + " of ")
                  << Counted(all, "file") << ", ";
    }
    std::cout << Counted(report.pages, "page") << " of " << report.size.Text() << " pixels (" << report.conditions
              << ", level " << options.levelPercent << " %) with " << report.what << ": " << options.output << '\n';
    PrintNotes(report.notes);
    if (!options.noStatistics)
        PrintStatistics(report, options);
    if (!report.picture.empty())
        PrintPicture("Picture of the first page: ", report.picture);
    PrintWarnings(report.warnings);
}

} // namespace workbench
