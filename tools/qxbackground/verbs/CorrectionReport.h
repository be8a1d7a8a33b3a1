#ifndef QXBACKGROUND_VERBS_CORRECTIONREPORT_H
#define QXBACKGROUND_VERBS_CORRECTIONREPORT_H

#include "images/TImage.h"
#include "images/TSeriesStatistics.h"
#include "images/TSignificantBits.h"
#include "verbs/Options.h"
#include "verbs/TCorrectionPlan.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// What a correcting run did.
struct TCorrectionReport {
    struct TFile {
        std::string input, output;
    };
    struct TFailure {
        std::string input, why;
    };
    // A page that counts in the statistics.
    struct TMeasured {
        std::string input;
        unsigned page = 0;
        TPageFigures before, after;
    };

    std::vector<TUsedCorrection> corrections;
    std::string what;       // the correction, in words
    std::string conditions; // of the images
    std::vector<std::string> notes, warnings;
    TSize size;
    std::uint64_t pages = 0;           // corrected and written
    std::uint64_t statisticsPages = 0; // of them in the statistics
    std::vector<TFile> files;          // one for each input that is done; none where all pages went into one file
    std::vector<TFailure> failures;    // of inputs that are not
    std::vector<TMeasured> measured;
    TSeriesStatistics before, background, after;
    TSignificantBits bits;            // of the images before
    std::vector<std::string> picture; // what it shows, in words
};

// Adds lines about what does not look right: a background that is scaled up by `factor` (or less), a result that is cut
// off.
void AddWarnings(TCorrectionReport& report, const TCorrectOptions& options, double factor);

// Without figures: which files, what is to be told.
nlohmann::json RunJson(const TCorrectionReport& report, const TCorrectOptions& options);

void PrintReport(const TCorrectionReport& report, const TCorrectOptions& options);

} // namespace workbench

#endif
