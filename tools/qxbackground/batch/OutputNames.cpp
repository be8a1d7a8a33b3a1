#include "batch/OutputNames.h"

#include "base/Endings.h"
#include "base/TToolError.h"
#include "images/TImageReader.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

namespace {

std::string Lower(std::string text)
{
    for (char& character : text)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return text;
}

struct TNameParts {
    std::string stem, ending;
    TImageFormat format = TImageFormat::Tiff; // in which the output is written unless something else was asked for
};

// What a file holds whose name does not tell. One that cannot be opened is reported when it is its turn.
TImageFormat FormatByContent(const std::string& input, const TInputOptions& options)
{
    try {
        return OpenImage(input, options)->Format() == TImageFormat::Fits ? TImageFormat::Fits : TImageFormat::Tiff;
    } catch (const TToolError&) {
        return TImageFormat::Tiff;
    }
}

TNameParts PartsOf(const std::string& input, const TInputOptions& options)
{
    const fs::path name = fs::path(input).filename();
    TNameParts parts{name.stem().string(), name.extension().string()};
    if (Lower(parts.ending) == ".fz") { // image.fits.fz
        const fs::path inner = parts.stem;
        parts = {inner.stem().string(), inner.extension().string()};
    }
    const std::string ending = Lower(parts.ending);
    if (ending == ".fits" || ending == ".fit" || ending == ".fts")
        parts.format = TImageFormat::Fits;
    else if (ending != ".tif" && ending != ".tiff" && ending != ".png" && ending != ".pgm" && ending != ".ser")
        parts.format = FormatByContent(input, options);
    return parts;
}

// How names of that format end, the usual way first.
std::vector<std::string> EndingsOf(TImageFormat format)
{
    if (format == TImageFormat::Png)
        return {".png"};
    return format == TImageFormat::Fits ? std::vector<std::string>{".fits", ".fit", ".fts"}
                                        : std::vector<std::string>{".tif", ".tiff"};
}

std::string Numbered(std::size_t number, std::size_t last)
{
    const std::string text = std::to_string(number);
    return std::string(std::to_string(last).size() - text.size(), '0') + text;
}

std::string Filled(const std::string& pattern, const TNameParts& parts, const std::string& number)
{
    std::string name;
    for (std::size_t at = 0; at < pattern.size();) {
        const std::size_t open = pattern.find('{', at);
        name += pattern.substr(at, open - at);
        if (open == std::string::npos)
            break;
        const std::size_t close = pattern.find('}', open);
        const std::string field = pattern.substr(open, close == std::string::npos ? close : close + 1 - open);
        if (field == "{stem}")
            name += parts.stem;
        else if (field == "{ext}")
            name += parts.ending;
        else if (field == "{number}")
            name += number;
        else
            throw TToolError("--name: '" + field + "' is none of {stem}, {ext} and {number}");
        at = open + field.size();
    }
    return name;
}

} // namespace

const char* const kNamesKept = "{stem}{ext}";

bool IsFolderName(const std::string& output)
{
    std::error_code ignored;
    return !output.empty() && (fs::path(output).filename().empty() || fs::is_directory(output, ignored));
}

std::vector<std::string> OutputNames(const std::vector<std::string>& inputs, const std::string& folder,
                                     const std::string& pattern, const TInputOptions& inputOptions,
                                     const TOutputOptions& outputOptions)
{
    if (pattern.find_first_of("/\\") != std::string::npos)
        throw TToolError("--name: '" + pattern + "' is not a name but a path; the folder stands behind -o");
    std::vector<std::string> outputs;
    std::map<std::string, std::string> inputOf;
    for (const std::string& input : inputs) {
        TNameParts parts = PartsOf(input, inputOptions);
        const TImageFormat format = outputOptions.format.value_or(parts.format);
        const std::vector<std::string> endings = EndingsOf(format);
        if (std::find(endings.begin(), endings.end(), Lower(parts.ending)) == endings.end())
            parts.ending = endings.front();
        const std::string name = Filled(pattern, parts, Numbered(outputs.size() + 1, inputs.size()));
        if (name.empty() || name == "." || name == "..")
            throw TToolError("--name: '" + pattern + "' gives '" + name + "', which is not a file name");
        if (!outputOptions.format)
            RefuseOtherEndingOfImage(name);
        outputs.push_back((fs::path(folder) / name).string());
        const auto [found, isNew] = inputOf.emplace(outputs.back(), input);
        if (!isNew)
            throw TToolError(outputs.back(), "would be the output of " + found->second + " and of " + input +
                                                 "; --name '{number}_{stem}{ext}' tells them apart");
    }
    return outputs;
}

} // namespace workbench
