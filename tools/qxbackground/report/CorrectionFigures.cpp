#include "report/CorrectionFigures.h"

#include "images/THistogram.h"
#include "images/TSeriesStatistics.h"
#include "report/Figures.h"
#include "report/PictureData.h"

#include <cmath>

namespace workbench {

namespace {

double Percent(std::uint64_t part, std::uint64_t whole)
{
    return whole == 0 ? 0 : 100 * static_cast<double>(part) / static_cast<double>(whole);
}

} // namespace

void TCorrectionFigures::Check(const std::string& name, double value, const std::string& details)
{
    json["checks"].push_back(CheckJson(name, value, mark, details));
}

TCorrectionFigures FiguresOf(TCorrectionSet& set, std::size_t index, const TImage& stored, std::size_t pictureText)
{
    TCorrectionFigures figures;
    figures.reference = set.Reference();
    figures.size = stored.size;
    THistogram histogram;
    histogram.Add(stored);
    figures.mean = histogram.Mean();
    const QX_KRLSDK::TBackgroundCorrection::TStatistics library = set.Statistics();
    const TUnusualPixels unusual = FindUnusualPixels(stored);
    const int black = histogram.Percentile(0.005), white = histogram.Percentile(0.995);
    nlohmann::json& json = figures.json;
    json = {{"key", set.Keys()[index]},
            {"file", set.FileOf(index)},
            {"width", stored.size.width},
            {"height", stored.size.height},
            {"exposureSeconds", figures.reference.exposureSeconds},
            {"lightIntensityPercent", figures.reference.lightIntensityPercent},
            {"statistics",
             {{"minimum", library.minimum},
              {"average", library.average},
              {"maximum", library.maximum},
              {"mean", histogram.Mean()},
              {"median", histogram.Median()},
              {"standardDeviation", histogram.StandardDeviation()},
              {"spread", histogram.RobustSpread()},
              {"rowPattern", RowPattern(stored)},
              {"columnPattern", ColumnPattern(stored)},
              {"pixelsAtZero", histogram.CountOf(0)},
              {"pixelsAt65535", histogram.CountOf(65535)}}},
            {"histogram", HistogramJson(histogram)},
            {"profiles", ProfilesJson(stored)},
            {"unusual", UnusualJson(unusual)},
            {"checks", nlohmann::json::array()}};
    const std::uint64_t pixels = histogram.Count();
    const double product = figures.Product();
    figures.Check("conditions", std::isfinite(product) && product > 0 ? 0 : 1);
    figures.Check("saturated", Percent(histogram.CountOf(65535), pixels));
    figures.Check("zero", Percent(histogram.CountOf(0), pixels));
    figures.Check("flat", pixels > 1 && library.minimum == library.maximum ? 1 : 0);
    figures.Check("hot", Percent(unusual.hot, pixels));
    figures.Check("dead", Percent(unusual.dead, pixels));
    if (pictureText > 0) {
        const TSampling whole = SampleWhole({&stored}, pictureText);
        json["picture"] = PictureJson(stored, whole);
        json["picture"]["black"] = black;
        json["picture"]["white"] = std::max(white, black + 1);
        if (whole.step > 1) { // single pixels are to be seen somewhere: around the hottest one
            const bool some = !unusual.hottest.empty();
            const int x = some ? unusual.hottest[0].x : stored.size.width / 2;
            const int y = some ? unusual.hottest[0].y : stored.size.height / 2;
            for (int side = 160; side >= 20; side /= 2) {
                nlohmann::json detail = PictureJson(stored, SampleAround(stored.size, x, y, side));
                if (detail["data"].get_ref<const std::string&>().size() > pictureText / 2)
                    continue;
                json["detail"] = std::move(detail);
                break;
            }
        }
    }
    return figures;
}

} // namespace workbench
