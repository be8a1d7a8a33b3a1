#ifndef QXBACKGROUND_REPORT_REPORTDATA_H
#define QXBACKGROUND_REPORT_REPORTDATA_H

#include "calibration/TContext.h"
#include "report/Against.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace workbench {

struct TReportRequest {
    std::string source; // calibration file, base name or group file
    std::vector<std::string> groups;
    std::vector<std::string> darks;
    std::vector<double> darkExposureSeconds; // see DarkFigures
    TAgainstOptions against;                 // with how all frames are read
    bool pictures = false;                   // whether the data get pictures, for the page
    std::string toolVersion;
};

// All that the report says, in the shape that docs/report.md describes. Throws TToolError.
nlohmann::json MakeReport(const TContext& context, const TReportRequest& request);

// The corrections' figures as a table: one line each, behind one with the columns' names.
std::string ReportCsv(const nlohmann::json& report);

} // namespace workbench

#endif
