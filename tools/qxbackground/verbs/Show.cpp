// qxbackground show: one stored correction in numbers, as a histogram and as a picture.
#include "base/JsonText.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "images/TSeriesStatistics.h"
#include "verbs/CorrectionPicture.h"
#include "verbs/CorrectionRun.h"
#include "verbs/ShowCorrection.h"
#include "verbs/Verbs.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <vector>

namespace workbench {

namespace {

struct TShowFileOptions {
    std::string file;
    TShowOptions show;
};

struct TBar {
    int from = 0, to = 0; // both counted
    std::uint64_t pixels = 0;
};

// Over the values between the 0.1st and the 99.9th percentile.
std::vector<TBar> BarsOf(const THistogram& histogram)
{
    constexpr int kBars = 20;
    const int low = histogram.Percentile(0.001), high = histogram.Percentile(0.999);
    const int step = std::max(1, (high - low + kBars) / kBars);
    std::vector<TBar> bars;
    for (int from = low; from <= high; from += step) {
        TBar bar{from, std::min(from + step - 1, 65535), 0};
        for (int value = bar.from; value <= bar.to; ++value)
            bar.pixels += histogram.CountOf(static_cast<std::uint16_t>(value));
        bars.push_back(bar);
    }
    return bars;
}

// What lies outside of the bars is counted in words.
std::string HistogramText(const THistogram& histogram)
{
    constexpr std::uint64_t kLongestBar = 50;
    const std::vector<TBar> bars = BarsOf(histogram);
    std::uint64_t most = 1, inside = 0;
    for (const TBar& bar : bars) {
        most = std::max(most, bar.pixels);
        inside += bar.pixels;
    }
    std::string text = fmt::format("  {:<15}  {:>10}\n", "ADU", "pixels");
    for (const TBar& bar : bars) {
        const std::uint64_t length = bar.pixels == 0 ? 0 : std::max<std::uint64_t>(1, bar.pixels * kLongestBar / most);
        text += fmt::format("  {:5} ... {:5}  {:10} {}\n", bar.from, bar.to, bar.pixels,
                            std::string(static_cast<std::size_t>(length), '#'));
    }
    return text + fmt::format("  outside          {:10}\n", histogram.Count() - inside);
}

nlohmann::json HistogramJson(const THistogram& histogram)
{
    nlohmann::json list = nlohmann::json::array();
    for (const TBar& bar : BarsOf(histogram))
        list.push_back({{"from", bar.from}, {"to", bar.to}, {"pixels", bar.pixels}});
    return list;
}

void RunShow(const TContext& context, const TShowFileOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    const std::string about = options.file + ": key '" + options.show.key + "'";
    Call(about, [&] { object.SetActive(options.show.key); });
    ShowCorrection(object, options.file, options.show);
}

} // namespace

void ShowCorrection(QX_KRLSDK::TBackgroundCorrection& object, const std::string& file, const TShowOptions& options)
{
    TImage background;
    QX_KRLSDK::TBackgroundCorrection::TReference reference;
    Call(file + ": key '" + options.key + "'", [&] {
        reference = object.Reference();
        // At its own exposure and intensity the background is scaled by exactly 1.
        object.SetExposureAndIntensity(reference.exposureSeconds, reference.lightIntensityPercent);
        background = ScaledBackground(object);
    });
    TSeriesStatistics statistics;
    const TPageFigures figures = statistics.Add(background);
    const TConditions conditions{static_cast<double>(reference.exposureSeconds),
                                 static_cast<double>(reference.lightIntensityPercent)};
    if (options.json) {
        nlohmann::json json{{"file", file},
                            {"key", *object.ActiveKey()},
                            {"width", background.size.width},
                            {"height", background.size.height},
                            {"exposureSeconds", conditions.exposureSeconds},
                            {"lightIntensityPercent", conditions.lightIntensityPercent},
                            {"statistics", statistics.Json()},
                            {"histogram", HistogramJson(statistics.Histogram())}};
        if (!options.picture.empty()) {
            WritePicture(options.picture, "background, as it is stored", background, ExistingFor(options.overwrite));
            json["picture"] = options.picture;
        }
        std::cout << JsonText(json);
        return;
    }
    std::cout << "'" << Printable(*object.ActiveKey()) << "' in " << file << ": " << background.size.Text()
              << " pixels, taken at " << conditions.Text() << "\n"
              << StatisticsTable({"background"}, {figures}) << HistogramText(statistics.Histogram());
    if (!options.picture.empty())
        PrintPicture("Picture: ", WritePicture(options.picture, "background, as it is stored", background,
                                               ExistingFor(options.overwrite)));
}

void AddShowOptions(TVerb& verb, TShowOptions& options)
{
    AddKeyOption(verb, options.key)->required();
    // "-o", as it was called first, is still understood.
    verb.Creates(TPathKind::Picture,
                 verb.add_option("--picture,-o,--output", options.picture,
                                 "Write a PNG picture of it, with a scale of its values"),
                 options.overwrite);
    AddJsonOption(verb, options.json);
}

void AddShowVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("show", "Show one stored correction: statistics, histogram, picture");
    const auto options = std::make_shared<TShowFileOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    AddShowOptions(verb, options->show);
    verb.Run([&context, options] { RunShow(context, *options); });
}

} // namespace workbench
