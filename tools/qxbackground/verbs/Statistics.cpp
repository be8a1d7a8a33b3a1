// qxbackground statistics: what the correcting verbs print about their images, of any files.
#include "base/JsonText.h"
#include "base/TProgress.h"
#include "base/Wording.h"
#include "images/TImageReader.h"
#include "images/TSeriesStatistics.h"
#include "images/TSignificantBits.h"
#include "verbs/Options.h"
#include "verbs/TPageTable.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <utility>

namespace workbench {

namespace {

struct TStatisticsOptions {
    std::vector<std::string> files;
    TInputOptions input;
    bool json = false;
};

struct TFileStatistics {
    TSeriesStatistics all;
    TSignificantBits bits;
    std::vector<TPageFigures> pages;
};

// Of one file, and into what is known of all files.
TFileStatistics Measured(const std::string& path, const TInputOptions& input, TFileStatistics& together)
{
    TFileStatistics file;
    const std::unique_ptr<TImageReader> reader = OpenImage(path, input);
    TImage image;
    while (reader->NextPage()) {
        reader->Read(image);
        file.pages.push_back(file.all.Add(image));
        const TPageMetadata metadata = reader->Metadata();
        file.bits.Add(image, metadata);
        together.bits.Add(image, metadata);
    }
    together.all.Add(file.all);
    return file;
}

nlohmann::json FileJson(const std::string& path, const TFileStatistics& file)
{
    nlohmann::json json = file.all.Json();
    json["file"] = path;
    json["bits"] = file.bits.Json();
    json["perPage"] = nlohmann::json::array();
    for (const TPageFigures& page : file.pages)
        json["perPage"].push_back(page.Json());
    return json;
}

void PrintLines(const TPageTable& table, const std::string& path, const TFileStatistics& file, bool isAlone)
{
    for (std::size_t page = 0; page < file.pages.size(); ++page)
        std::cout << table.Row(path, std::to_string(page + 1), file.pages[page]);
    if (file.pages.size() > 1 && !isAlone)
        std::cout << table.Row(path, "all", file.all.Figures());
}

void RunStatistics(const TStatisticsOptions& options)
{
    nlohmann::json files = nlohmann::json::array();
    TFileStatistics together;
    const TPageTable table(options.files);
    const bool isAlone = options.files.size() == 1;
    for (const std::string& path : options.files) {
        const TFileStatistics file = Measured(path, options.input, together);
        if (options.json) {
            files.push_back(FileJson(path, file));
        } else if (!isAlone || file.pages.size() > 1) {
            if (&path == &options.files.front())
                std::cout << table.Head();
            PrintLines(table, path, file, isAlone);
        }
        ThrowIfInterrupted();
    }
    if (options.json) {
        nlohmann::json summary = together.all.Json();
        summary["bits"] = together.bits.Json();
        summary["pages"] = together.all.Pages();
        std::cout << JsonText({{"files", std::move(files)}, {"summary", std::move(summary)}});
        return;
    }
    std::cout << (isAlone ? options.files.front() : "All " + Counted(options.files.size(), "file"))
              << ", pages: " << together.all.Pages() << '\n'
              << (together.bits.Text().empty() ? "" : "  " + together.bits.Text() + "\n")
              << StatisticsTable({"all pages"}, {together.all.Figures()});
}

} // namespace

void AddStatisticsVerb(TVerb& app)
{
    TVerb& verb = app.AddVerb("statistics", "Print the statistics of images");
    const auto options = std::make_shared<TStatisticsOptions>();
    AddFrames(verb, "images", options->files, "Images; each page has its figures, and all pages together")->required();
    AddInputOptions(verb, options->input);
    AddJsonOption(verb, options->json);
    verb.Run([options] { RunStatistics(*options); });
}

} // namespace workbench
