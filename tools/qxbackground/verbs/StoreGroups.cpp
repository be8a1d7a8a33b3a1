#include "verbs/StoreGroups.h"

#include "base/TToolError.h"
#include "calibration/TCalibrationWalk.h"

#include <algorithm>
#include <set>

namespace workbench {

namespace {

// The values that the store's corrections have for a grouping name.
std::set<std::string> ValuesInUse(const TStorePlace& place, const std::string& name)
{
    std::set<std::string> values;
    for (const std::string& file : OwnFiles(place)) {
        for (const TStoredCorrection& correction : WalkCalibrationFile(place.PathOf(file).string()).corrections)
            values.insert(GroupValueOf(correction.key, name));
    }
    return values;
}

// Whether the key says something under another spelling of the name: a slip that must not be passed over.
bool HasOtherSpelling(const std::string& key, const std::string& name)
{
    for (std::size_t start = 0; start < key.size();) {
        const std::size_t end = std::min(key.find(',', start), key.size());
        if (MeaningOf(key.substr(start, end - start)) == MeaningOf(name))
            return true;
        start = end + 1;
    }
    return false;
}

} // namespace

TGroupConditions ConditionsOf(const TShot& shot)
{
    TGroupConditions conditions{shot.exposureSeconds, shot.gain, shot.sensorCelsius, {}, {}};
    conditions.unusable = {{TGroupMeaning::Exposure, shot.unusable.exposure},
                           {TGroupMeaning::Gain, shot.unusable.gain},
                           {TGroupMeaning::Binning, shot.unusable.binning},
                           {TGroupMeaning::Temperature, shot.unusable.celsius}};
    if (shot.HasBinning())
        conditions.binning = TBinning{shot.binningX.value_or(shot.binningY.value_or(1)),
                                      shot.binningY.value_or(shot.binningX.value_or(1))};
    return conditions;
}

TShot ShotOf(const TGroupConditions& conditions)
{
    TShot shot;
    shot.exposureSeconds = conditions.exposureSeconds;
    shot.gain = conditions.gain;
    shot.sensorCelsius = conditions.celsius;
    if (conditions.binning) {
        shot.binningX = conditions.binning->x;
        shot.binningY = conditions.binning->y;
    }
    return shot;
}

bool MayBeCompleted(const TStorePlace& place, const std::string& key)
{
    bool lacks = false;
    for (const std::string& name : place.names) {
        if (!GroupValueOf(key, name).empty())
            continue;
        lacks = true;
        if (MeaningOf(name) == TGroupMeaning::Other || HasOtherSpelling(key, name))
            return false;
    }
    return lacks;
}

std::string CompletedKey(const TStorePlace& place, const std::string& key, const TShot& frames)
{
    const TGroupConditions conditions = ConditionsOf(frames);
    std::string values;
    for (const std::string& name : place.names) {
        if (!GroupValueOf(key, name).empty())
            continue;
        std::optional<std::string> value = ValueFor(name, conditions);
        if (!value) {
            const std::string instead = InsteadOfValueFor(name, conditions);
            throw TToolError(
                place.Text() + ": key '" + key + "'",
                "there is no value for the grouping name '" + name + "', and " +
                    (instead.empty() ? "the frames' headers do not say one" : "in the frames' headers " + instead) +
                    " (keys read " + name + ",value,...)");
        }
        for (const std::string& used : ValuesInUse(place, name)) {
            if (MeansSame(MeaningOf(name), used, *value)) {
                value = used;
                break;
            }
        }
        values += name + "," + *value + ",";
    }
    return values + key;
}

CLI::Option* AddWhereOption(TVerb& verb, std::vector<std::pair<std::string, std::string>>& values,
                            const std::string& help)
{
    return verb
        .add_option_function<std::vector<std::string>>(
            "--where",
            [&values](const std::vector<std::string>& given) {
                for (const std::string& text : given) {
                    const std::size_t equals = text.find('=');
                    if (equals == 0 || equals == std::string::npos || equals + 1 == text.size())
                        throw TToolError("--where: '" + text + "' is not NAME=VALUE");
                    values.emplace_back(text.substr(0, equals), text.substr(equals + 1));
                }
            },
            help)
        ->allow_extra_args(false);
}

} // namespace workbench
