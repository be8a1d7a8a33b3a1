#include "report/ReportData.h"

#include "base/Clock.h"
#include "base/TProgress.h"
#include "calibration/SteadyRead.h"
#include "report/CrossCheck.h"
#include "report/DarkStacks.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace workbench {

namespace {

constexpr int kShape = 1; // of the data; counted up when something that is there changes its meaning or goes

// Characters of all pictures together: with the rest, a page of ten corrections stays below 5 MB.
constexpr std::size_t kPictureText = 3600000;

void AddCorrections(TCorrectionSet& set, const TReportRequest& request, nlohmann::json& report)
{
    const std::size_t count = set.Keys().size();
    const std::size_t pictures = count + 2 * request.against.images.size();
    const std::size_t text = request.pictures ? std::max<std::size_t>(kPictureText / pictures, 2000) : 0;
    std::vector<TCorrectionFigures> figures(count);
    TProgress progress("Corrections", count);
    report["scaling"] = CrossCheck(set, figures, [&](std::size_t index, const TImage& stored) {
        figures[index] = FiguresOf(set, index, stored, text);
        progress.Step();
    });
    report["against"] = AgainstJson(set, figures, request.against, text);
    TMark worst = TMark::Good;
    std::vector<std::string> reasons;
    report["corrections"] = nlohmann::json::array();
    for (TCorrectionFigures& one : figures) {
        one.json["mark"] = MarkText(one.mark);
        worst = std::max(worst, one.mark);
        report["corrections"].push_back(std::move(one.json));
    }
    report["mark"] = MarkText(worst);
}

std::string Field(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char character : text)
        quoted += character == '"' ? std::string("\"\"") : std::string(1, character);
    return quoted + '"';
}

} // namespace

nlohmann::json MakeReport(const TContext& context, const TReportRequest& request)
{
    nlohmann::json report{{"format", "qxbackground-report"},
                          {"version", kShape},
                          {"tool", "qxbackground " + request.toolVersion},
                          {"made", TimeText()},
                          {"thresholds", ThresholdsJson()},
                          {"darks", nullptr}};
    const auto take = [&] {
        TCorrectionSet set(context, request.source, request.groups);
        report["source"] = {{"path", request.source},
                            {"kind", set.Store() ? "store" : "file"},
                            {"groupingNames", set.Store() ? set.Store()->names : std::vector<std::string>()}};
        AddCorrections(set, request, report);
    };
    // A store is read group by group as its corrections are compared; a file at once.
    if (IsCalibrationFile(request.source))
        take();
    else
        ReadStoreSteadily(StoreOf(request.source, request.groups), take);
    if (!request.darks.empty())
        report["darks"] = DarkFigures(request.darks, request.against.input, request.darkExposureSeconds);
    for (const nlohmann::json& stack :
         report["darks"].is_null() ? nlohmann::json::array() : report["darks"]["stacks"]) {
        if (!stack["remarks"].empty() && report["mark"] == MarkText(TMark::Good))
            report["mark"] = MarkText(TMark::Look);
    }
    return report;
}

std::string ReportCsv(const nlohmann::json& report)
{
    std::string text = "key,mark,width,height,exposure_s,intensity_percent,minimum,average,maximum,mean,median,"
                       "standard_deviation,row_pattern,column_pattern,hot,dead,reasons\n";
    for (const nlohmann::json& one : report["corrections"]) {
        const nlohmann::json& statistics = one["statistics"];
        std::string reasons;
        for (const nlohmann::json& check : one["checks"]) {
            const auto& reason = check["reason"].get_ref<const std::string&>();
            reasons += (reasons.empty() || reason.empty() ? "" : "; ") + reason;
        }
        text += Field(one["key"].get<std::string>()) + ',' + one["mark"].get<std::string>();
        for (const char* const name : {"width", "height", "exposureSeconds", "lightIntensityPercent"})
            text += ',' + one[name].dump();
        for (const char* const name :
             {"minimum", "average", "maximum", "mean", "median", "standardDeviation", "rowPattern", "columnPattern"})
            text += ',' + statistics[name].dump();
        text += ',' + one["unusual"]["hot"].dump() + ',' + one["unusual"]["dead"].dump() + ',' + Field(reasons) + '\n';
    }
    return text;
}

} // namespace workbench
