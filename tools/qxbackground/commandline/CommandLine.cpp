#include "commandline/CommandLine.h"

#include "base/TToolError.h"
#include "commandline/Completion.h"
#include "commandline/Description.h"
#include "commandline/Help.h"
#include "commandline/ManPage.h"

#include <algorithm>
#include <iostream>

namespace workbench {

namespace {

// The parser's message in this program's words; empty when something is missing.
std::string Complaint(const CLI::ParseError& error)
{
    std::string text = error.what();
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
        return {};
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && text.find(" missing") != std::string::npos)
        return text.substr(0, text.find(':')) + " needs a value behind it";
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && text.find("At Most 1 ") != std::string::npos)
        return text.substr(0, text.find(':')) + " is given more than once; once is meant";
    if (const std::size_t excludes = text.find(" excludes "); excludes != std::string::npos)
        return text.replace(excludes, 10, " and ") + " exclude each other; give one of them";
    const std::string conversion = "Could not convert: ";
    const std::size_t equals = text.find(" = ");
    if (text.compare(0, conversion.size(), conversion) == 0 && equals != std::string::npos)
        return text.substr(conversion.size(), equals - conversion.size()) + ": '" + text.substr(equals + 3) +
               "' is not a value that it takes";
    return text;
}

} // namespace

void RunCommandLine(const std::vector<std::string>& arguments, const TProgramText& program,
                    const std::function<void(TVerb&)>& addVerbs, const std::function<void(TVerb&)>& addGuide)
{
    TVerb root(program.summary, program.name, nullptr);
    root.set_help_flag("-h,--help"); // verbs that are added take it from here
    root.set_version_flag("--version", program.version);
    root.require_subcommand(1);
    root.allow_windows_style_options(false); // "/folder/file" is a path, on every system

    std::vector<std::string> words(arguments.begin() + (arguments.empty() ? 0 : 1), arguments.end());
    const bool isForHelp = !words.empty() && words.front() == "help";
    const auto isHelp = [](const std::string& word) { return word == "help"; };
    words.erase(words.begin(), std::find_if_not(words.begin(), words.end(), isHelp));
    const bool isForCompletion = !words.empty() && words.front() == "--complete";
    if (isForCompletion && words.size() > 2) // of which the last is being typed
        root.SetWords({words.begin() + 1, words.end() - 1});
    else
        root.SetWords(words);
    addVerbs(root);

    if (isForHelp) {
        RequireVerb(root, words);
        words.emplace_back("--help");
    } else if (words == std::vector<std::string>{"--describe"}) {
        addGuide(root);
        std::cout << DescriptionJson(root, program);
        return;
    } else if (words == std::vector<std::string>{"--man-page"}) {
        addGuide(root);
        std::cout << ManPage(root, program);
        return;
    } else if (isForCompletion) {
        std::cout << CompletionText(root, {words.begin() + 1, words.end()});
        return;
    }
    std::reverse(words.begin(), words.end()); // the parser takes them from the back
    try {
        root.parse(words);
    } catch (const CLI::CallForHelp&) {
        addGuide(root);
        std::cout << HelpText(ParsedVerb(root), program);
    } catch (const CLI::CallForVersion&) {
        std::cout << program.version << '\n';
    } catch (const CLI::ParseError& error) {
        throw TToolError(ExplainRefusal(root, root.remaining(true), Complaint(error)));
    }
}

} // namespace workbench
