#include "images/TShot.h"

#include "images/FitsCards.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

std::string Seconds(double value)
{
    return fmt::format("{:g} s", value);
}

// Of the two, headers may say one alone.
std::string Binning(const TShot& shot)
{
    return fmt::format("{} x {}", shot.binningX.value_or(shot.binningY.value_or(1)),
                       shot.binningY.value_or(shot.binningX.value_or(1)));
}

} // namespace

std::string TShot::Text() const
{
    std::string text;
    const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (exposureSeconds)
        add(Seconds(*exposureSeconds));
    if (gain)
        add(fmt::format("gain {:g}", *gain));
    if (HasBinning())
        add("binning " + Binning(*this));
    if (sensorCelsius)
        add(fmt::format("{:g} C", *sensorCelsius));
    return text;
}

std::string TShot::WithoutExposure(const std::string& option) const
{
    return unusable.exposure.empty() ? "does not say its exposure time; give it with " + option
                                     : unusable.exposure + "; give the exposure time with " + option;
}

void TShot::ForgetExposure()
{
    exposureSeconds.reset();
    isUnexposed = false;
}

TShot ShotOf(const TPageMetadata& metadata)
{
    return {
        metadata.exposureSeconds, metadata.gain,          metadata.binningX,
        metadata.binningY,        metadata.sensorCelsius, metadata.takenDay ? metadata.takenDay : DayIn(metadata.date),
        metadata.cameraBits,      metadata.isUnexposed,   metadata.unusable};
}

bool IsSameSetting(double one, double other)
{
    return std::abs(one - other) <= 1e-3 * std::max(std::abs(one), std::abs(other));
}

std::vector<TShotDifference> Differences(const TShot& one, const TShot& other)
{
    std::vector<TShotDifference> found;
    const std::optional<double> exposure = one.SaidSeconds(), otherExposure = other.SaidSeconds();
    if (exposure && otherExposure && !IsSameSetting(*exposure, *otherExposure))
        found.push_back({"exposure", Seconds(*exposure), Seconds(*otherExposure)});
    if (one.gain && other.gain && !IsSameSetting(*one.gain, *other.gain))
        found.push_back({"gain", fmt::format("{:g}", *one.gain), fmt::format("{:g}", *other.gain)});
    if (one.HasBinning() && other.HasBinning() && Binning(one) != Binning(other))
        found.push_back({"binning", Binning(one), Binning(other)});
    if (one.bits && other.bits && *one.bits != *other.bits)
        found.push_back({"depth", std::to_string(*one.bits) + " bits", std::to_string(*other.bits) + " bits"});
    return found;
}

} // namespace workbench
