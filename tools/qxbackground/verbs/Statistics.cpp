// qxbackground statistics: what the correcting verbs print about their images, of any files.
#include "base/JsonText.h"
#include "images/TImageReader.h"
#include "images/TSeriesStatistics.h"
#include "images/TSignificantBits.h"
#include "verbs/Options.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TStatisticsOptions {
    std::vector<std::string> files;
    TInputOptions input;
    bool json = false;
};

void RunStatistics(const TStatisticsOptions& options)
{
    nlohmann::json report = nlohmann::json::array();
    for (const std::string& path : options.files) {
        TSeriesStatistics statistics;
        TSignificantBits bits;
        const std::unique_ptr<TImageReader> reader = OpenImage(path, options.input);
        TImage image;
        while (reader->NextPage()) {
            reader->Read(image);
            statistics.Add(image);
            bits.Add(image, reader->Metadata());
        }
        if (options.json) {
            report.push_back(statistics.Json());
            report.back()["file"] = path;
            report.back()["bits"] = {{"used", bits.Used()}, {"alwaysZeroBelow", bits.LeftAlignedBy()}};
        } else {
            std::cout << path << ", pages: " << reader->Page() << '\n'
                      << (bits.Text().empty() ? "" : "  " + bits.Text() + "\n")
                      << StatisticsTable({"all pages"}, {&statistics});
        }
    }
    if (options.json)
        std::cout << JsonText(report);
}

} // namespace

void AddStatisticsVerb(TVerb& app)
{
    TVerb& verb = app.AddVerb("statistics", "Print the statistics of images");
    const auto options = std::make_shared<TStatisticsOptions>();
    AddFrames(verb, "images", options->files, "Images; all pages of a file count together")->required();
    AddInputOptions(verb, options->input);
    AddJsonOption(verb, options->json);
    verb.Run([options] { RunStatistics(*options); });
}

} // namespace workbench
