#include "verbs/Options.h"

#include "base/TToolError.h"
#include "commandline/Limits.h"
#include "images/TImageReader.h"

#include <fmt/format.h>

#include <cstdio>

namespace workbench {

namespace {

constexpr std::size_t kLongestKey = 512;

} // namespace

const char* const kKeyHelp = "Name of the correction: up to 512 bytes of printable text, letter case ignored. A longer "
                             "key is refused, because a calibration file keeps only the first 512 bytes of it";

std::string TConditions::Text() const
{
    return fmt::format("{:g} s, {:g} %", exposureSeconds, lightIntensityPercent);
}

void AddConditions(TVerb& verb, const std::string& prefix, const std::string& whose, TConditions& conditions)
{
    verb.add_option("--" + prefix + "exposure", conditions.exposureSeconds, "Exposure time of " + whose + " in seconds")
        ->required()
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
            "WIDTHxHEIGHT+OFFSET where the first OFFSET bytes are something else. A file holds as many frames as fit")
        ->type_name("WxH[+OFFSET]");
}

void AddOutputOptions(TVerb& verb, TOutputOptions& options)
{
    verb.add_option_function<std::string>(
            "--format",
            [&options](const std::string& text) {
                if (text != "tiff" && text != "fits")
                    throw TToolError("--format: '" + text + "' is neither tiff nor fits");
                options.format = text == "fits" ? TImageFormat::Fits : TImageFormat::Tiff;
            },
            "Format of the output: tiff or fits (default: by the output's name, .tif or .fits; else as the input)")
        ->type_name("tiff|fits");
    verb.add_flag("--compress", options.compress,
                  "Compress the output without loss: TIFF by deflate, FITS by tiles (Rice), as fpack does");
}

void AddCorrectOptions(TVerb& verb, TCorrectOptions& options)
{
    AddConditions(verb, "", "the images", options.conditions);
    verb.add_option("--level", options.levelPercent, "How much of the background is subtracted, 0 to 100 percent")
        ->check(BetweenWhole(0, 100))
        ->capture_default_str();
    verb.add_option("--region", options.region,
                    "Part of the dark frames that the images show: left,top,width,height in pixels "
                    "(default: all of it). Images must have exactly this size");
    AddInputOptions(verb, options.input);
    verb.Reads(TPathKind::Image,
               verb.add_option("images", options.inputs,
                               std::string("Images to correct: ") + kReadable + "; every page is corrected")
                   ->required());
    verb.Creates(
        TPathKind::Image,
        verb.add_option("-o,--output", options.output, "Corrected pages, in order: one 16-bit grayscale TIFF or FITS")
            ->required(),
        options.overwrite);
    verb.Creates(TPathKind::Picture,
                 verb.add_option("--picture", options.picture,
                                 "Also write a PNG of the first page: before, background and after side by side"),
                 options.overwrite);
    AddOutputOptions(verb, options.outputAs);
    verb.add_flag("--json", options.json, "Print the statistics as JSON");
    verb.add_flag("--no-statistics", options.noStatistics, "Do not compute statistics (faster)");
}

void CheckKey(const std::string& key)
{
    if (key.empty())
        throw TToolError("--key: the key is empty");
    if (key.size() > kLongestKey)
        throw TToolError("--key: the key has " + std::to_string(key.size()) +
                         " bytes; files keep 512, and a cut key may no longer tell corrections apart");
}

} // namespace workbench
