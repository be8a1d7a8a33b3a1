#include "verbs/DarkFrames.h"

#include "base/Color.h"
#include "base/TFileState.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "commandline/Limits.h"
#include "stacks/CombineFrames.h"
#include "stacks/TFrameWatch.h"
#include "stacks/TRefinement.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <iostream>
#include <set>
#include <utility>

namespace workbench {

const char* const kHotSigmaHelp =
    "How far a pixel must lie from the median of its neighbours to be called hot or dead, "
    "in units of the spread that all pixels, or those of that part of the frame, have around theirs";

void AddDarkOptions(TVerb& verb, TDarkOptions& options)
{
    TStackOptions& stack = options.stack;
    verb.add_option_function<std::string>(
        "--reject", [&stack](const std::string& text) { SetRejection(stack, text); },
        "Leave values out of a pixel's stack before it is combined: sigma[:LOW,HIGH] what lies further from the "
        "median than LOW or HIGH times the spread (by the median distance; default 3,3), winsor[:LOW,HIGH] the "
        "same by a winsorised standard deviation, minmax:N the N lowest and N highest. Default: none, the "
        "library's own average");
    verb.add_option_function<std::string>(
        "--combine",
        [&stack](const std::string& text) {
            if (text != "average" && text != "median")
                throw TToolError("--combine: '" + text + "' is neither average nor median");
            stack.combination = text == "median" ? TCombination::Median : TCombination::Average;
        },
        "How a pixel's values in all frames become one: average (default) or median");
    verb.add_flag(
        "--align-levels", stack.alignLevels,
        "Before dark frames are combined, bring each to the level of the middle one: for a camera whose level "
        "drifts while they are taken");
    verb.add_option_function<unsigned>(
            "--stack-memory", [&stack](const unsigned& megabytes) { stack.memory = std::size_t{megabytes} << 20; },
            "Memory for frames that are looked at together, with --reject, --combine and --align-levels, in MiB. A "
            "longer stack waits "
            "in a temporary file meanwhile (default: 128)")
        ->check(BetweenWhole(1, 1 << 20));
    verb.add_flag(
        "--mixed", stack.headers.mayDiffer,
        "Take frames together whose headers say different exposures, gains, binnings or bit depths; without it they "
        "are refused");
}

void WarnOfOtherCamera(TShot darks, const TShot& bias, std::vector<std::string>& warnings)
{
    darks.ForgetExposure();
    for (const TShotDifference& difference : Differences(darks, bias))
        warnings.push_back("by their headers the dark frames were taken with " + difference.what + " " +
                           difference.one + ", the bias frames with " + difference.other);
}

void WarnOfSharedFiles(const std::vector<std::string>& files, const std::string& what,
                       const std::vector<std::string>& others, const std::string& otherWhat,
                       std::vector<std::string>& warnings)
{
    std::set<std::pair<std::uint64_t, std::uint64_t>> known;
    for (const std::string& other : others) {
        const TFileState state = StateOf(other);
        known.insert({state.device, state.inode});
    }
    std::vector<std::string> shared;
    for (const std::string& file : files) {
        const TFileState state = StateOf(file);
        if (state.exists && known.count({state.device, state.inode}) != 0)
            shared.push_back(file);
    }
    if (!shared.empty())
        warnings.push_back(FirstOf(shared) + (shared.size() == 1 ? " is" : " are") + " among the " + what +
                           " and among the " + otherWhat + " as well: is that meant?");
}

TFrameStack ReadDarks(const TDarkOptions& options, const TInputOptions& input, TDarkNoise* noise,
                      const TDarkDigests& digests)
{
    TFrameStack stack = CombineFrames({options.files, input, "dark frames", digests.darks}, options.stack, noise);
    if (!options.bias.empty()) {
        const TFrameStack bias = ReadBias(options.bias, input, stack.Size(), false, digests.bias);
        SubtractBias(stack.average, bias.average);
        WarnOfOtherCamera(stack.shot, bias.shot, stack.warnings);
        WarnOfSharedFiles(options.files, "dark frames", options.bias, "bias frames", stack.warnings);
        stack.biasFrames = bias.frames;
        stack.warnings.insert(stack.warnings.end(), bias.warnings.begin(), bias.warnings.end());
        stack.notes.push_back("Bias subtracted from the dark frames: the average of " +
                              Counted(bias.frames, "bias frame"));
    }
    return stack;
}

TFrameStack ReadDarks(const TDarkOptions& options, const TInputOptions& input, const std::string& exposureOption,
                      TConditions& conditions, TDarkNoise* noise, const TDarkDigests& digests)
{
    TDarkOptions asking = options;
    asking.stack.headers.exposureOption = exposureOption;
    asking.stack.headers.exposureSeconds = conditions.exposureSeconds;
    TFrameStack stack = ReadDarks(asking, input, noise, digests);
    if (conditions.exposureSeconds > 0)
        return stack;
    if (!stack.shot.exposureSeconds)
        throw TToolError(options.files.front(),
                         "and the other dark frames say several exposure times; give one with " + exposureOption);
    conditions.exposureSeconds = *stack.shot.exposureSeconds;
    return stack;
}

TFrameStack ReadBias(const std::vector<std::string>& files, const TInputOptions& input, TSize size, bool keepExact,
                     TFileDigests* digests)
{
    TStackOptions plain;
    plain.keepExact = keepExact;
    plain.headers.mayDiffer = true; // their exposures do not matter, and all else is told
    TFrameStack bias = CombineFrames({files, input, "bias frames", digests}, plain);
    if (bias.Size() != size)
        throw TToolError(files.front(),
                         "the bias frames are " + bias.Size().Text() + " pixels, the dark frames " + size.Text());
    return bias;
}

void WarnOfManyHotPixels(const THotPixels& found, std::vector<std::string>& warnings)
{
    if (found.Pixels().size() * 50 > found.Size().Pixels())
        warnings.push_back("more than 2 % of all pixels are called hot or dead (" + found.Counts() +
                           "): are these dark frames? A higher sigma finds fewer");
}

std::string DarksText(const TFrameStack& stack, const TDarkOptions& options)
{
    return Counted(stack.frames, "dark frame") + (options.stack.IsPlain() ? "" : " by " + options.stack.Text());
}

nlohmann::json DarksJson(const TFrameStack& stack, const TDarkOptions& options, const TConditions& conditions)
{
    return {{"frames", stack.frames},
            {"combined", options.stack.Text()},
            {"width", stack.Size().width},
            {"height", stack.Size().height},
            {"exposureSeconds", conditions.exposureSeconds},
            {"lightIntensityPercent", conditions.lightIntensityPercent},
            {"notes", stack.notes},
            {"warnings", stack.warnings}};
}

void PrintNotes(const std::vector<std::string>& notes)
{
    for (const std::string& note : notes)
        std::cout << note << '\n';
}

void PrintWarnings(const std::vector<std::string>& warnings)
{
    for (const std::string& warning : warnings)
        std::cout << WarningMark("Warning:") << ' ' << Printable(warning) << '\n';
}

} // namespace workbench
