#include "calibration/Choice.h"

#include "base/TToolError.h"
#include "base/Wording.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>
#include <tuple>
#include <utility>

namespace workbench {

namespace {

// A shutter may be off by so much and yet give what was set.
constexpr double kShutter = 1e-3;

// References are kept in single precision.
bool IsSame(double one, double other)
{
    return std::abs(one - other) <= 1e-5 * std::max(std::abs(one), std::abs(other));
}

bool HasSize(const TStoredCorrection& correction, const TWantedCorrection& wanted)
{
    return wanted.mayBeLarger ? correction.width >= wanted.width && correction.height >= wanted.height
                              : correction.width == wanted.width && correction.height == wanted.height;
}

using TCandidates = std::vector<const TCandidate*>;

TCandidates OfSize(const std::string& place, const std::vector<TCandidate>& all, const TWantedCorrection& wanted)
{
    TCandidates candidates;
    std::set<std::string> sizes;
    for (const TCandidate& candidate : all) {
        const TStoredCorrection& correction = candidate.correction;
        sizes.insert(fmt::format("{} x {}", correction.width, correction.height));
        // Without an exposure or intensity of its own nothing can be scaled.
        if (HasSize(correction, wanted) && correction.Product() > 0 && std::isfinite(correction.Product()))
            candidates.push_back(&candidate);
    }
    if (!candidates.empty())
        return candidates;
    std::string has;
    for (const std::string& size : sizes)
        has += (has.empty() ? "" : ", ") + size;
    throw TToolError(place,
                     fmt::format("has no correction for images of {} x {} pixels; {}", wanted.width, wanted.height,
                                 has.empty() ? std::string("it is empty") : "its corrections are of " + has));
}

// Those of `candidates` that would do as well as the first one.
TCandidates AlikeFirst(const TCandidates& candidates)
{
    TCandidates alike;
    const TCandidate& first = *candidates.front();
    for (const TCandidate* candidate : candidates) {
        if (IsSame(candidate->correction.Product(), first.correction.Product()) &&
            std::abs(std::abs(candidate->degreesOff) - std::abs(first.degreesOff)) < 1e-6)
            alike.push_back(candidate);
    }
    return alike;
}

std::string ReasonText(int kind, double factor, double degreesOff)
{
    std::string text = kind == 0   ? "exactly what the images need"
                       : kind == 1 ? fmt::format("the nearest that is scaled down, by {:.4g}", factor)
                                   : fmt::format("none is scaled down; the nearest, scaled up by {:.4g}", factor);
    if (std::abs(degreesOff) >= 0.05)
        text += fmt::format("; its sensor was {:.1f} C {}", std::abs(degreesOff), degreesOff > 0 ? "warmer" : "colder");
    return text;
}

} // namespace

std::vector<TCandidate> CandidatesOf(const std::string& file, const std::vector<TStoredCorrection>& corrections)
{
    std::vector<TCandidate> candidates;
    for (const TStoredCorrection& correction : corrections)
        candidates.push_back({correction, file, 0});
    return candidates;
}

TChoice ChooseCorrection(const std::string& place, const std::vector<TCandidate>& all, const TWantedCorrection& wanted)
{
    TCandidates candidates = OfSize(place, all, wanted);
    const double product = wanted.exposureSeconds * wanted.lightIntensityPercent;
    const auto factorOf = [product](const TCandidate& candidate) { return product / candidate.correction.Product(); };
    // Exact ones first, then those that are scaled down, then the others; the nearest first within each.
    const auto rank = [&](const TCandidate* candidate) {
        const double factor = factorOf(*candidate);
        const int kind = std::abs(factor - 1) <= kShutter ? 0 : factor < 1 ? 1 : 2;
        return std::tuple(kind, std::abs(candidate->degreesOff), std::abs(std::log(factor)));
    };
    std::sort(candidates.begin(), candidates.end(), [&](const auto* one, const auto* other) {
        return std::pair(rank(one), one) < std::pair(rank(other), other); // alike: as they stand in the file
    });
    candidates = AlikeFirst(candidates);
    const auto hasExposure = [&](const TCandidate* candidate) {
        return IsSame(static_cast<double>(candidate->correction.exposureSeconds), wanted.exposureSeconds);
    };
    if (std::any_of(candidates.begin(), candidates.end(), hasExposure))
        candidates.erase(std::remove_if(candidates.begin(), candidates.end(), std::not_fn(hasExposure)),
                         candidates.end());
    const TCandidate& chosen = *candidates.front();
    const std::string key = Printable(chosen.correction.key);
    const std::string conditions =
        fmt::format("{:g} s, {:g} %", chosen.correction.exposureSeconds, chosen.correction.lightIntensityPercent);
    if (candidates.size() > 1)
        throw TToolError(place, fmt::format("'{}' and '{}' are of the same {} and would do alike; say which by --key",
                                            key, Printable(candidates[1]->correction.key), conditions));
    return {&chosen, fmt::format("Chose '{}' ({}): {}", key, conditions,
                                 ReasonText(std::get<0>(rank(&chosen)), factorOf(chosen), chosen.degreesOff))};
}

} // namespace workbench
