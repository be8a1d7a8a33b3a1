#include "commandline/Limits.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace workbench {

namespace {

// Behind what is said of "5%", "1,5" or "100ms".
std::string HowElse(const std::string& text)
{
    char* end = nullptr;
    std::strtold(text.c_str(), &end);
    if (end == text.c_str() || *end == '\0')
        return {};
    return *end == ',' ? "; decimals are written with a point" : "; numbers are written without a unit";
}

// Not a number when the text is none: that lies in no range.
double NumberIn(const std::string& text)
{
    char* end = nullptr;
    const auto value = static_cast<double>(std::strtold(text.c_str(), &end));
    return !text.empty() && end == text.c_str() + text.size() ? value : std::numeric_limits<double>::quiet_NaN();
}

} // namespace

CLI::Validator AboveZero()
{
    return CLI::Validator(
        [](const std::string& text) {
            if (!CLI::Number(text).empty())
                return fmt::format("'{}' is not a number{}", text, HowElse(text));
            const auto single = static_cast<float>(NumberIn(text));
            return std::isfinite(single) && single > 0 ? std::string()
                                                       : fmt::format("'{}' must be a number above 0", text);
        },
        "above 0");
}

CLI::Validator Between(double lowest, double highest)
{
    const std::string range = fmt::format("{:.10g} to {:.10g}", lowest, highest);
    return CLI::Validator(
        [lowest, highest, range](const std::string& text) {
            const double value = NumberIn(text);
            if (value >= lowest && value <= highest)
                return std::string();
            return fmt::format("'{}' is not a number from {}{}", text, range, HowElse(text));
        },
        range);
}

CLI::Validator BetweenWhole(std::int64_t lowest, std::int64_t highest)
{
    const std::string range = fmt::format("{} to {}", lowest, highest);
    return CLI::Validator(
        [allowed = CLI::Range(lowest, highest), range](const std::string& text) {
            if (allowed(text).empty())
                return std::string();
            return fmt::format("'{}' is not a whole number from {}{}", text, range, HowElse(text));
        },
        range);
}

} // namespace workbench
