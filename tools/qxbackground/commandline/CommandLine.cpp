#include "commandline/CommandLine.h"

#include "base/TToolError.h"
#include "commandline/Description.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <stdexcept>

namespace workbench {

namespace {

// How the help calls the values of an option.
const char* PathType(TPathKind kind)
{
    switch (kind) {
    case TPathKind::Store:
        return "BASE";
    case TPathKind::CalibrationOrStore:
        return "FILE|BASE";
    case TPathKind::Folder:
        return "FOLDER";
    default:
        return "FILE";
    }
}

std::string Short(double value)
{
    char text[40];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

// What the parser has to say, without the terms of its making.
std::string Complaint(const CLI::ParseError& error)
{
    const std::string text = error.what();
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
        return {};
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && text.find(" missing") != std::string::npos)
        return text.substr(0, text.find(':')) + " needs a value behind it";
    const std::string conversion = "Could not convert: ";
    const std::size_t equals = text.find(" = ");
    if (text.compare(0, conversion.size(), conversion) == 0 && equals != std::string::npos)
        return text.substr(conversion.size(), equals - conversion.size()) + ": '" + text.substr(equals + 3) +
               "' is not a value that it takes";
    return text;
}

} // namespace

TOption::TOption(CLI::Option* given, std::shared_ptr<TDescribedVerb> ofVerb) : option(given), verb(std::move(ofVerb)) {}

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
    option->check(CLI::Validator(
        [lowest, highest](std::string& text) {
            double value = 0;
            if (CLI::detail::lexical_cast(text, value) && value >= lowest && value <= highest)
                return std::string();
            return "'" + text + "' is not a number from " + Short(lowest) + " to " + Short(highest);
        },
        Short(lowest) + " to " + Short(highest)));
    return *this;
}

TOption TOption::BetweenWhole(std::int64_t lowest, std::int64_t highest)
{
    option->check(CLI::Validator(
        [lowest, highest](std::string& text) {
            std::int64_t value = 0;
            if (CLI::detail::lexical_cast(text, value) && value >= lowest && value <= highest)
                return std::string();
            return "'" + text + "' is not a whole number from " + std::to_string(lowest) + " to " +
                   std::to_string(highest);
        },
        std::to_string(lowest) + " to " + std::to_string(highest)));
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

TDescribedOption& TOption::Described() const
{
    for (TDescribedOption& described : verb->options) {
        if (described.option == option)
            return described;
    }
    throw std::logic_error("an option that was never added");
}

TOption TOption::Uses(TPathUse use, TPathKind kind)
{
    TDescribedOption& described = Described();
    described.isPath = true;
    described.use = use;
    described.kind = kind;
    option->type_name(PathType(kind));
    return Expanded([given = option, use, kind](const std::string& name, TPathPlan& plan) {
        for (const std::string& path : given->results()) {
            // A library's plain name is no path: it is looked for where the system's loader looks.
            if (kind != TPathKind::Library || path.find('/') != std::string::npos)
                plan.AddFile(name, use, path);
        }
    });
}

TOption TOption::Reads(TPathKind kind)
{
    return Uses(TPathUse::Reads, kind);
}

TOption TOption::Changes(TPathKind kind)
{
    return Uses(TPathUse::Changes, kind);
}

TOption TOption::Creates(TPathKind kind, bool& overwrite)
{
    if (verb->overwrite == nullptr) {
        verb->overwrite = &overwrite;
        TVerb(*verb->app, verb)
            .Flag("--overwrite", overwrite, "Replace what exists already under the names of the output");
    }
    return Uses(TPathUse::Creates, kind);
}

TOption TOption::Expanded(std::function<void(const std::string&, TPathPlan&)> fill)
{
    Described().fill = [given = option, fill = std::move(fill)](TPathPlan& plan) {
        if (given->count() > 0)
            fill(given->get_name(), plan);
    };
    return *this;
}

TVerb::TVerb(CLI::App& given, std::shared_ptr<TDescribedVerb> described)
    : app(&given), description(std::move(described))
{
    description->app = app;
}

TVerb TVerb::Add(const std::string& name, const std::string& help) const
{
    const auto inner = std::make_shared<TDescribedVerb>();
    inner->parent = description;
    description->verbs.push_back(inner);
    return TVerb(*app->add_subcommand(name, help), inner);
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
    app->callback([described = description, action = std::move(action)] {
        TPathPlan plan;
        for (const TDescribedVerb* verb = described.get(); verb != nullptr; verb = verb->parent.get()) {
            for (const TDescribedOption& option : verb->options) {
                if (option.fill)
                    option.fill(plan);
            }
        }
        plan.Check(described->overwrite != nullptr && *described->overwrite);
        plan.Lock();
        action();
    });
}

template <class T>
TOption TVerb::Add(const std::string& name, T& value, const std::string& help, const char* type) const
{
    TDescribedOption described;
    described.option = app->add_option(name, value, help);
    described.type = type;
    description->options.push_back(described);
    return TOption(described.option, description);
}

TOption TVerb::Option(const std::string& name, std::string& value, const std::string& help) const
{
    return Add(name, value, help, "text");
}

TOption TVerb::Option(const std::string& name, std::vector<std::string>& values, const std::string& help) const
{
    const TOption option = Add(name, values, help, "text");
    description->options.back().many = true;
    return option;
}

TOption TVerb::Option(const std::string& name, double& value, const std::string& help) const
{
    return Add(name, value, help, "number");
}

TOption TVerb::Option(const std::string& name, std::vector<double>& values, const std::string& help) const
{
    const TOption option = Add(name, values, help, "number");
    description->options.back().many = true;
    return option;
}

TOption TVerb::Option(const std::string& name, int& value, const std::string& help) const
{
    return Add(name, value, help, "number");
}

TOption TVerb::Option(const std::string& name, unsigned& value, const std::string& help) const
{
    return Add(name, value, help, "number");
}

TOption TVerb::Option(const std::string& name, std::uint64_t& value, const std::string& help) const
{
    return Add(name, value, help, "number");
}

void TVerb::Flag(const std::string& name, bool& value, const std::string& help) const
{
    TDescribedOption described;
    described.option = app->add_flag(name, value, help);
    described.type = "flag";
    description->options.push_back(described);
}

bool RunCommandLine(int argumentCount, char** arguments, const TProgramText& program,
                    const std::function<void(const TVerb&)>& addVerbs)
{
    CLI::App app(program.help, program.name);
    const auto description = std::make_shared<TDescribedVerb>();
    const TVerb root(app, description);
    root.NeedsOneVerb();
    app.set_version_flag("--version", program.version, "Print the version and exit");
    app.get_formatter()->label("SUBCOMMAND", "VERB");
    app.get_formatter()->label("Subcommands", "Verbs");
    addVerbs(root);
    // Last, because verbs that are added take their footer from here.
    root.Footer("'" + program.name + " help VERB' or '" + program.name + " VERB --help' explains a verb.");

    std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        RequireVerb(*description, words);
        words.emplace_back("--help");
    } else if (words == std::vector<std::string>{"--describe"}) {
        std::cout << DescriptionJson(*description);
        return false;
    }
    std::reverse(words.begin(), words.end()); // the parser takes them from the back
    try {
        app.parse(words);
        return true;
    } catch (const CLI::Success& asked) {
        app.exit(asked);
        return false;
    } catch (const CLI::ParseError& error) {
        throw TToolError(ExplainRefusal(*description, app.remaining(true), Complaint(error)));
    }
}

} // namespace workbench
