#include "report/CrossCheck.h"

#include "base/Wording.h"
#include "report/Figures.h"
#include "report/LineFit.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>

namespace workbench {

namespace {

// One correction scaled to the conditions of another.
struct TPair {
    std::size_t from = 0, to = 0;
    double factor = 0;
    TResidual residual;
    TMark mark = TMark::Good;
    double timesLimit = 0; // the error, as a multiple of what is still good
};

struct TFitted {
    TSize size;
    std::vector<std::size_t> members;
    std::optional<TLineFit> line;
};

// A line through the corrections of each size: of another size is another camera, or another binning.
std::vector<TFitted> FitLines(const std::vector<TCorrectionFigures>& figures)
{
    std::vector<TFitted> fits;
    for (std::size_t index = 0; index < figures.size(); ++index) {
        const double product = figures[index].Product();
        if (!std::isfinite(product) || product <= 0)
            continue;
        auto fit =
            std::find_if(fits.begin(), fits.end(), [&](const TFitted& one) { return one.size == figures[index].size; });
        if (fit == fits.end())
            fit = fits.insert(fits.end(), {figures[index].size, {}, {}});
        fit->members.push_back(index);
    }
    for (TFitted& fit : fits) {
        std::vector<TFitPoint> points;
        for (const std::size_t member : fit.members)
            points.push_back({figures[member].Product(), figures[member].mean, 0});
        fit.line = FitLine(points);
    }
    return fits;
}

nlohmann::json FitsJson(const std::vector<TFitted>& fits)
{
    nlohmann::json json = nlohmann::json::array();
    for (const TFitted& fit : fits) {
        json.push_back({{"width", fit.size.width}, {"height", fit.size.height}, {"corrections", fit.members}});
        if (fit.line)
            json.back()["line"] = {{"offset", fit.line->offset},
                                   {"offsetError", OptionalJson(fit.line->offsetError)},
                                   {"slope", fit.line->slope},
                                   {"slopeError", OptionalJson(fit.line->slopeError)}};
        else
            json.back()["line"] = nullptr;
    }
    return json;
}

TPair Compare(TCorrectionSet& set, std::size_t from, std::size_t to, TImage& stored, double targetMean, double factor)
{
    TPair pair;
    pair.from = from;
    pair.to = to;
    pair.factor = factor;
    set.LookAtBackground(stored,
                         [&](const std::uint16_t* background) { pair.residual = ResidualOf(stored, background); });
    const TScalingLimits limits = ScalingLimits(targetMean);
    const double error = std::abs(pair.residual.mean);
    pair.mark = error > limits.bad ? TMark::Bad : error > limits.look ? TMark::Look : TMark::Good;
    pair.timesLimit = error / limits.look;
    return pair;
}

// As a person would say it: what is left, and where that probably comes from.
std::string Sentence(const TPair& pair, const TCorrectionSet& set, const std::vector<TCorrectionFigures>& figures,
                     const std::vector<TFitted>& fits)
{
    const double left = pair.residual.mean;
    std::string text = fmt::format("'{}' from '{}' (times {:.4g}) leaves {:.3g} ADU", Printable(set.Keys()[pair.to]),
                                   Printable(set.Keys()[pair.from]), pair.factor, left);
    const auto fit = std::find_if(fits.begin(), fits.end(),
                                  [&](const TFitted& one) { return one.size == figures[pair.to].size && one.line; });
    const TReference& target = figures[pair.to].reference;
    const std::string remedy =
        fmt::format("take dark frames at {:g} s, {:g} %", target.exposureSeconds, target.lightIntensityPercent);
    if (fit != fits.end()) {
        // What an offset that does not grow with exposure leaves when it is scaled along.
        const double expected = fit->line->offset * (1 - pair.factor);
        if (std::abs(left - expected) <= std::max(1.0, 0.25 * std::abs(left)))
            return text + fmt::format(": the camera's offset of {:.3g} ADU is scaled as well, though it does not grow "
                                      "with exposure; {}.",
                                      fit->line->offset, remedy);
    }
    return text +
           ": the background does not grow in proportion to exposure and intensity (another temperature, or "
           "light on the sensor?); " +
           remedy + ".";
}

nlohmann::json SentencesJson(std::vector<TPair> pairs, const TCorrectionSet& set,
                             const std::vector<TCorrectionFigures>& figures, const std::vector<TFitted>& fits)
{
    constexpr std::size_t kMost = 3;
    nlohmann::json sentences = nlohmann::json::array();
    const auto count = [&pairs](TMark mark) {
        return std::count_if(pairs.begin(), pairs.end(), [mark](const TPair& pair) { return pair.mark == mark; });
    };
    if (pairs.empty()) {
        sentences.push_back("There are no two corrections of one size to be compared.");
        return sentences;
    }
    const auto good = count(TMark::Good), look = count(TMark::Look), bad = count(TMark::Bad);
    sentences.push_back(
        good == static_cast<std::ptrdiff_t>(pairs.size())
            ? fmt::format("Scaling is safe between all of these corrections: none of the {} errors is above its limit.",
                          pairs.size())
            : fmt::format("Of {} ways to scale one correction to another's conditions {} are safe, {} need a look, {} "
                          "are bad.",
                          pairs.size(), good, look, bad));
    std::sort(pairs.begin(), pairs.end(), [](const TPair& one, const TPair& other) {
        return std::tie(other.timesLimit, one.to, one.from) < std::tie(one.timesLimit, other.to, other.from);
    });
    for (std::size_t at = 0; at < std::min(kMost, pairs.size()) && pairs[at].mark != TMark::Good; ++at)
        sentences.push_back(Sentence(pairs[at], set, figures, fits));
    return sentences;
}

} // namespace

nlohmann::json CrossCheck(TCorrectionSet& set, std::vector<TCorrectionFigures>& figures, const TTakeFigures& take)
{
    const std::size_t count = set.Keys().size();
    std::vector<TReference> references;
    std::vector<TSize> sizes;
    for (std::size_t index = 0; index < count; ++index) {
        sizes.push_back(set.Activate(index));
        references.push_back(set.Reference());
    }
    // All with all takes a time that grows with the square: of many, each is compared with some of the others.
    constexpr std::size_t kMostCompared = 64;
    const std::size_t stride = (count + kMostCompared - 1) / kMostCompared;
    std::vector<TPair> pairs;
    std::vector<std::vector<nlohmann::json>> cells(count, std::vector<nlohmann::json>(count));
    TImage stored;
    for (std::size_t to = 0; to < count; ++to) {
        set.Activate(to);
        set.CopyStored(stored); // the conditions are now those of this correction
        take(to, stored);
        for (std::size_t from = 0; from < count; ++from) {
            if (from == to || from % stride != to % stride || sizes[from] != sizes[to])
                continue;
            set.Activate(from);
            const auto product = [](const TReference& one) { return one.lightIntensityPercent * one.exposureSeconds; };
            const float factor = product(references[to]) / product(references[from]);
            const TPair pair = Compare(set, from, to, stored, figures[to].mean, static_cast<double>(factor));
            pairs.push_back(pair);
            cells[from][to] = {{"factor", pair.factor},
                               {"mean", pair.residual.mean},
                               {"spread", pair.residual.spread},
                               {"mark", MarkText(pair.mark)}};
        }
    }
    for (std::size_t index = 0; index < count; ++index) {
        const TPair* worst = nullptr;
        for (const TPair& pair : pairs) {
            if (pair.from == index && (worst == nullptr || pair.timesLimit > worst->timesLimit))
                worst = &pair;
        }
        figures[index].Check("scaling", worst == nullptr ? 0 : worst->timesLimit,
                             worst == nullptr
                                 ? std::string()
                                 : fmt::format("Scaled to '{}' it leaves {:.3g} ADU, above the limit of {:.3g} ADU: a "
                                               "correction of its own is needed there (see the cross-check).",
                                               Printable(set.Keys()[worst->to]), worst->residual.mean,
                                               ScalingLimits(figures[worst->to].mean).look));
    }
    const std::vector<TFitted> fits = FitLines(figures);
    return {{"fits", FitsJson(fits)},
            {"cross", cells},
            {"limits", {{"lookAdu", 1}, {"lookPercent", 1}, {"badAdu", 3}, {"badPercent", 5}}},
            {"sentences", SentencesJson(pairs, set, figures, fits)}};
}

} // namespace workbench
