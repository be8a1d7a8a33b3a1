#include "calibration/StoreChoice.h"

#include "base/TToolError.h"
#include "base/Wording.h"
#include "calibration/TCalibrationWalk.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>

namespace workbench {

namespace {

std::string Listed(const std::set<std::string>& values)
{
    std::string text;
    for (const std::string& value : values)
        text += (text.empty() ? "" : ", ") + Printable(value);
    return text;
}

const char* HeaderOf(TGroupMeaning meaning)
{
    return meaning == TGroupMeaning::Gain          ? "GAIN"
           : meaning == TGroupMeaning::Binning     ? "XBINNING"
           : meaning == TGroupMeaning::Temperature ? "CCD-TEMP"
                                                   : "EXPTIME";
}

std::string DegreesText(double celsius)
{
    return fmt::format("{:.4g} C", celsius);
}

// One grouping name after the other: which of the candidates it leaves.
class TSieve {
public:
    TSieve(const TStorePlace& where, std::vector<TCandidate> all, const TWantedGroup& what, const std::string& path)
        : place(where), left(std::move(all)), wanted(what), image(path)
    {}

    void Take(const std::string& name)
    {
        const TGroupMeaning meaning = MeaningOf(name);
        const auto said = std::find_if(wanted.values.begin(), wanted.values.end(),
                                       [&name](const auto& value) { return value.first == name; });
        if (said != wanted.values.end())
            Keep(name, "--where asks for " + Printable(said->second),
                 [&](const std::string& value) { return MeansSame(meaning, value, said->second); });
        else if (meaning == TGroupMeaning::Temperature)
            KeepNear(name);
        else if (meaning == TGroupMeaning::Other)
            RequireOne(name);
        else if (meaning != TGroupMeaning::Exposure) // by which corrections are chosen afterwards
            Keep(name, "the image's is " + Needed(name, meaning),
                 [&](const std::string& value) { return MeansSame(meaning, value, Needed(name, meaning)); });
    }

    std::vector<TCandidate> Left() const { return left; }

private:
    std::string Needed(const std::string& name, TGroupMeaning meaning) const
    {
        const std::optional<std::string> value = ValueFor(name, wanted.images);
        const std::string instead = InsteadOfValueFor(name, wanted.images);
        if (!value && !instead.empty())
            throw TToolError(image, fmt::format("{}, and {} is grouped by {}; say it with --where {}=...", instead,
                                                place.Text(), name, name));
        if (!value)
            throw TToolError(image, fmt::format("its header does not say the {} ({}), by which {} is grouped; say it "
                                                "with --where {}=...",
                                                name, HeaderOf(meaning), place.Text(), name));
        return *value;
    }

    std::set<std::string> Values(const std::string& name) const
    {
        std::set<std::string> values;
        for (const TCandidate& candidate : left)
            values.insert(GroupValueOf(candidate.correction.key, name));
        return values;
    }

    void Keep(const std::string& name, const std::string& need, const std::function<bool(const std::string&)>& fits)
    {
        const std::set<std::string> values = Values(name);
        left.erase(std::remove_if(left.begin(), left.end(),
                                  [&](const TCandidate& candidate) {
                                      return !fits(GroupValueOf(candidate.correction.key, name));
                                  }),
                   left.end());
        if (left.empty())
            throw TToolError(
                image, fmt::format("{} has no group for it: {} of {}, {}", place.Text(), name, Listed(values), need));
    }

    void KeepNear(const std::string& name)
    {
        Needed(name, TGroupMeaning::Temperature);
        const double celsius = *wanted.images.celsius;
        for (TCandidate& candidate : left) {
            const std::optional<double> value = NumberOfValue(GroupValueOf(candidate.correction.key, name));
            candidate.degreesOff = value ? *value - celsius : HUGE_VAL;
        }
        const std::set<std::string> values = Values(name);
        left.erase(std::remove_if(left.begin(), left.end(),
                                  [this](const TCandidate& candidate) {
                                      return !(std::abs(candidate.degreesOff) <= wanted.toleranceCelsius + 1e-9);
                                  }),
                   left.end());
        if (left.empty())
            throw TToolError(image, fmt::format("{} has no group for it: {} of {}, the image's sensor was at {}; "
                                                "--temperature-tolerance {:g} C allows none",
                                                place.Text(), name, Listed(values), DegreesText(celsius),
                                                wanted.toleranceCelsius));
    }

    // Headers do not tell these groups apart.
    void RequireOne(const std::string& name) const
    {
        const std::set<std::string> values = Values(name);
        if (values.size() > 1)
            throw TToolError(image, fmt::format("{} is grouped by {} as well, and the header does not tell {} apart; "
                                                "say which with --where {}={}",
                                                place.Text(), name, Listed(values), name, Printable(*values.begin())));
    }

    const TStorePlace& place;
    std::vector<TCandidate> left;
    const TWantedGroup& wanted;
    const std::string& image;
};

} // namespace

std::vector<TCandidate> CandidatesOf(const TStorePlace& place)
{
    std::vector<TCandidate> candidates;
    for (const std::string& name : OwnFiles(place)) {
        const std::string path = place.PathOf(name).string();
        for (const TCandidate& candidate : CandidatesOf(path, RequireWhole(path).corrections))
            candidates.push_back(candidate);
    }
    if (candidates.empty())
        throw TToolError(place.Text(), "the store holds no correction");
    return candidates;
}

std::vector<TCandidate> InFittingGroups(const TStorePlace& place, const std::vector<TCandidate>& all,
                                        const TWantedGroup& wanted, const std::string& image)
{
    TSieve sieve(place, all, wanted, image);
    // What headers say comes first: of what it leaves, the others may have one value only.
    for (const bool isOther : {false, true}) {
        for (const std::string& name : place.names) {
            if ((MeaningOf(name) == TGroupMeaning::Other) == isOther)
                sieve.Take(name);
        }
    }
    return sieve.Left();
}

void RequireGroupingNames(const TStorePlace& place, const TWantedGroup& wanted)
{
    for (const auto& [name, value] : wanted.values) {
        if (std::find(place.names.begin(), place.names.end(), name) == place.names.end())
            throw TToolError("--where " + name + "=" + value, "the store is grouped by " +
                                                                  Listed({place.names.begin(), place.names.end()}) +
                                                                  ", not by that");
    }
}

} // namespace workbench
