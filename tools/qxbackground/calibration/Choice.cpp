#include "calibration/Choice.h"

#include "base/TToolError.h"
#include "base/Wording.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>
#include <utility>

namespace workbench {

namespace {

// References are kept in single precision.
bool IsSame(double one, double other)
{
    return std::abs(one - other) <= 1e-5 * std::max(std::abs(one), std::abs(other));
}

double ProductOf(const TStoredCorrection& correction)
{
    return static_cast<double>(correction.exposureSeconds) * static_cast<double>(correction.lightIntensityPercent);
}

bool HasSize(const TStoredCorrection& correction, const TWantedCorrection& wanted)
{
    return wanted.mayBeLarger ? correction.width >= wanted.width && correction.height >= wanted.height
                              : correction.width == wanted.width && correction.height == wanted.height;
}

using TCandidates = std::vector<const TStoredCorrection*>;

TCandidates OfSize(const std::string& file, const std::vector<TStoredCorrection>& corrections,
                   const TWantedCorrection& wanted)
{
    TCandidates candidates;
    std::set<std::string> sizes;
    for (const TStoredCorrection& correction : corrections) {
        sizes.insert(fmt::format("{} x {}", correction.width, correction.height));
        // Without an exposure or intensity of its own nothing can be scaled.
        if (HasSize(correction, wanted) && ProductOf(correction) > 0 && std::isfinite(ProductOf(correction)))
            candidates.push_back(&correction);
    }
    if (!candidates.empty())
        return candidates;
    std::string has;
    for (const std::string& size : sizes)
        has += (has.empty() ? "" : ", ") + size;
    throw TToolError(file,
                     fmt::format("has no correction for images of {} x {} pixels; {}", wanted.width, wanted.height,
                                 has.empty() ? std::string("it is empty") : "its corrections are of " + has));
}

// Those of `candidates` whose product is as that of the first one.
TCandidates AlikeFirst(const TCandidates& candidates)
{
    TCandidates alike;
    for (const TStoredCorrection* candidate : candidates) {
        if (IsSame(ProductOf(*candidate), ProductOf(*candidates.front())))
            alike.push_back(candidate);
    }
    return alike;
}

} // namespace

TChoice ChooseCorrection(const std::string& file, const std::vector<TStoredCorrection>& corrections,
                         const TWantedCorrection& wanted)
{
    TCandidates candidates = OfSize(file, corrections, wanted);
    const double product = wanted.exposureSeconds * wanted.lightIntensityPercent;
    // Exact ones first, then those that are scaled down, then the others; the nearest first within each.
    const auto rank = [product](const TStoredCorrection* candidate) {
        const double factor = product / ProductOf(*candidate);
        const int kind = IsSame(factor, 1) ? 0 : factor < 1 ? 1 : 2;
        return std::pair(kind, kind == 0 ? 0.0 : std::abs(std::log(factor)));
    };
    std::sort(candidates.begin(), candidates.end(), [&](const auto* one, const auto* other) {
        return std::pair(rank(one), one) < std::pair(rank(other), other); // alike: as they stand in the file
    });
    candidates = AlikeFirst(candidates);
    const auto hasExposure = [&](const TStoredCorrection* candidate) {
        return IsSame(static_cast<double>(candidate->exposureSeconds), wanted.exposureSeconds);
    };
    if (std::any_of(candidates.begin(), candidates.end(), hasExposure))
        candidates.erase(std::remove_if(candidates.begin(), candidates.end(), std::not_fn(hasExposure)),
                         candidates.end());
    const TStoredCorrection& chosen = *candidates.front();
    const std::string conditions = fmt::format("{:g} s, {:g} %", chosen.exposureSeconds, chosen.lightIntensityPercent);
    if (candidates.size() > 1)
        throw TToolError(file, fmt::format("'{}' and '{}' are of the same {} and would do alike; say which by --key",
                                           Printable(chosen.key), Printable(candidates[1]->key), conditions));
    const int kind = rank(&chosen).first;
    return {chosen.key, fmt::format("Chose '{}' ({}): {}", Printable(chosen.key), conditions,
                                    kind == 0   ? "exactly what the images need"
                                    : kind == 1 ? fmt::format("the nearest that is scaled down, by {:.4g}",
                                                              product / ProductOf(chosen))
                                                : fmt::format("none is scaled down; the nearest, scaled up by {:.4g}",
                                                              product / ProductOf(chosen)))};
}

} // namespace workbench
