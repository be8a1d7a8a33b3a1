#include "CommandLine.h"

#include "ToolError.h"

#include <CLI/CLI.hpp>

#include <cmath>

namespace workbench {

TOption TOption::Required()
{
    option->required();
    return *this;
}

TOption TOption::AboveZero()
{
    option->check(CLI::Validator(
        [](std::string& text) {
            double value = 0;
            if (!CLI::detail::lexical_cast(text, value))
                return "'" + text + "' is not a number";
            const auto single = static_cast<float>(value);
            return std::isfinite(single) && single > 0 ? std::string() : "'" + text + "' must be a number above 0";
        },
        "above 0"));
    return *this;
}

TOption TOption::Between(double lowest, double highest)
{
    option->check(CLI::Range(lowest, highest));
    return *this;
}

TOption TOption::BetweenWhole(std::int64_t lowest, std::int64_t highest)
{
    option->check(CLI::Range(lowest, highest));
    return *this;
}

TOption TOption::ShowDefault()
{
    option->capture_default_str();
    return *this;
}

TOption TOption::SplitAt(char delimiter)
{
    option->delimiter(delimiter);
    return *this;
}

TOption TOption::OneAtATime()
{
    option->allow_extra_args(false);
    return *this;
}

TVerb TVerb::Add(const std::string& name, const std::string& help) const
{
    return TVerb(*app->add_subcommand(name, help));
}

void TVerb::Footer(const std::string& text) const
{
    app->footer(text);
}

void TVerb::NeedsOneVerb() const
{
    app->require_subcommand(1);
}

void TVerb::Run(std::function<void()> action) const
{
    app->callback(std::move(action));
}

TOption TVerb::Option(const std::string& name, std::string& value, const std::string& help) const
{
    return TOption(app->add_option(name, value, help));
}

TOption TVerb::Option(const std::string& name, std::vector<std::string>& values, const std::string& help) const
{
    return TOption(app->add_option(name, values, help));
}

TOption TVerb::Option(const std::string& name, double& value, const std::string& help) const
{
    return TOption(app->add_option(name, value, help));
}

TOption TVerb::Option(const std::string& name, std::vector<double>& values, const std::string& help) const
{
    return TOption(app->add_option(name, values, help));
}

TOption TVerb::Option(const std::string& name, int& value, const std::string& help) const
{
    return TOption(app->add_option(name, value, help));
}

TOption TVerb::Option(const std::string& name, unsigned& value, const std::string& help) const
{
    return TOption(app->add_option(name, value, help));
}

TOption TVerb::Option(const std::string& name, std::uint64_t& value, const std::string& help) const
{
    return TOption(app->add_option(name, value, help));
}

void TVerb::Flag(const std::string& name, bool& value, const std::string& help) const
{
    app->add_flag(name, value, help);
}

bool RunCommandLine(int argumentCount, char** arguments, const std::string& name, const std::string& help,
                    const std::function<void(const TVerb&)>& addVerbs)
{
    CLI::App app(help, name);
    const TVerb root(app);
    root.NeedsOneVerb();
    addVerbs(root);
    try {
        app.parse(argumentCount, arguments);
        return true;
    } catch (const CLI::Success& asked) {
        app.exit(asked);
        return false;
    } catch (const CLI::ParseError& error) {
        throw TToolError(error.what());
    }
}

} // namespace workbench
