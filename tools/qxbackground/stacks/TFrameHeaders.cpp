#include "stacks/TFrameHeaders.h"

#include "base/TToolError.h"
#include "base/Wording.h"

#include <fmt/format.h>

#include <algorithm>

namespace workbench {

namespace {

// Further apart, the dark current of the frames is another one by some 10 %.
constexpr double kSteadyCelsius = 1;

bool SaysMore(const TShot& shot, const TShot& known)
{
    return (shot.SaidSeconds() && !known.SaidSeconds()) || (shot.gain && !known.gain) ||
           (shot.HasBinning() && !known.HasBinning()) || (shot.bits && !known.bits);
}

void TakeExposure(const TShot& from, TShot& to)
{
    to.exposureSeconds = from.exposureSeconds;
    to.isUnexposed = from.isUnexposed;
}

void TakeFirst(const std::string& said, std::string& known)
{
    if (known.empty())
        known = said;
}

} // namespace

void TFrameHeaders::Add(const std::string& path, unsigned page, const TPageMetadata& metadata)
{
    const TNamed frame{Printable(path) + " page " + std::to_string(page), ShotOf(metadata)};
    const bool isGiven = demands.exposureSeconds > 0;
    if (++frames == 1 && !demands.exposureOption.empty() && !isGiven && !frame.shot.exposureSeconds)
        throw TToolError(path, page, frame.shot.WithoutExposure(demands.exposureOption));
    TShot known;
    for (const TNamed& first : firsts) {
        for (const TShotDifference& difference : Differences(frame.shot, first.shot)) {
            const bool isAllowed = demands.mayDiffer || (isGiven && difference.what == "exposure");
            if (!isAllowed)
                throw TToolError(path, page,
                                 fmt::format("was taken with {0} {1}, {3} with {0} {2}; they belong in different "
                                             "corrections (--mixed takes them together)",
                                             difference.what, difference.one, difference.other, first.name));
            const bool isKnown = std::any_of(disagreements.begin(), disagreements.end(), [&](const TDisagreement& one) {
                return one.difference.what == difference.what;
            });
            if (!isKnown)
                disagreements.push_back({difference, frame.name, first.name});
        }
        if (!known.SaidSeconds())
            TakeExposure(first.shot, known);
        if (!known.gain)
            known.gain = first.shot.gain;
        if (!known.HasBinning()) {
            known.binningX = first.shot.binningX;
            known.binningY = first.shot.binningY;
        }
        if (!known.bits)
            known.bits = first.shot.bits;
    }
    if (SaysMore(frame.shot, known))
        firsts.push_back(frame);
    if (unusable.exposure.empty() && !frame.shot.unusable.exposure.empty())
        ofUnknownExposure = frame.name;
    TakeFirst(frame.shot.unusable.exposure, unusable.exposure);
    TakeFirst(frame.shot.unusable.gain, unusable.gain);
    TakeFirst(frame.shot.unusable.binning, unusable.binning);
    TakeFirst(frame.shot.unusable.celsius, unusable.celsius);
    if (frame.shot.day)
        lastDay = std::max(lastDay.value_or(*frame.shot.day), *frame.shot.day);
    if (!frame.shot.sensorCelsius)
        return;
    if (celsiusCount == 0 || *frame.shot.sensorCelsius < *coldest.shot.sensorCelsius)
        coldest = frame;
    if (celsiusCount == 0 || *frame.shot.sensorCelsius > *warmest.shot.sensorCelsius)
        warmest = frame;
    celsiusSum += *frame.shot.sensorCelsius;
    ++celsiusCount;
}

TShot TFrameHeaders::Common() const
{
    const auto isAgreed = [this](const char* what) {
        return std::none_of(disagreements.begin(), disagreements.end(),
                            [what](const TDisagreement& one) { return one.difference.what == what; });
    };
    TShot common;
    common.day = lastDay;
    common.unusable = unusable;
    for (const TNamed& first : firsts) {
        if (!common.SaidSeconds() && isAgreed("exposure"))
            TakeExposure(first.shot, common);
        if (!common.gain && isAgreed("gain"))
            common.gain = first.shot.gain;
        if (!common.HasBinning() && isAgreed("binning")) {
            common.binningX = first.shot.binningX;
            common.binningY = first.shot.binningY;
        }
        if (!common.bits && isAgreed("depth"))
            common.bits = first.shot.bits;
    }
    if (celsiusCount > 0)
        common.sensorCelsius = celsiusSum / celsiusCount;
    return common;
}

std::vector<std::string> TFrameHeaders::Warnings(const std::string& what) const
{
    std::vector<std::string> warnings;
    for (const TDisagreement& one : disagreements)
        warnings.push_back(fmt::format("the {} were not all taken alike: {} with {} {}, {} with {} {}", what, one.other,
                                       one.difference.what, one.difference.other, one.one, one.difference.what,
                                       one.difference.one));
    const std::optional<double> exposure = Common().SaidSeconds();
    if (demands.exposureSeconds > 0 && exposure && !IsSameSetting(*exposure, demands.exposureSeconds))
        warnings.push_back(fmt::format("by their headers the {} were exposed for {:g} s; {} {:g} was taken instead",
                                       what, *exposure, demands.exposureOption, demands.exposureSeconds));
    const bool isByHeaders = !demands.exposureOption.empty() && !(demands.exposureSeconds > 0);
    if (isByHeaders && exposure && !unusable.exposure.empty())
        warnings.push_back(fmt::format("in {} {}; it was taken for {:g} s as the others are", ofUnknownExposure,
                                       unusable.exposure, *exposure));
    if (celsiusCount > 1 && *warmest.shot.sensorCelsius - *coldest.shot.sensorCelsius > kSteadyCelsius)
        warnings.push_back(fmt::format("the sensor was at {:g} C in {} and at {:g} C in {}: dark current follows the "
                                       "temperature; take {} when it is steady",
                                       *coldest.shot.sensorCelsius, coldest.name, *warmest.shot.sensorCelsius,
                                       warmest.name, what));
    return warnings;
}

} // namespace workbench
