#ifndef QXBACKGROUND_REPORT_AGAINST_H
#define QXBACKGROUND_REPORT_AGAINST_H

#include "images/TInputOptions.h"
#include "report/CorrectionFigures.h"
#include "report/TCorrectionSet.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <vector>

namespace workbench {

// Which images are corrected for the report, and how.
struct TAgainstOptions {
    std::vector<std::string> images; // the first page of each
    std::string key;                 // empty: the correction of the image's size whose conditions are nearest
    std::optional<double> exposureSeconds, lightIntensityPercent; // where the image does not say, or is not believed
    TInputOptions input;
};

// What the corrections make of images: before, after, how much was cut off at zero, and the pixels with which the page
// corrects them anew at any level.
nlohmann::json AgainstJson(TCorrectionSet& set, const std::vector<TCorrectionFigures>& figures,
                           const TAgainstOptions& options, std::size_t pictureText);

} // namespace workbench

#endif
