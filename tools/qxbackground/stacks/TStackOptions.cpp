#include "stacks/TStackOptions.h"

#include "base/TToolError.h"

#include <fmt/format.h>

#include <cstdio>

namespace workbench {

std::string TStackOptions::CombinationText() const
{
    return std::string(combination == TCombination::Median ? "median" : "average") +
           (alignLevels ? " of one level" : "");
}

std::string TStackOptions::RejectionText() const
{
    switch (rejection) {
    case TRejection::None:
        break;
    case TRejection::Sigma:
        return fmt::format("sigma:{:g},{:g}", low, high);
    case TRejection::Winsor:
        return fmt::format("winsor:{:g},{:g}", low, high);
    case TRejection::MinMax:
        return fmt::format("minmax:{}", extremes);
    }
    return "none";
}

std::string TStackOptions::Text() const
{
    return CombinationText() + (rejection == TRejection::None ? "" : ", rejecting by " + RejectionText());
}

void SetRejection(TStackOptions& options, const std::string& text)
{
    const std::size_t colon = text.find(':');
    const std::string name = text.substr(0, colon);
    const std::string numbers = colon == std::string::npos ? "" : text.substr(colon + 1);
    const auto readsWhole = [&numbers](int used) { return static_cast<std::size_t>(used) == numbers.size(); };
    int used = 0;
    if (name == "minmax") {
        if (std::sscanf(numbers.c_str(), "%6u%n", &options.extremes, &used) == 1 && readsWhole(used) &&
            numbers.front() != '-' && options.extremes > 0) {
            options.rejection = TRejection::MinMax;
            return;
        }
        throw TToolError("--reject: '" + text + "': minmax:N takes how many values are left out at either end, from 1");
    }
    if (name != "sigma" && name != "winsor")
        throw TToolError("--reject: '" + text + "' is none of sigma[:LOW,HIGH], winsor[:LOW,HIGH] and minmax:N");
    if (colon != std::string::npos) {
        const bool read =
            std::sscanf(numbers.c_str(), "%lf,%lf%n", &options.low, &options.high, &used) == 2 && readsWhole(used);
        // Below 1 nothing at all might be left of a pixel.
        const auto fits = [](double value) { return value >= 1 && value <= 1000; };
        if (!read || !fits(options.low) || !fits(options.high))
            throw TToolError("--reject: '" + text + "': behind " + name +
                             ": stand two numbers from 1 to 1000, LOW,HIGH");
    }
    options.rejection = name == "sigma" ? TRejection::Sigma : TRejection::Winsor;
}

} // namespace workbench
