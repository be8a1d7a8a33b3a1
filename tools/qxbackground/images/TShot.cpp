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

TShot ShotOf(const TPageMetadata& metadata)
{
    TShot shot{metadata.exposureSeconds, metadata.gain,
               metadata.binningX,        metadata.binningY,
               metadata.sensorCelsius,   metadata.takenDay ? metadata.takenDay : DayIn(metadata.date),
               metadata.cameraBits};
    // The library takes single precision, in which this may be nothing or without end.
    const auto single = static_cast<float>(shot.exposureSeconds.value_or(1));
    if (!std::isfinite(single) || !(single > 0))
        shot.exposureSeconds.reset();
    return shot;
}

bool IsSameSetting(double one, double other)
{
    return std::abs(one - other) <= 1e-3 * std::max(std::abs(one), std::abs(other));
}

std::vector<TShotDifference> Differences(const TShot& one, const TShot& other)
{
    std::vector<TShotDifference> found;
    if (one.exposureSeconds && other.exposureSeconds && !IsSameSetting(*one.exposureSeconds, *other.exposureSeconds))
        found.push_back({"exposure", Seconds(*one.exposureSeconds), Seconds(*other.exposureSeconds)});
    if (one.gain && other.gain && !IsSameSetting(*one.gain, *other.gain))
        found.push_back({"gain", fmt::format("{:g}", *one.gain), fmt::format("{:g}", *other.gain)});
    if (one.HasBinning() && other.HasBinning() && Binning(one) != Binning(other))
        found.push_back({"binning", Binning(one), Binning(other)});
    if (one.bits && other.bits && *one.bits != *other.bits)
        found.push_back({"depth", std::to_string(*one.bits) + " bits", std::to_string(*other.bits) + " bits"});
    return found;
}

} // namespace workbench
