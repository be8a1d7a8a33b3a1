// qxbackground show: one stored correction in numbers, as a histogram and as a picture.
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "images/Contrast.h"
#include "images/TPicture.h"
#include "images/TSeriesStatistics.h"
#include "verbs/CorrectionRun.h"
#include "verbs/ShowCorrection.h"
#include "verbs/Verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TShowFileOptions {
    std::string file;
    TShowOptions show;
};

// Bars over the values between the 0.1st and the 99.9th percentile; what lies outside is counted in words.
std::string HistogramText(const THistogram& histogram)
{
    constexpr int kBars = 20;
    constexpr std::uint64_t kLongestBar = 50;
    const int low = histogram.Percentile(0.001), high = histogram.Percentile(0.999);
    const int step = std::max(1, (high - low + kBars) / kBars);
    std::vector<std::uint64_t> bars;
    std::uint64_t most = 1, inside = 0;
    for (int from = low; from <= high; from += step) {
        std::uint64_t count = 0;
        for (int value = from; value < std::min(from + step, 65536); ++value)
            count += histogram.CountOf(static_cast<std::uint16_t>(value));
        bars.push_back(count);
        most = std::max(most, count);
        inside += count;
    }
    std::string text;
    for (std::size_t bar = 0; bar < bars.size(); ++bar) {
        const int from = low + static_cast<int>(bar) * step;
        const std::uint64_t length = bars[bar] == 0 ? 0 : std::max<std::uint64_t>(1, bars[bar] * kLongestBar / most);
        text += fmt::format("  {:5} ... {:5}  {:10} {}\n", from, std::min(from + step - 1, 65535), bars[bar],
                            std::string(static_cast<std::size_t>(length), '#'));
    }
    return text + fmt::format("  outside          {:10}\n", histogram.Count() - inside);
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
    statistics.Add(background);
    const TConditions conditions{static_cast<double>(reference.exposureSeconds),
                                 static_cast<double>(reference.lightIntensityPercent)};
    std::cout << "'" << Printable(*object.ActiveKey()) << "' in " << file << ": " << background.size.Text()
              << " pixels, taken at " << conditions.Text() << "\n"
              << StatisticsTable({"background"}, {&statistics}) << HistogramText(statistics.Histogram());
    if (!options.picture.empty()) {
        const TStretch stretch = StretchOf(background);
        WritePng(options.picture, Render(background, stretch), ExistingFor(options.overwrite));
        std::cout << "Picture: " << options.picture << " (black " << stretch.black << ", white " << stretch.white
                  << " ADU)\n";
    }
}

void AddShowOptions(TVerb& verb, TShowOptions& options)
{
    verb.add_option("--key", options.key, "Which correction (letter case ignored)")->required();
    verb.Creates(TPathKind::Picture, verb.add_option("-o,--output", options.picture, "Write a PNG picture of it"),
                 options.overwrite);
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
