#include "verbs/DarkFrames.h"

#include "base/TToolError.h"
#include "base/Wording.h"
#include "commandline/Limits.h"
#include "stacks/CombineFrames.h"

#include <cstdio>
#include <iostream>

namespace workbench {

void AddDarkOptions(TVerb& verb, TDarkOptions& options)
{
    TStackOptions& stack = options.stack;
    verb.add_option_function<std::string>(
            "--reject", [&stack](const std::string& text) { SetRejection(stack, text); },
            "Leave values out of a pixel's stack before it is combined: sigma[:LOW,HIGH] what lies further from the "
            "median than LOW or HIGH times the spread (by the median distance; default 3,3), winsor[:LOW,HIGH] the "
            "same by a winsorised standard deviation, minmax:N the N lowest and N highest. Default: none, the "
            "library's own average")
        ->type_name("sigma|winsor|minmax:N");
    verb.add_option_function<std::string>(
            "--combine",
            [&stack](const std::string& text) {
                if (text != "average" && text != "median")
                    throw TToolError("--combine: '" + text + "' is neither average nor median");
                stack.combination = text == "median" ? TCombination::Median : TCombination::Average;
            },
            "How a pixel's values in all frames become one: average (default) or median")
        ->type_name("average|median");
    verb.add_option_function<unsigned>(
            "--stack-memory", [&stack](const unsigned& megabytes) { stack.memory = std::size_t{megabytes} << 20; },
            "Memory for frames that are looked at together, with --reject and --combine, in MiB. A longer stack waits "
            "in a temporary file meanwhile (default: 128)")
        ->check(BetweenWhole(1, 1 << 20));
}

TFrameStack ReadDarks(const TDarkOptions& options, const TInputOptions& input)
{
    return CombineFrames(options.files, input, options.stack, "dark frames");
}

std::string DarksText(const TFrameStack& stack, const TDarkOptions& options)
{
    return Counted(stack.frames, "dark frame") + (options.stack.IsPlain() ? "" : " by " + options.stack.Text());
}

void PrintNotes(const std::vector<std::string>& notes)
{
    for (const std::string& note : notes)
        std::cout << note << '\n';
}

void PrintWarnings(const std::vector<std::string>& warnings)
{
    std::cout << std::flush;
    for (const std::string& warning : warnings)
        std::fprintf(stderr, "qxbackground: warning: %s\n", Printable(warning).c_str());
}

} // namespace workbench
