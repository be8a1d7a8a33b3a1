#include "verbs/Options.h"

#include "base/Endings.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "batch/InputFiles.h"
#include "batch/OutputNames.h"
#include "commandline/Limits.h"
#include "images/TImageReader.h"

#include <fmt/format.h>

#include <cstdio>

namespace workbench {

const char* const kKeyHelp = "Name of the correction: up to 512 bytes of printable text, letter case ignored. A longer "
                             "key is refused, because a calibration file keeps only the first 512 bytes of it";

const char* const kGroupHelp =
    "A grouping name of the store; one --group for each, in their order. Not needed with the "
    "name of one of its files";

const char* const kSomeFailedHelp =
    "Into a folder: an input that fails gets one line and is counted, the others are done. Exit status: 0 all done, "
    "1 some failed, 2 refused or nothing done.";

CLI::Option* AddKeyOption(TVerb& verb, std::string& key)
{
    return verb.NamesKey(verb.add_option("--key", key, "Which correction (letter case ignored)"));
}

std::string TConditions::Text() const
{
    return fmt::format("{:g} s, {:g} %", exposureSeconds, lightIntensityPercent);
}

void AddConditions(TVerb& verb, const std::string& prefix, const std::string& whose, TConditions& conditions)
{
    verb.add_option("--" + prefix + "exposure", conditions.exposureSeconds,
                    "Exposure time of " + whose +
                        " in seconds. Not needed where their headers say it (EXPTIME or EXPOSURE, in FITS and in TIFF "
                        "made of it); when given, it counts")
        ->check(AboveZero());
    verb.add_option("--" + prefix + "intensity", conditions.lightIntensityPercent,
                    "Light intensity of " + whose + " in percent")
        ->required()
        ->check(AboveZero());
}

namespace {

TRawLayout ParseRaw(const std::string& text)
{
    TRawLayout layout;
    unsigned long long offset = 0;
    int used = 0, usedWithOffset = 0;
    const int count = std::sscanf(text.c_str(), "%9dx%9d%n+%18llu%n", &layout.size.width, &layout.size.height, &used,
                                  &offset, &usedWithOffset);
    const auto read = static_cast<std::size_t>(count == 3 ? usedWithOffset : used);
    if (count < 2 || read != text.size() || layout.size.width < 1 || layout.size.height < 1 ||
        text.find_first_of(" -") != std::string::npos)
        throw TToolError("--raw: '" + text + "' is not WIDTHxHEIGHT or WIDTHxHEIGHT+OFFSET, in pixels and bytes");
    layout.offset = offset;
    return layout;
}

} // namespace

void AddInputOptions(TVerb& verb, TInputOptions& options)
{
    verb.add_option_function<std::string>(
        "--raw", [&options](const std::string& text) { options.raw = ParseRaw(text); },
        "Size of the frames in files without a format of their own, 16-bit little-endian pixels: WIDTHxHEIGHT, or "
        "WIDTHxHEIGHT+OFFSET where the first OFFSET bytes are something else. A file holds as many frames as fit");
}

void AddOutputOptions(TVerb& verb, TOutputOptions& options)
{
    verb.add_option_function<std::string>(
        "--format",
        [&options](const std::string& text) {
            if (text != "tiff" && text != "fits" && text != "png")
                throw TToolError("--format: '" + text + "' is none of tiff, fits and png");
            options.format = text == "fits"  ? TImageFormat::Fits
                             : text == "png" ? TImageFormat::Png
                                             : TImageFormat::Tiff;
        },
        "Format of the output: tiff, fits or png (default: by the output's name, .tif, .fits or .png; else as the "
        "input, TIFF for what is neither TIFF nor FITS). A PNG holds one page");
    verb.add_flag(
        "--compress", options.compress,
        "Compress the output without loss: TIFF by deflate, FITS by tiles (Rice), as fpack does. A PNG always is");
}

void AddJsonOption(TVerb& verb, bool& json)
{
    verb.add_flag("--json", json, "Print what is told as JSON: one document, and nothing else");
}

CLI::Option* AddFrames(TVerb& verb, const std::string& name, std::vector<std::string>& frames, const std::string& help)
{
    verb.AddNote(std::string("Frames are ") + kReadable +
                 ", by their content. A folder stands for the images in it; the files of a folder or pattern come in "
                 "natural order, 2 before 10. A file may hold many frames.");
    return verb.Reads(TPathKind::Image,
                      verb.add_option(name, frames, help + ". Files, folders or quoted patterns ('light*.tif')"),
                      [&frames](const std::string& option, TPathPlan& plan) {
                          frames = ExpandInputs(frames);
                          for (const std::string& frame : frames)
                              plan.AddFile(option, TPathUse::Reads, frame);
                      });
}

void AddBiasOption(TVerb& verb, std::vector<std::string>& bias)
{
    AddFrames(verb, "--bias", bias,
              "Bias frames (no light, no exposure); their average is subtracted from dark frames and from images, so "
              "that only the dark current is scaled, not the camera's offset");
}

namespace {

// After the images' names stand in the options.
void PlanOutputs(const std::string& option, TCorrectOptions& options, TPathPlan& plan)
{
    if (!IsFolderName(options.output) && options.name.empty()) {
        if (options.inputs.size() > 1 && !HasEnding(options.output) && !options.outputAs.format)
            throw TToolError("'" + options.output + "' may be a folder for " + std::to_string(options.inputs.size()) +
                             " outputs, or one file for all of them: write '" + options.output + "/' or '" +
                             options.output + ".tif'");
        plan.AddFile(option, TPathUse::Creates, options.output);
        return;
    }
    options.outputs = OutputNames(options.inputs, options.output, options.name.empty() ? kNamesKept : options.name,
                                  options.input, options.outputAs);
    for (const std::string& output : options.outputs)
        plan.AddFileInNewFolder(option, TPathUse::Creates, output);
}

} // namespace

void AddCorrectOptions(TVerb& verb, TCorrectOptions& options)
{
    AddConditions(verb, "", "the images", options.conditions);
    verb.add_option("--level", options.levelPercent, "How much of the background is subtracted")
        ->check(BetweenWhole(0, 100))
        ->capture_default_str();
    verb.add_option("--region", options.region,
                    "Part of the dark frames that the images show: left,top,width,height in pixels "
                    "(default: all of it). Images must have exactly this size");
    AddBiasOption(verb, options.bias);
    verb.add_option("--pedestal", options.pedestal,
                    "ADU added to every image before the background is subtracted, so that noise around zero is not "
                    "cut off. The result says so (FITS: PEDESTAL; TIFF: its description)")
        ->check(BetweenWhole(0, 65535));
    verb.Reads(TPathKind::PixelList,
               verb.add_option("--hot-list", options.hotList,
                               "Replace the pixels of this list (see 'hotpixels') by the median of their good "
                               "neighbours, after the correction"));
    AddInputOptions(verb, options.input);
    AddFrames(verb, "images", options.inputs, "Images to correct; every page is corrected")->required();
    verb.Creates(TPathKind::Image,
                 verb.add_option("-o,--output", options.output,
                                 "A folder (that is there, or with / at its end: it is made then), for one output per "
                                 "input; or a file for all corrected pages, in order. 16-bit grayscale TIFF or "
                                 "FITS, or PNG for one page")
                     ->required(),
                 options.overwrite,
                 [&options](const std::string& option, TPathPlan& plan) { PlanOutputs(option, options, plan); });
    verb.add_option("--name", options.name,
                    "What the outputs in the folder are called: {stem} and {ext} of the input's name, its {number}. "
                    "Default: {stem}{ext}, the names are kept")
        ->check(CLI::Validator(
            [](const std::string& text) -> std::string {
                if (text.empty() || HasControlCharacter(text))
                    throw TToolError("--name: " + (text.empty() ? "''" : "'" + Printable(text) + "'") +
                                     " is no pattern for file names, such as '{stem}_corrected{ext}'");
                return {};
            },
            {}));
    verb.Creates(TPathKind::Picture,
                 verb.add_option("--picture", options.picture,
                                 "Also write a PNG of the first page for the eye: before, background and after, each "
                                 "with a scale of its values"),
                 options.overwrite);
    AddOutputOptions(verb, options.outputAs);
    verb.add_flag("--dry-run", options.dryRun,
                  "Say what would be done, and which images do not fit; no image is corrected, nothing is written");
    verb.add_option("--temperature-tolerance", options.toleranceCelsius,
                    "By how many degrees the sensor's temperature may differ from that of the dark frames, where the "
                    "headers say both")
        ->check(Between(0, 1000))
        ->capture_default_str();
    verb.add_option("--warn-older", options.olderDays,
                    "Warn when the dark frames are more than so many days older than the images, by their headers or, "
                    "of a calibration file, by its own date")
        ->check(BetweenWhole(0, 1000000))
        ->capture_default_str();
    verb.add_option("--warn-clipped", options.clippedPercent,
                    "Warn when the correction cuts more than so many percent of the pixels off at zero (not with "
                    "--no-statistics)")
        ->check(Between(0, 100))
        ->capture_default_str();
    AddJsonOption(verb, options.json);
    CLI::Option* const none =
        verb.add_flag("--no-statistics", options.noStatistics, "Do not compute statistics (faster)");
    verb.add_flag("--full-statistics", options.fullStatistics,
                  "Statistics of every page. Without it a long run has them of the first 4 million pixels and of every "
                  "40th page, since they take longer than correcting; it lists those pages")
        ->excludes(none);
}

} // namespace workbench
