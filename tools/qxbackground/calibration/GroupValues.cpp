#include "calibration/GroupValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace workbench {

namespace {

bool IsOneOf(const std::string& word, std::initializer_list<const char*> words)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsSameNumber(double one, double other)
{
    return std::abs(one - other) <= 1e-4 * std::max(std::abs(one), std::abs(other));
}

} // namespace

TGroupMeaning MeaningOf(const std::string& groupingName)
{
    std::string word;
    for (const char character : groupingName) {
        if (character != ' ' && character != '-')
            word += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    if (word == "gain")
        return TGroupMeaning::Gain;
    if (IsOneOf(word, {"binning", "bin"}))
        return TGroupMeaning::Binning;
    if (IsOneOf(word, {"temperature", "temp", "ccdtemp", "settemp", "sensortemp", "ccdtemperature", "celsius"}))
        return TGroupMeaning::Temperature;
    if (IsOneOf(word, {"exposure", "exptime", "exposuretime"}))
        return TGroupMeaning::Exposure;
    return TGroupMeaning::Other;
}

std::optional<double> NumberOfValue(const std::string& value)
{
    // Hexadecimal numbers and words such as "nan" are none to people.
    const std::size_t length = value.find_first_not_of("+-.0123456789");
    const std::string digits = value.substr(0, length);
    char* end = nullptr;
    const double number = std::strtod(digits.c_str(), &end);
    if (digits.empty() || end != digits.c_str() + digits.size())
        return std::nullopt;
    std::string unit = length == std::string::npos ? std::string() : value.substr(length);
    unit.erase(std::remove(unit.begin(), unit.end(), ' '), unit.end());
    if (!IsOneOf(unit, {"", "C", "c", "degC", "deg",
                        "\xC2\xB0"
                        "C",
                        "s", "sec"}))
        return std::nullopt;
    return number;
}

std::optional<TBinning> BinningOfValue(const std::string& value)
{
    std::string text;
    for (const char character : value) {
        if (character != ' ')
            text += character == 'X' ? 'x' : character;
    }
    TBinning binning;
    int used = 0, usedOfOne = 0;
    const int count = std::sscanf(text.c_str(), "%4d%nx%4d%n", &binning.x, &usedOfOne, &binning.y, &used);
    if (count == 1 && static_cast<std::size_t>(usedOfOne) == text.size())
        binning.y = binning.x;
    else if (count != 2 || static_cast<std::size_t>(used) != text.size())
        return std::nullopt;
    if (binning.x < 1 || binning.y < 1)
        return std::nullopt;
    return binning;
}

TGroupConditions ConditionsOfKey(const TStorePlace& place, const std::string& key)
{
    TGroupConditions conditions;
    for (const std::string& name : place.names) {
        const std::string value = GroupValueOf(key, name);
        switch (MeaningOf(name)) {
        case TGroupMeaning::Gain:
            conditions.gain = NumberOfValue(value);
            break;
        case TGroupMeaning::Binning:
            conditions.binning = BinningOfValue(value);
            break;
        case TGroupMeaning::Temperature:
            conditions.celsius = NumberOfValue(value);
            break;
        case TGroupMeaning::Exposure:
            conditions.exposureSeconds = NumberOfValue(value);
            break;
        case TGroupMeaning::Other:
            break;
        }
    }
    return conditions;
}

std::optional<std::string> ValueFor(const std::string& groupingName, const TGroupConditions& conditions)
{
    const auto number = [](const std::optional<double>& value) {
        return value ? std::optional(fmt::format("{:g}", *value)) : std::nullopt;
    };
    switch (MeaningOf(groupingName)) {
    case TGroupMeaning::Gain:
        return number(conditions.gain);
    case TGroupMeaning::Exposure:
        return number(conditions.exposureSeconds);
    case TGroupMeaning::Temperature:
        if (!conditions.celsius)
            return std::nullopt;
        return fmt::format("{:d}", std::lround(*conditions.celsius));
    case TGroupMeaning::Binning:
        if (!conditions.binning)
            return std::nullopt;
        return fmt::format("{}x{}", conditions.binning->x, conditions.binning->y);
    case TGroupMeaning::Other:
        break;
    }
    return std::nullopt;
}

std::string InsteadOfValueFor(const std::string& groupingName, const TGroupConditions& conditions)
{
    const auto found = conditions.unusable.find(MeaningOf(groupingName));
    return found == conditions.unusable.end() ? std::string() : found->second;
}

bool MeansSame(TGroupMeaning meaning, const std::string& one, const std::string& other)
{
    if (one == other)
        return true;
    if (meaning == TGroupMeaning::Other)
        return false;
    if (meaning == TGroupMeaning::Binning) {
        const std::optional<TBinning> first = BinningOfValue(one), second = BinningOfValue(other);
        return first && second && *first == *second;
    }
    const std::optional<double> first = NumberOfValue(one), second = NumberOfValue(other);
    return first && second && IsSameNumber(*first, *second);
}

} // namespace workbench
